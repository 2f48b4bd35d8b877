#include "cli/DoctorReport.h"
#include "support/SampleFindings.h"
#include "support/TestMain.h"

#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>

#include <functional>

using namespace orbitledge;
using namespace orbitledge::findings;
using namespace orbitledge::testing;
using namespace Qt::StringLiterals;

using Change = std::function<void(Findings &)>;
Q_DECLARE_METATYPE(Change)

namespace {

Check checkNamed(const QList<Check> &checks, const QByteArray &subject)
{
    const auto found = std::ranges::find(checks, subject, &Check::subject);
    if (found == checks.end())
        qFatal("there is no check of %s", subject.constData());
    return *found;
}

QByteArray expected(const QString &name)
{
    QFile file(QStringLiteral(ORBITLEDGE_TEST_DATA "/cli/") + name);
    return file.open(QFile::ReadOnly) ? file.readAll() : QByteArray("missing: ") + name.toUtf8();
}

/// As bad as it gets while there is a bus.
Findings badFindings()
{
    Findings found = goodFindings();
    found.session = {};
    found.running = Running::No;
    found.windowsProgram = WindowsProgram::Broken;
    found.tray = {.watcher = Presence::Absent, .hasHost = false, .hasEmbedder = {}};
    found.keyring = {};
    found.keyring.presence = Presence::Mute;
    found.notifications = {};
    found.notifications.daemon = Presence::Absent;
    found.portal = {};
    found.portal.presence = Presence::Absent;
    found.delivery = {};
    found.delivery.systemd = Presence::Absent;
    found.autostart.status = LoginItemStatus::NotFound;
    found.autostart.program = u"/media/ada/orbitledge"_s;
    found.autostart.isProgramThere = false;
    found.folders[0].isWritable = false;
    found.folders[1].mode = 0755;
    found.files[0].mode = 0644;
    found.hasOpener = false;
    found.isOffline = true;
    return found;
}

} // namespace

class DoctorChecksTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void shouldTellWhatIsFound_data()
    {
        QTest::addColumn<QByteArray>("subject");
        QTest::addColumn<Change>("change");
        QTest::addColumn<CheckLevel>("level");
        QTest::addColumn<QByteArray>("state");
        using enum CheckLevel;
        const auto row = [](const char *name, const char *subject, CheckLevel level, const char *state,
                             Change change) {
            QTest::newRow(name) << QByteArray(subject) << std::move(change) << level << QByteArray(state);
        };
        const auto add = [&row](const char *subject, CheckLevel level, const char *state, Change change) {
            row(qPrintable(QLatin1StringView(subject) + u' ' + QLatin1StringView(state)), subject, level,
                state, std::move(change));
        };
        add("desktop", Missing, "no-display", [](Findings &f) { f.session.hasX11 = false; });
        add("desktop", Info, "told", [](Findings &f) {
            f.session = {.desktop = {}, .type = {}, .hasX11 = false, .hasWayland = true};
        });
        add("panel", Info, "not-running", [](Findings &f) { f.running = Running::No; });
        add("panel", Info, "unknown", [](Findings &f) { f.running = Running::Unknown; });
        add("windowsProgram", Failure, "missing",
            [](Findings &f) { f.windowsProgram = WindowsProgram::Missing; });
        add("windowsProgram", Failure, "broken",
            [](Findings &f) { f.windowsProgram = WindowsProgram::Broken; });
        add("windowsProgram", Warning, "no-answer",
            [](Findings &f) { f.windowsProgram = WindowsProgram::Mute; });
        add("sessionBus", Failure, "absent", [](Findings &f) { f.bus = Bus::NotNamed; });
        add("sessionBus", Failure, "unreachable", [](Findings &f) { f.bus = Bus::Unreachable; });
        add("sessionBus", Failure, "mute", [](Findings &f) { f.bus = Bus::Mute; });

        add("tray", Ok, "xembed", [](Findings &f) { f.tray.hasHost = false; });
        add("tray", Missing, "xembed-on-wayland", [](Findings &f) {
            f.tray.hasHost = false;
            f.session.type = u"wayland"_s;
        });
        add("tray", Missing, "no-host", [](Findings &f) {
            f.tray.hasHost = false;
            f.tray.hasEmbedder = false;
        });
        add("tray", Missing, "absent",
            [](Findings &f) { f.tray = {.watcher = Presence::Absent, .hasHost = false, .hasEmbedder = {}}; });
        add("tray", Warning, "mute",
            [](Findings &f) { f.tray = {.watcher = Presence::Mute, .hasHost = false, .hasEmbedder = {}}; });
        add("tray", Info, "unknown", [](Findings &f) { f.tray = {}; });

        add("keyring", Info, "unknown", [](Findings &f) { f.keyring.presence = Presence::Unknown; });
        add("keyring", Failure, "absent", [](Findings &f) { f.keyring.presence = Presence::Absent; });
        add("keyring", Failure, "mute", [](Findings &f) { f.keyring.presence = Presence::Mute; });
        add("keyring", Failure, "refused", [](Findings &f) { f.keyring.presence = Presence::Refusing; });
        add("keyring", Failure, "disabled", [](Findings &f) {
            f.keyring.kind = Keyring::Kind::KWallet;
            f.keyring.isEnabled = false;
        });
        add("keyring", Ok, "startable", [](Findings &f) { f.keyring.presence = Presence::Startable; });
        add("keyring", Warning, "locked",
            [](Findings &f) { f.keyring.collection = Keyring::Collection::Locked; });
        add("keyring", Info, "no-collection",
            [](Findings &f) { f.keyring.collection = Keyring::Collection::None; });
        add("keyring", Ok, "there", [](Findings &f) { f.keyring.collection = Keyring::Collection::Unknown; });

        add("notifications", Info, "unknown",
            [](Findings &f) { f.notifications.daemon = Presence::Unknown; });
        add("notifications", Missing, "absent",
            [](Findings &f) { f.notifications.daemon = Presence::Absent; });
        add("notifications", Warning, "mute", [](Findings &f) { f.notifications.daemon = Presence::Mute; });
        add("notifications", Ok, "startable",
            [](Findings &f) { f.notifications.daemon = Presence::Startable; });
        add("notifications", Warning, "switched-off", [](Findings &f) { f.notifications.allows = false; });
        add("notifications", Warning, "do-not-disturb",
            [](Findings &f) { f.notifications.doNotDisturb = true; });
        add("notifications", Info, "silent", [](Findings &f) { f.notifications.popsUp = false; });
        add("notifications", Info, "no-actions", [](Findings &f) { f.notifications.capabilities.clear(); });

        add("portal", Info, "unknown", [](Findings &f) { f.portal.presence = Presence::Unknown; });
        add("portal", Missing, "absent", [](Findings &f) { f.portal.presence = Presence::Absent; });
        add("portal", Ok, "startable", [](Findings &f) { f.portal.presence = Presence::Startable; });
        add("portal", Warning, "mute", [](Findings &f) { f.portal.presence = Presence::Mute; });
        add("portal", Missing, "no-settings", [](Findings &f) { f.portal.settingsVersion.reset(); });
        add("portal", Missing, "no-color-scheme", [](Findings &f) { f.portal.colorScheme.reset(); });

        add("reminderTimer", Info, "unknown", [](Findings &f) { f.delivery.systemd = Presence::Unknown; });
        add("reminderTimer", Missing, "absent", [](Findings &f) { f.delivery.systemd = Presence::Absent; });
        add("reminderTimer", Warning, "mute", [](Findings &f) { f.delivery.systemd = Presence::Mute; });
        add("reminderTimer", Warning, "failed",
            [](Findings &f) { f.delivery.timer = Delivery::Timer::Failed; });
        add("reminderTimer", Warning, "not-in-force",
            [](Findings &f) { f.delivery.timer = Delivery::Timer::NotInForce; });
        add("reminderTimer", Ok, "idle", [](Findings &f) { f.delivery.timer = Delivery::Timer::None; });

        add("autostart", Info, "off",
            [](Findings &f) { f.autostart.status = LoginItemStatus::NotRegistered; });
        add("autostart", Info, "switched-off",
            [](Findings &f) { f.autostart.status = LoginItemStatus::RequiresApproval; });
        add("autostart", Warning, "stale",
            [](Findings &f) { f.autostart.status = LoginItemStatus::NotFound; });
        add("autostart", Warning, "unreadable", [](Findings &f) {
            f.autostart.status = LoginItemStatus::NotFound;
            f.autostart.program.clear();
        });
        add("autostart", Warning, "other-program", [](Findings &f) { f.autostart.isThisProgram = false; });

        add("folderData", Failure, "nowhere",
            [](Findings &f) { f.folders[1].state = Folder::State::Nowhere; });
        add("folderData", Failure, "not-a-folder",
            [](Findings &f) { f.folders[1].state = Folder::State::NotAFolder; });
        add("folderData", Failure, "not-writable", [](Findings &f) { f.folders[1].isWritable = false; });
        row("folder that cannot be made", "folderData", Failure, "not-writable", [](Findings &f) {
            f.folders[1].state = Folder::State::NotMade;
            f.folders[1].isWritable = false;
        });
        add("folderData", Failure, "foreign", [](Findings &f) {
            f.folders[1].isWritable = false;
            f.folders[1].isOwn = false;
        });
        add("folderData", Ok, "not-made", [](Findings &f) { f.folders[1].state = Folder::State::NotMade; });
        add("folderData", Warning, "not-private", [](Findings &f) { f.folders[1].mode = 0701; });

        add("fileSnapshot", Info, "missing", [](Findings &f) { f.files[0].state = File::State::Missing; });
        add("fileSnapshot", Warning, "unreadable",
            [](Findings &f) { f.files[0].state = File::State::Unreadable; });
        add("fileSnapshot", Warning, "damaged", [](Findings &f) { f.files[0].state = File::State::Damaged; });
        add("fileSnapshot", Warning, "not-private", [](Findings &f) { f.files[0].mode = 0640; });
        add("fileSnapshot", Warning, "foreign", [](Findings &f) { f.files[0].isOwn = false; });

        add("browser", Failure, "missing", [](Findings &f) { f.hasOpener = false; });
        add("network", Warning, "no-route", [](Findings &f) { f.isOffline = true; });
    }
    void shouldTellWhatIsFound()
    {
        QFETCH(const QByteArray, subject);
        QFETCH(const Change, change);
        QFETCH(const CheckLevel, level);
        QFETCH(const QByteArray, state);
        Findings found = goodFindings();
        const QList<Check> before = checksOf(found, sampleFacts());
        change(found);
        const QList<Check> after = checksOf(found, sampleFacts());
        const Check check = checkNamed(after, subject);
        QCOMPARE(check.state, state);
        QCOMPARE(check.level, level);
        QVERIFY(!check.text.isEmpty());
        // Whoever is told that something is not in order is told what to do.
        if (level != CheckLevel::Ok && level != CheckLevel::Info)
            QVERIFY(check.advice.endsWith(u'.'));
        QCOMPARE(isHealthy(after), level != CheckLevel::Failure);
        // The others stay as they are.
        QCOMPARE(after.size(), before.size());
        for (qsizetype i = 0; i < after.size(); ++i) {
            const bool isOther = after[i].subject != subject && after[i].subject != "tray";
            if (isOther)
                QCOMPARE(after[i].state, before[i].state);
        }
    }

    void shouldFindNothingWrongWithAGoodDesktop()
    {
        const QList<Check> checks = checksOf(goodFindings(), sampleFacts());
        QVERIFY(isHealthy(checks));
        for (const Check &check : checks)
            QVERIFY2(
                check.level == CheckLevel::Ok || check.level == CheckLevel::Info, check.subject.constData());
    }

    void shouldTellAnAddressOfTheServiceThatIsNotAccepted()
    {
        OwnFacts own = sampleFacts();
        own.service = ServiceAddress::Refused;
        QVERIFY(!isHealthy(checksOf(goodFindings(), own)));
        own.service = ServiceAddress::Environment;
        QVERIFY(isHealthy(checksOf(goodFindings(), own)));
    }

    void shouldLookLikeThis_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<Change>("change");
        QTest::newRow("good") << u"doctor-good"_s << Change([](Findings &) { });
        QTest::newRow("bad") << u"doctor-bad"_s << Change([](Findings &found) { found = badFindings(); });
        QTest::newRow("nothing known") << u"doctor-nothing"_s << Change([](Findings &found) { found = {}; });
    }
    void shouldLookLikeThis()
    {
        QFETCH(const QString, name);
        QFETCH(const Change, change);
        Findings found = goodFindings();
        change(found);
        const QList<Check> checks = checksOf(found, sampleFacts());
        QCOMPARE(doctorText(sampleFacts(), checks).toUtf8(), expected(name + u".txt"_s));
        QCOMPARE(doctorJson(sampleFacts(), checks), expected(name + u".json"_s));
    }

    void shouldTellAges_data()
    {
        QTest::addColumn<QByteArray>("written");
        QTest::addColumn<QString>("age");
        QTest::newRow("now") << "2026-03-18T09:00:00Z"_ba << u"just now"_s;
        QTest::newRow("a minute") << "2026-03-18T08:59:00Z"_ba << u"1 minute ago"_s;
        QTest::newRow("under an hour") << "2026-03-18T08:00:01Z"_ba << u"59 minutes ago"_s;
        QTest::newRow("an hour") << "2026-03-18T08:00:00Z"_ba << u"1 hour ago"_s;
        QTest::newRow("a day") << "2026-03-17T09:00:00Z"_ba << u"1 day ago"_s;
        QTest::newRow("days") << "2026-03-01T09:00:00Z"_ba << u"17 days ago"_s;
        QTest::newRow("later") << "2026-03-18T09:00:01Z"_ba << u"in the future, by this clock"_s;
    }
    void shouldTellAges()
    {
        QFETCH(const QByteArray, written);
        QFETCH(const QString, age);
        Findings found = goodFindings();
        found.files[0].modified = *Instant::fromText(written.toStdString());
        const Check check = checkNamed(checksOf(found, sampleFacts()), "fileSnapshot");
        QVERIFY2(check.text.endsWith(u", written "_s + age), qPrintable(check.text));
    }

    void shouldTellNobodyWhoThePersonIs()
    {
        // Whatever comes from outside, and may hold a name, an address, and what steers a terminal.
        const QString evil = u"/home/zoe /media/zoe/x zoe@example.com \x1B[31mred\n"_s;
        Findings found = goodFindings();
        found.home = u"/home/zoe"_s;
        found.userNames = {u"zoe"_s};
        found.versions = {.toolkit = evil, .http = evil, .tzdata = evil, .system = evil, .kernel = evil};
        found.session.desktop = found.session.type = evil;
        for (QString *text :
            {&found.notifications.name, &found.notifications.vendor, &found.notifications.version,
                &found.notifications.specification, &found.delivery.version, &found.autostart.file,
                &found.autostart.program, &found.folders[0].path, &found.files[0].path})
            *text = evil;
        found.notifications.capabilities = {evil};
        OwnFacts own = sampleFacts();
        own.icuVersion = own.dates = own.money = own.collation = own.encoding = own.timeZone = evil;
        // A line each, the heading with a blank line, and the end with one.
        const auto lines = [](const QList<Check> &checks) {
            const auto withAdvice
                = std::ranges::count_if(checks, [](const Check &check) { return !check.advice.isEmpty(); });
            return checks.size() + withAdvice + 4;
        };
        const auto lookAt = [&] {
            const QList<Check> checks = checksOf(found, own);
            for (const QByteArray &output : {doctorText(own, checks).toUtf8(), doctorJson(own, checks)}) {
                QVERIFY(!output.contains("zoe"));
                QVERIFY(!output.contains("example.com"));
                QVERIFY(!output.contains('\x1B'));
                QVERIFY(!output.contains("\\u001b") && !output.contains("\\u001B"));
            }
            QCOMPARE(doctorText(own, checks).count(u'\n'), lines(checks));
        };
        lookAt();
        for (const LoginItemStatus status : {LoginItemStatus::NotFound, LoginItemStatus::RequiresApproval}) {
            found.autostart.status = status;
            lookAt();
        }
        found.autostart.status = LoginItemStatus::Enabled;
        found.autostart.isThisProgram = false;
        for (const auto state : {Folder::State::NotMade, Folder::State::NotAFolder}) {
            found.folders[0].state = state;
            lookAt();
        }
        for (const auto state : {File::State::Missing, File::State::Unreadable, File::State::Damaged}) {
            found.files[0].state = state;
            lookAt();
        }
    }

    void shouldWriteOneObjectWithTheSameKeysWhateverIsFound()
    {
        const auto keysOf = [](const Findings &found) {
            const QByteArray json = doctorJson(sampleFacts(), checksOf(found, sampleFacts()));
            const QJsonObject object = QJsonDocument::fromJson(json).object();
            QStringList keys;
            for (auto it = object.begin(); it != object.end(); ++it) {
                for (const QString &key : it->toObject().keys())
                    keys.append(it.key() + u'.' + key);
                keys.append(it.key());
            }
            return keys;
        };
        const QStringList keys = keysOf(goodFindings());
        QVERIFY(keys.contains(u"keyring.locked"_s));
        QCOMPARE(keysOf(badFindings()), keys);
    }
};

ORBITLEDGE_TEST_MAIN(DoctorChecksTest)
#include "DoctorChecksTest.moc"
