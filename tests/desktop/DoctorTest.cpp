// What the program says about a desktop that is as it should be, and about those where something is not: real
// services, real files, real faults.

#include "platform/linux/AutostartEntry.h"
#include "platform/linux/PosixFileStore.h"
#include "state/CacheSnapshot.h"
#include "support/DemoService.h"
#include "support/Dunst.h"
#include "support/ProgramEnd.h"
#include "support/TestMain.h"
#include "support/XfceDesk.h"

#include <QDBusMessage>
#include <QElapsedTimer>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>

#include <fcntl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <optional>

using namespace orbitledge;
using namespace orbitledge::testing;
using namespace Qt::StringLiterals;

class DoctorTest : public QObject {
    Q_OBJECT

private:
    struct Diagnosis {
        int exitCode = -1;
        QString text;
        QJsonObject json;
        qint64 milliseconds = 0;

        [[nodiscard]] QString state(const char *subject) const
        {
            return json[QLatin1StringView(subject)][u"state"_s].toString();
        }
        [[nodiscard]] QString level(const char *subject) const
        {
            return json[QLatin1StringView(subject)][u"level"_s].toString();
        }
        [[nodiscard]] QStringList subjectsOf(const QStringList &levels) const
        {
            QStringList subjects;
            for (auto it = json.begin(); it != json.end(); ++it) {
                if (levels.contains(it->toObject()[u"level"_s].toString()))
                    subjects.append(it.key());
            }
            return subjects;
        }
        [[nodiscard]] QStringList failures() const { return subjectsOf({u"failure"_s}); }
        [[nodiscard]] QStringList faults() const
        {
            return subjectsOf({u"failure"_s, u"warning"_s, u"missing"_s});
        }
    };

    std::optional<DesktopLab> m_lab;
    std::optional<XfceDesk> m_desk;
    DemoService m_service;
    QProcessEnvironment m_environment;
    /// What nobody may see.
    QByteArrayList m_private;
    QStringList m_amounts;

    [[nodiscard]] static QString folder(const QProcessEnvironment &environment, const char *variable)
    {
        return environment.value(QLatin1StringView(variable)) + u"/app.orbitledge.Orbitledge"_s;
    }
    [[nodiscard]] QString dataFolder() const { return folder(m_environment, "XDG_DATA_HOME"); }
    [[nodiscard]] QString cacheFile() const { return dataFolder() + u"/subscription-snapshot-v1.json"_s; }
    [[nodiscard]] static QString script(const QString &name)
    {
        return QStringLiteral(ORBITLEDGE_TEST_SUPPORT "/") + name;
    }

    [[nodiscard]] static ProgramEnd run(const QProcessEnvironment &environment, const QStringList &arguments,
        const QByteArray &input = {}, QStringList prefix = {})
    {
        prefix.append(QStringLiteral(ORBITLEDGE_PROGRAM));
        prefix.append(arguments);
        QProcess program;
        program.setProcessEnvironment(environment);
        program.start(prefix.takeFirst(), prefix);
        program.write(input);
        program.closeWriteChannel();
        if (!program.waitForFinished(60'000) || program.exitStatus() != QProcess::NormalExit)
            return {};
        return {program.exitCode(), program.readAllStandardOutput(), program.readAllStandardError()};
    }

    void signIn()
    {
        const ProgramEnd output = run(m_environment, {u"sign-in"_s, QString(DemoService::email)},
            QByteArray(DemoService::password.data()) + '\n');
        QCOMPARE(output.complaint(), "");

        QFile file(cacheFile());
        QVERIFY(file.open(QIODevice::ReadOnly));
        const auto snapshot = decodeCacheSnapshot(file.readAll());
        QVERIFY(snapshot && snapshot->subscriptions.size() == 16);
        m_private = {DemoService::email.data(), DemoService::password.data()};
        m_amounts.clear();
        for (const Subscription &subscription : snapshot->subscriptions) {
            m_private.append(subscription.name.toUtf8());
            m_amounts.append(QRegularExpression::escape(subscription.cost.toString()));
        }
        const QByteArray secret = m_lab->run(u"secret-tool"_s,
            {u"lookup"_s, u"server"_s, u"app.orbitledge.Orbitledge"_s, u"user"_s, u"session"_s});
        // As it is kept, and as it travels.
        const QJsonDocument session = QJsonDocument::fromJson(QByteArray::fromBase64(secret));
        const QByteArray cookie = session[u"value"_s].toString().toUtf8();
        QVERIFY(cookie.size() >= 16);
        m_private.append(secret.trimmed());
        m_private.append(cookie);
    }

    void verifyNothingPrivateIn(const QByteArray &output) const
    {
        for (const QByteArray &secret : m_private)
            QVERIFY2(!output.contains(secret), secret.constData());
        // Not as a part of another number, such as a version.
        const QRegularExpression amount(u"(?<![\\d.])(%1)(?![\\d.])"_s.arg(m_amounts.join(u'|')));
        for (const QRegularExpressionMatch &match : amount.globalMatch(QString::fromUtf8(output)))
            QVERIFY2(!match.captured().contains(u'.'), qPrintable(match.captured()));
    }

    /// Both forms, which say the same.
    [[nodiscard]] Diagnosis diagnose(
        const QProcessEnvironment &environment, const QStringList &prefix = {}) const
    {
        QElapsedTimer elapsed;
        elapsed.start();
        const ProgramEnd json = run(environment, {u"doctor"_s, u"--json"_s}, {}, prefix);
        const qint64 milliseconds = elapsed.elapsed();
        const ProgramEnd text = run(environment, {u"doctor"_s}, {}, prefix);
        Diagnosis found{.exitCode = json.exitCode,
            .text = QString::fromUtf8(text.output),
            .json = QJsonDocument::fromJson(json.output).object(),
            .milliseconds = milliseconds};
        verifyNothingPrivateIn(json.output + json.errors);
        verifyNothingPrivateIn(text.output + text.errors);
        for (const ProgramEnd &output : {json, text}) {
            if (!output.errors.isEmpty() || output.exitCode != found.exitCode)
                qFatal("doctor ends with %d and says %s", output.exitCode, output.errors.constData());
        }
        if (found.json.isEmpty() || found.json[u"healthy"_s].toBool() != (found.exitCode == 0))
            qFatal("doctor contradicts itself: %s", json.output.constData());
        if (const QString keep = qEnvironmentVariable("ORBITLEDGE_TEST_OUTPUTS"); !keep.isEmpty()) {
            static int count = 0;
            QFile file(keep + u"/%1-"_s.arg(++count, 3, 10, QLatin1Char('0'))
                + QString::fromLatin1(QTest::currentTestFunction()) + u".txt"_s);
            if (file.open(QIODevice::WriteOnly))
                file.write(text.output + "exit " + QByteArray::number(text.exitCode) + '\n');
        }
        return found;
    }
    [[nodiscard]] Diagnosis diagnose() const { return diagnose(m_environment); }

    void startPython(const QString &name, const QString &file, const QStringList &arguments)
    {
        m_lab->startService(name, u"/usr/bin/python3"_s, QStringList{script(file)} + arguments);
    }
    void startNotifications()
    {
        startPython(u"org.freedesktop.Notifications"_s, u"mock_notifications.py"_s, {u"mock"_s});
    }
    void startPortal(const QString &behaviour)
    {
        startPython(u"org.freedesktop.portal.Desktop"_s, u"mock_portal.py"_s, {behaviour});
    }
    void startSystemd(const QString &behaviour)
    {
        startPython(
            u"org.freedesktop.systemd1"_s, u"mock_systemd.py"_s, {behaviour, m_lab->path(u"calls"_s)});
    }

    void makeLab(bool hasDisplay)
    {
        m_desk.reset();
        m_lab.emplace(DesktopLab::Options{.hasDisplay = hasDisplay});
        m_lab->startKeyring(DesktopLab::Keyring::Unlocked);
        m_environment = m_lab->environment();
        m_environment.insert(u"ORBITLEDGE_API_URL"_s, m_service.baseUrl().toString());
        m_environment.insert(u"LC_ALL"_s, u"C.UTF-8"_s);
        signIn();
    }

    /// An entry that starts a program at login, as this program makes it.
    void makeAutostartEntry(const QString &program)
    {
        const QString file
            = m_environment.value(u"XDG_CONFIG_HOME"_s) + u"/autostart/app.orbitledge.Orbitledge.desktop"_s;
        AutostartEntry entry(
            file.toStdString(), program.toStdString(), std::make_shared<PosixFileStore>(), {});
        QVERIFY(QCoro::waitFor(entry.registerItem()));
    }

    /// A command before ours, so that permissions bind it also where the test is run by root.
    static QStringList boundByPermissions()
    {
        if (::geteuid() != 0)
            return {};
        return {u"setpriv"_s, u"--bounding-set"_s, u"-dac_override,-dac_read_search"_s};
    }

private Q_SLOTS:
    void initTestCase() { QVERIFY2(m_service.start(), qPrintable(m_service.problem())); }
    void init() { makeLab(false); }
    void cleanup()
    {
        m_desk.reset();
        m_lab.reset();
    }

    void shouldFindNothingWrongWithAGoodDesktop()
    {
        makeLab(true);
        m_desk.emplace(*m_lab);
        m_desk->startBar();
        Dunst dunst(*m_lab);
        dunst.start();
        startPortal(u"dark"_s);
        startSystemd(u"forget"_s);
        makeAutostartEntry(QStringLiteral(ORBITLEDGE_PROGRAM));
        m_environment.insert(u"XDG_CURRENT_DESKTOP"_s, u"XFCE"_s);
        m_environment.insert(u"XDG_SESSION_TYPE"_s, u"x11"_s);

        const Diagnosis found = diagnose();
        QCOMPARE(found.exitCode, 0);
        QCOMPARE(found.faults(), QStringList());
        QCOMPARE(found.state("desktop"), u"told"_s);
        QCOMPARE(found.state("sessionBus"), u"reached"_s);
        DesktopLab::await("the bar to show icons", [&] { return diagnose().state("tray") == u"notifier"; });
        QCOMPARE(found.json[u"tray"_s][u"xembed"_s].isBool(), true);
        QCOMPARE(found.state("windowsProgram"), u"working"_s);
        QCOMPARE(found.state("keyring"), u"unlocked"_s);
        QCOMPARE(found.json[u"keyring"_s][u"hasSession"_s].toBool(), true);
        QCOMPARE(found.state("notifications"), u"there"_s);
        QCOMPARE(found.json[u"notifications"_s][u"name"_s].toString(), u"dunst"_s);
        QCOMPARE(found.json[u"notifications"_s][u"doNotDisturb"_s], QJsonValue(false));
        QCOMPARE(found.json[u"portal"_s][u"colorScheme"_s].toInt(), 1);
        QCOMPARE(found.state("reminderTimer"), u"idle"_s);
        QCOMPARE(found.state("autostart"), u"on"_s);
        QCOMPARE(found.state("folderData"), u"writable"_s);
        QCOMPARE(found.state("fileSnapshot"), u"whole"_s);
        QCOMPARE(found.json[u"fileSnapshot"_s][u"mode"_s].toString(), u"0600"_s);
        QCOMPARE(found.state("panel"), u"not-running"_s);
        QVERIFY(found.text.endsWith(u"\n\nEverything that Orbitledge needs is there.\n"_s));

        m_lab->run(u"dunstctl"_s, {u"set-paused"_s, u"true"_s});
        const Diagnosis quiet = diagnose();
        QCOMPARE(quiet.state("notifications"), u"do-not-disturb"_s);
        QCOMPARE(quiet.exitCode, 0);
        dunst.pause();
        const Diagnosis mute = diagnose();
        QCOMPARE(mute.state("notifications"), u"mute"_s);
        QCOMPARE(mute.exitCode, 0);
        QVERIFY2(mute.milliseconds < 20'000, qPrintable(QString::number(mute.milliseconds)));
    }

    void shouldChangeNothingAndPromptNobody()
    {
        m_lab->stopKeyring();
        m_lab->startKeyring(DesktopLab::Keyring::Locked);
        m_lab->startMonitor();
        const auto listing = [&] {
            return m_lab->run(u"find"_s,
                {m_environment.value(u"XDG_CONFIG_HOME"_s), m_environment.value(u"XDG_DATA_HOME"_s),
                    m_environment.value(u"XDG_STATE_HOME"_s), m_environment.value(u"XDG_CACHE_HOME"_s),
                    m_environment.value(u"HOME"_s), u"-printf"_s, u"%p %s %m %T@\\n"_s});
        };
        const QByteArray before = listing();
        (void)diagnose();
        QCOMPARE(listing(), before);
        const QByteArray calls = m_lab->monitored();
        QVERIFY(calls.contains("member=ReadAlias"));
        for (const char *call : {"member=Unlock", "member=Prompt", "member=GetSecrets",
                 "member=CreateCollection", "member=StartServiceByName", "member=Notify"})
            QVERIFY2(!calls.contains(call), call);
    }

    // ---- the session bus ----

    void shouldSayThatThereIsNoSessionBus()
    {
        QProcessEnvironment environment = m_environment;
        environment.remove(u"DBUS_SESSION_BUS_ADDRESS"_s);
        environment.remove(u"XDG_RUNTIME_DIR"_s);
        const Diagnosis found = diagnose(environment);
        QCOMPARE(found.exitCode, 1);
        QCOMPARE(found.failures(), QStringList(u"sessionBus"_s));
        QCOMPARE(found.state("sessionBus"), u"absent"_s);
        QCOMPARE(found.state("keyring"), u"unknown"_s);
        QVERIFY(found.text.endsWith(u"\n\nWhat Orbitledge needs is not all there: Session bus.\n"_s));

        // The usual place counts where none is named.
        environment.insert(u"XDG_RUNTIME_DIR"_s, m_environment.value(u"XDG_RUNTIME_DIR"_s));
        QCOMPARE(diagnose(environment).state("sessionBus"), u"reached"_s);
    }

    void shouldSayThatTheSessionBusIsGone()
    {
        QProcessEnvironment environment = m_environment;
        environment.insert(u"DBUS_SESSION_BUS_ADDRESS"_s, u"unix:path="_s + m_lab->path(u"nobody"_s));
        const Diagnosis found = diagnose(environment);
        QCOMPARE(found.exitCode, 1);
        QCOMPARE(found.state("sessionBus"), u"unreachable"_s);
    }

    void shouldSayThatTheSessionBusIsMute()
    {
        m_lab->pauseBus();
        const Diagnosis found = diagnose();
        m_lab->resumeBus();
        QCOMPARE(found.exitCode, 1);
        QCOMPARE(found.failures(), QStringList(u"sessionBus"_s));
        QCOMPARE(found.state("sessionBus"), u"mute"_s);
        QVERIFY2(found.milliseconds < 20'000, qPrintable(QString::number(found.milliseconds)));
    }

    void shouldTakeTheAddressThatAnswers()
    {
        QProcessEnvironment environment = m_environment;
        environment.insert(u"DBUS_SESSION_BUS_ADDRESS"_s,
            u"unix:path="_s + m_lab->path(u"nobody"_s) + u';'
                + m_environment.value(u"DBUS_SESSION_BUS_ADDRESS"_s));
        QCOMPARE(diagnose(environment).state("sessionBus"), u"reached"_s);
    }

    // ---- the keyring ----

    void shouldSayThatThereIsNoKeyring()
    {
        m_lab->stopKeyring();
        const Diagnosis found = diagnose();
        QCOMPARE(found.exitCode, 1);
        QCOMPARE(found.failures(), QStringList(u"keyring"_s));
        QCOMPARE(found.state("keyring"), u"absent"_s);
        m_lab->offerService(u"org.freedesktop.secrets"_s, DesktopLab::defaultKeyringCommand());
        const Diagnosis later = diagnose();
        QCOMPARE(later.state("keyring"), u"startable"_s);
        QCOMPARE(later.exitCode, 0);
        QVERIFY(!m_lab->isOnBus(u"org.freedesktop.secrets"_s));
    }

    void shouldSayThatTheKeyringIsLocked()
    {
        m_lab->stopKeyring();
        m_lab->startKeyring(DesktopLab::Keyring::Locked);
        const Diagnosis found = diagnose();
        QCOMPARE(found.exitCode, 0);
        QCOMPARE(found.state("keyring"), u"locked"_s);
        QCOMPARE(found.level("keyring"), u"warning"_s);
        QCOMPARE(found.json[u"keyring"_s][u"hasSession"_s], QJsonValue(true));
    }

    void shouldSayThatTheKeyringIsMute()
    {
        m_lab->pauseKeyring();
        const Diagnosis found = diagnose();
        m_lab->resumeKeyring();
        QCOMPARE(found.exitCode, 1);
        QCOMPARE(found.failures(), QStringList(u"keyring"_s));
        QCOMPARE(found.state("keyring"), u"mute"_s);
        QVERIFY2(found.milliseconds < 20'000, qPrintable(QString::number(found.milliseconds)));
    }

    void shouldSayThatNoSessionIsKept()
    {
        QCOMPARE(run(m_environment, {u"sign-out"_s}).complaint(), "");
        const Diagnosis found = diagnose();
        QCOMPARE(found.exitCode, 0);
        QCOMPARE(found.json[u"keyring"_s][u"hasSession"_s], QJsonValue(false));
        QCOMPARE(found.state("fileSnapshot"), u"missing"_s);
    }

    void shouldLookAtTheWalletWhereThatIsTheKeyring()
    {
        const QString daemon = u"org.kde.kwalletd5"_s;
        m_environment.insert(u"XDG_CURRENT_DESKTOP"_s, u"KDE"_s);
        m_environment.insert(u"KDE_SESSION_VERSION"_s, u"5"_s);
        QCOMPARE(diagnose().json[u"keyring"_s][u"service"_s].toString(), u"secret-service"_s);
        startPython(daemon, u"mock_kwalletd.py"_s, {daemon});
        const Diagnosis found = diagnose();
        QCOMPARE(found.json[u"keyring"_s][u"service"_s].toString(), u"kwallet"_s);
        QCOMPARE(found.state("keyring"), u"locked"_s);
        QCOMPARE(found.json[u"keyring"_s][u"hasSession"_s], QJsonValue(false));
        m_lab->bus().call(QDBusMessage::createMethodCall(
            daemon, u"/modules/kwalletd5"_s, u"app.orbitledge.Mock"_s, u"Disable"_s));
        // The other one is used in its place where it is there.
        const Diagnosis other = diagnose();
        QCOMPARE(other.json[u"keyring"_s][u"service"_s].toString(), u"secret-service"_s);
        QCOMPARE(other.state("keyring"), u"unlocked"_s);
        m_lab->stopKeyring();
        const Diagnosis disabled = diagnose();
        QCOMPARE(disabled.state("keyring"), u"disabled"_s);
        QCOMPARE(disabled.exitCode, 1);
    }

    // ---- what the program can do without ----

    void shouldSayThatNothingShowsNotifications()
    {
        const Diagnosis found = diagnose();
        QCOMPARE(found.exitCode, 0);
        QCOMPARE(found.state("notifications"), u"absent"_s);
        QCOMPARE(found.level("notifications"), u"missing"_s);
        startNotifications();
        QCOMPARE(diagnose().state("notifications"), u"there"_s);
    }

    void shouldSayThatNothingShowsIcons()
    {
        const Diagnosis found = diagnose();
        QCOMPARE(found.exitCode, 0);
        QCOMPARE(found.state("tray"), u"absent"_s);
        QCOMPARE(found.level("tray"), u"missing"_s);
        const QString watcher = XfceDesk::watcherName();
        startPython(watcher, u"mock_notifier_watcher.py"_s, {});
        QCOMPARE(diagnose().state("tray"), u"no-host"_s);
        m_lab->pauseService(watcher);
        QCOMPARE(diagnose().state("tray"), u"mute"_s);
        m_lab->resumeService(watcher);
        QDBusMessage host = QDBusMessage::createMethodCall(
            watcher, u"/StatusNotifierWatcher"_s, u"app.orbitledge.Test"_s, u"Host"_s);
        host << true;
        QCOMPARE(m_lab->bus().call(host).type(), QDBusMessage::ReplyMessage);
        QCOMPARE(diagnose().state("tray"), u"notifier"_s);
    }

    void shouldSayThatOnlyWindowsAreTakenIn()
    {
        makeLab(true);
        QCOMPARE(diagnose().state("tray"), u"absent"_s);
        m_desk.emplace(*m_lab);
        m_desk->startTrayOfWindows();
        DesktopLab::await("the tray of windows", [&] { return diagnose().state("tray") == u"xembed"; });
        m_environment.insert(u"XDG_SESSION_TYPE"_s, u"wayland"_s);
        QCOMPARE(diagnose().state("tray"), u"xembed-on-wayland"_s);
    }

    void shouldSayThatThereIsNoPortal()
    {
        const Diagnosis found = diagnose();
        QCOMPARE(found.exitCode, 0);
        QCOMPARE(found.state("portal"), u"absent"_s);
        QCOMPARE(found.level("portal"), u"missing"_s);
    }

    void shouldSayWhatThePortalLacks_data()
    {
        QTest::addColumn<QString>("behaviour");
        QTest::addColumn<QString>("state");
        QTest::newRow("colours") << u"colourless"_s << u"no-color-scheme"_s;
        QTest::newRow("settings") << u"none"_s << u"no-settings"_s;
    }
    void shouldSayWhatThePortalLacks()
    {
        QFETCH(const QString, behaviour);
        QFETCH(const QString, state);
        startPortal(behaviour);
        const Diagnosis found = diagnose();
        QCOMPARE(found.exitCode, 0);
        QCOMPARE(found.state("portal"), state);
        m_lab->pauseService(u"org.freedesktop.portal.Desktop"_s);
        QCOMPARE(diagnose().state("portal"), u"mute"_s);
    }

    void shouldSayWhatBecameOfTheTimer_data()
    {
        QTest::addColumn<QString>("behaviour");
        QTest::addColumn<QString>("state");
        QTest::newRow("it waits") << u"obey"_s << u"waiting"_s;
        QTest::newRow("it failed") << u"fail"_s << u"failed"_s;
        QTest::newRow("systemd does not know it") << u"forget"_s << u"not-in-force"_s;
        QTest::newRow("systemd is mute") << u"mute"_s << u"mute"_s;
    }
    void shouldSayWhatBecameOfTheTimer()
    {
        QFETCH(const QString, behaviour);
        QFETCH(const QString, state);
        const QString units = m_environment.value(u"XDG_CONFIG_HOME"_s) + u"/systemd/user"_s;
        QVERIFY(QDir().mkpath(units));
        QFile timer(units + u"/app.orbitledge.Orbitledge.reminders.timer"_s);
        QVERIFY(timer.open(QIODevice::WriteOnly));
        startSystemd(behaviour);
        const Diagnosis found = diagnose();
        QCOMPARE(found.exitCode, 0);
        QCOMPARE(found.state("reminderTimer"), state);
        if (state == u"waiting")
            QCOMPARE(found.json[u"reminderTimer"_s][u"next"_s].toString(), u"2026-03-18T09:00:00Z"_s);
    }

    void shouldSayWhetherThePanelRuns()
    {
        QCOMPARE(diagnose().state("panel"), u"not-running"_s);
        QVERIFY(m_lab->bus().registerService(u"app.orbitledge.Orbitledge"_s));
        QCOMPARE(diagnose().state("panel"), u"running"_s);
    }

    void shouldSayThatTheProgramWithWindowsIsMissing()
    {
        const QString alone = m_lab->path(u"alone"_s);
        QVERIFY(QDir().mkpath(alone));
        for (const QString &name : {u"/orbitledge"_s, u"/orbitledge-command"_s})
            QVERIFY(QFile::copy(QFileInfo(QStringLiteral(ORBITLEDGE_PROGRAM)).path() + name, alone + name));
        QProcess program;
        program.setProcessEnvironment(m_environment);
        program.start(alone + u"/orbitledge"_s, {u"doctor"_s, u"--json"_s});
        QVERIFY(program.waitForFinished());
        QCOMPARE(program.exitCode(), 1);
        const QJsonObject found = QJsonDocument::fromJson(program.readAllStandardOutput()).object();
        QCOMPARE(found[u"windowsProgram"_s][u"state"_s].toString(), u"missing"_s);
    }

    void shouldSayThatTheXServerIsMute()
    {
        // One that takes connections and says nothing.
        const int number = 4242 + static_cast<int>(::getpid() % 10'000);
        const QByteArray path = "/tmp/.X11-unix/X" + QByteArray::number(number);
        QDir().mkpath(u"/tmp/.X11-unix"_s);
        const int server = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        std::ranges::copy(path, address.sun_path);
        QCOMPARE(::bind(server, reinterpret_cast<const sockaddr *>(&address), sizeof address), 0);
        QCOMPARE(::listen(server, 8), 0);
        m_environment.insert(u"DISPLAY"_s, u":%1"_s.arg(number));
        const Diagnosis found = diagnose();
        ::close(server);
        ::unlink(path.constData());
        QCOMPARE(found.state("windowsProgram"), u"no-answer"_s);
        QVERIFY(found.json[u"tray"_s][u"xembed"_s].isNull());
        QVERIFY2(found.milliseconds < 20'000, qPrintable(QString::number(found.milliseconds)));
    }

    // ---- files ----

    void shouldSayWhatCannotBeWritten_data()
    {
        QTest::addColumn<QString>("obstacle");
        QTest::addColumn<QString>("state");
        QTest::newRow("a folder without the right to write") << u"mode"_s << u"not-writable"_s;
        QTest::newRow("a folder above it") << u"above"_s << u"not-writable"_s;
        QTest::newRow("a file in its place") << u"file"_s << u"not-a-folder"_s;
        QTest::newRow("a file above it") << u"file above"_s << u"not-a-folder"_s;
    }
    void shouldSayWhatCannotBeWritten()
    {
        QFETCH(const QString, obstacle);
        QFETCH(const QString, state);
        const QString place = m_lab->path(u"place"_s);
        m_environment.insert(u"XDG_CONFIG_HOME"_s, place);
        const QString own = folder(m_environment, "XDG_CONFIG_HOME");
        const auto makeFile = [](const QString &path) {
            QFile file(path);
            return file.open(QIODevice::WriteOnly);
        };
        if (obstacle == u"file above") {
            QVERIFY(makeFile(place));
        } else {
            QVERIFY(QDir().mkpath(place));
            if (obstacle == u"file")
                QVERIFY(makeFile(own));
            if (obstacle == u"mode")
                QVERIFY(QDir().mkpath(own));
        }
        if (state == u"not-writable") {
            const QString locked = obstacle == u"mode" ? own : place;
            QCOMPARE(::chmod(locked.toLocal8Bit().constData(), 0500), 0);
        }
        const Diagnosis found = diagnose(m_environment, boundByPermissions());
        QCOMPARE(::chmod(place.toLocal8Bit().constData(), 0700), 0);
        QCOMPARE(found.exitCode, 1);
        QCOMPARE(found.failures(), QStringList(u"folderConfiguration"_s));
        QCOMPARE(found.state("folderConfiguration"), state);
    }

    void shouldSayWhoElseCanRead()
    {
        QCOMPARE(::chmod(cacheFile().toLocal8Bit().constData(), 0644), 0);
        QCOMPARE(::chmod(dataFolder().toLocal8Bit().constData(), 0755), 0);
        const Diagnosis found = diagnose();
        QCOMPARE(found.exitCode, 0);
        QCOMPARE(found.state("fileSnapshot"), u"not-private"_s);
        QCOMPARE(found.level("fileSnapshot"), u"warning"_s);
        QCOMPARE(found.json[u"fileSnapshot"_s][u"mode"_s].toString(), u"0644"_s);
        QCOMPARE(found.state("folderData"), u"not-private"_s);
    }

    void shouldSayWhatCannotBeReadAndWhatIsDamaged()
    {
        QCOMPARE(::chmod(cacheFile().toLocal8Bit().constData(), 0), 0);
        QCOMPARE(diagnose(m_environment, boundByPermissions()).state("fileSnapshot"), u"unreadable"_s);
        QCOMPARE(::chmod(cacheFile().toLocal8Bit().constData(), 0600), 0);
        const QString state = folder(m_environment, "XDG_STATE_HOME");
        const QString settings = folder(m_environment, "XDG_CONFIG_HOME");
        for (const QString &path :
            {cacheFile(), state + u"/reminders.json"_s, settings + u"/settings.json"_s}) {
            QVERIFY(QDir().mkpath(QFileInfo(path).path()));
            QFile file(path);
            QVERIFY(file.open(QIODevice::WriteOnly));
            QVERIFY(file.write("{\"version\":") > 0);
        }
        const Diagnosis found = diagnose();
        QCOMPARE(found.state("fileSnapshot"), u"damaged"_s);
        QCOMPARE(found.state("fileReminders"), u"damaged"_s);
        QCOMPARE(found.state("fileSettings"), u"damaged"_s);
        QCOMPARE(found.exitCode, 0);
        QVERIFY(QFile::exists(cacheFile()));
    }

    void shouldSayWhatStartsAtLogin()
    {
        QCOMPARE(diagnose().state("autostart"), u"off"_s);
        makeAutostartEntry(m_lab->path(u"gone/orbitledge"_s));
        const Diagnosis stale = diagnose();
        QCOMPARE(stale.state("autostart"), u"stale"_s);
        QCOMPARE(stale.level("autostart"), u"warning"_s);
        QCOMPARE(stale.exitCode, 0);
        makeAutostartEntry(u"/bin/true"_s);
        QCOMPARE(diagnose().state("autostart"), u"other-program"_s);
        makeAutostartEntry(QStringLiteral(ORBITLEDGE_PROGRAM));
        QCOMPARE(diagnose().state("autostart"), u"on"_s);
        QFile entry(
            m_environment.value(u"XDG_CONFIG_HOME"_s) + u"/autostart/app.orbitledge.Orbitledge.desktop"_s);
        QVERIFY(entry.open(QIODevice::Append));
        QVERIFY(entry.write("Hidden=true\n") > 0);
        entry.close();
        QCOMPARE(diagnose().state("autostart"), u"switched-off"_s);
    }

    void shouldSayThatNothingOpensPages()
    {
        const QString empty = m_lab->path(u"empty"_s);
        QVERIFY(QDir().mkpath(empty));
        m_environment.insert(u"PATH"_s, empty);
        const Diagnosis found = diagnose();
        QCOMPARE(found.exitCode, 1);
        QCOMPARE(found.failures(), QStringList(u"browser"_s));
    }

    void shouldSayThatThereIsNoNetwork()
    {
        const QStringList apart{u"unshare"_s, u"--user"_s, u"--map-root-user"_s, u"--net"_s};
        if (QProcess::execute(apart.first(), apart.mid(1) + QStringList{u"true"_s}) != 0)
            QSKIP("this machine allows no network of one's own");
        const Diagnosis found = diagnose(m_environment, apart);
        QCOMPARE(found.state("network"), u"no-route"_s);
        QCOMPARE(found.exitCode, 0);
    }

    // ---- privacy ----

    void shouldTellNobodyWhoThePersonIs()
    {
        const QString disk = m_lab->path(u"lovelace/disk"_s);
        const QString home = m_lab->path(u"home"_s);
        m_environment.insert(u"USER"_s, u"lovelace"_s);
        m_environment.insert(u"XDG_STATE_HOME"_s, disk);
        m_environment.insert(u"XDG_CACHE_HOME"_s, home + u"/cache of ada@example.org/x"_s);
        const Diagnosis found = diagnose();
        const QByteArray json = QJsonDocument(found.json).toJson();
        for (const QByteArray &text : {found.text.toUtf8(), json}) {
            QVERIFY(!text.contains("lovelace"));
            QVERIFY(!text.contains(home.toUtf8()));
            QVERIFY(!text.contains("example.org"));
            QVERIFY(text.contains("/<user>/disk/app.orbitledge.Orbitledge"));
            QVERIFY(text.contains("~/cache of <address>/x/app.orbitledge.Orbitledge"));
        }
    }
};

ORBITLEDGE_TEST_MAIN(DoctorTest)
#include "DoctorTest.moc"
