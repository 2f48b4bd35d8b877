#include "platform/linux/notifications/SystemdUnits.h"

#include "support/TestMain.h"

#include <QFile>
#include <QMap>
#include <QProcess>
#include <QTest>

using namespace orbitledge;
using namespace Qt::StringLiterals;

namespace {

const Instant tuesday = Instant::fromText("2026-03-17T08:00:00Z").value();

QByteArray noVariable(const char * /*name*/)
{
    return {};
}

/// The line of `text` that begins with `key`, without that.
QByteArray valueOf(const QByteArray &text, const QByteArray &key)
{
    for (const QByteArray &line : text.split('\n')) {
        if (line.startsWith(key + '='))
            return line.mid(key.size() + 1);
    }
    return {};
}

void writeFile(const QString &path, const QByteArray &content)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size())
        qFatal("cannot write %s", qPrintable(path));
}

struct Result {
    int status = -1;
    QByteArray output;
    QByteArray errors;
};

Result analyze(const QStringList &arguments)
{
    const QTemporaryDir runtime; // it wants one, and leaves nothing in it
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(u"XDG_RUNTIME_DIR"_s, runtime.path());
    QProcess process;
    process.setProcessEnvironment(environment);
    process.start(u"systemd-analyze"_s, arguments);
    if (!process.waitForFinished() || process.exitStatus() != QProcess::NormalExit)
        qFatal("systemd-analyze failed");
    return {process.exitCode(), process.readAllStandardOutput(), process.readAllStandardError()};
}

} // namespace

class SystemdUnitsTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void shouldElapseAtAWholeSecondNotBefore_data()
    {
        QTest::addColumn<Instant>("next");
        QTest::addColumn<QByteArray>("elapse");
        const auto instant
            = [](qint64 milliseconds) { return Instant::fromMillisecondsSinceEpoch(milliseconds); };
        const qint64 eight = tuesday.millisecondsSinceEpoch();
        QTest::newRow("a whole second") << tuesday << QByteArray("2026-03-17 08:00:00");
        QTest::newRow("a moment later") << instant(eight + 1) << QByteArray("2026-03-17 08:00:01");
        QTest::newRow("a moment earlier") << instant(eight - 1) << QByteArray("2026-03-17 08:00:00");
        QTest::newRow("the last second") << instant(7'258'118'399'000) << QByteArray("2199-12-31 23:59:59");
        QTest::newRow("later") << instant(7'258'118'400'000) << QByteArray("2199-12-31 23:59:59");
        QTest::newRow("the first second") << instant(86'400'000) << QByteArray("1970-01-02 00:00:00");
        QTest::newRow("earlier") << instant(86'399'000) << QByteArray("1970-01-02 00:00:00");
        QTest::newRow("before the epoch") << instant(-1'500) << QByteArray("1970-01-02 00:00:00");
    }
    void shouldElapseAtAWholeSecondNotBefore()
    {
        QFETCH(const Instant, next);
        QFETCH(const QByteArray, elapse);
        const auto units = unitsForReminders(next, "/usr/bin/true", noVariable);
        QVERIFY(units.has_value());
        QCOMPARE(valueOf(units->timer, "OnCalendar"), elapse + " UTC");
        QCOMPARE(units->elapse.text().replace('T', ' '), elapse + 'Z');

        const Result told = analyze({u"calendar"_s, u"--base-time=1970-01-01 12:00:00 UTC"_s,
            QString::fromLatin1(valueOf(units->timer, "OnCalendar"))});
        QCOMPARE(told.status, 0);
        // Once, and then.
        QVERIFY2(told.output.contains(elapse), told.output);
        QCOMPARE(told.output.count("Next elapse"), 1);
        QCOMPARE(told.output.count("Iter. #"), 0);
    }

    void shouldWriteUnitsThatSystemdAccepts_data()
    {
        QTest::addColumn<QByteArray>("name");
        QTest::newRow("plain") << QByteArray("plain");
        QTest::newRow("spaces") << QByteArray(" two  words ");
        QTest::newRow("percent signs") << QByteArray("100%h %% %");
        QTest::newRow("dollar signs") << QByteArray("$HOME ${HOME} $$");
        QTest::newRow("quotation marks") << QByteArray("a \"b\" 'c'");
        QTest::newRow("backslashes") << QByteArray("\\ \\n \\x41 \\");
        QTest::newRow("control characters") << QByteArray("a\nb\tc\x1b\x7f");
        QTest::newRow("signs of the shell") << QByteArray("a; b & c | `d` $(e) #f *");
        QTest::newRow("signs of unit files") << QByteArray("-@:+!a=b;c # d");
        QTest::newRow("letters of the world") << QByteArray("Größe 値");
        QTest::newRow("not UTF-8") << QByteArray("a\xff\xfe");
    }
    void shouldWriteUnitsThatSystemdAccepts()
    {
        QFETCH(const QByteArray, name);
        const QTemporaryDir folder;
        const QByteArray program = folder.path().toUtf8() + '/' + name;
        const std::filesystem::path path(program.toStdString());
        std::filesystem::create_symlink("/usr/bin/true", path);
        const auto variable = [](const char *key) {
            return QByteArrayView(key) == "XDG_DATA_HOME" ? QByteArray("/a b/%h$HOME\"\\\n;ü'")
                                                          : QByteArray();
        };
        const auto units = unitsForReminders(tuesday, path, variable);
        QVERIFY(units.has_value());
        QVERIFY(units->service.isValidUtf8());
        const QString service = folder.filePath(u"app.example.reminders.service"_s);
        const QString timer = folder.filePath(u"app.example.reminders.timer"_s);
        writeFile(service, units->service);
        writeFile(timer, units->timer);
        const Result verified = analyze({u"verify"_s, u"--user"_s, u"--man=no"_s, service, timer});
        QCOMPARE(verified.errors, QByteArray());
        QCOMPARE(verified.output, QByteArray());
        QCOMPARE(verified.status, 0);
        std::filesystem::remove(path); // the folder would not know a name that is not UTF-8
    }

    void shouldQuoteForSystemd()
    {
        const auto command = [](const char *program) {
            return valueOf(unitsForReminders(tuesday, program, noVariable)->service, "ExecStart");
        };
        QCOMPARE(command("/opt/x y/p"), ":\"/opt/x y/p\" deliver-reminders");
        QCOMPARE(command("/opt/%h/$p"), ":\"/opt/%%h/$p\" deliver-reminders");
        // It may be an argument, but not what is executed.
        const char *const throughShell
            = ":/bin/sh -c \"exec \\\"$0\\\" \\\"$@\\\"\" \"/opt/\\\"p\\\"\\x0a\" deliver-reminders";
        QCOMPARE(command("/opt/\"p\"\n"), throughShell);
    }

    void shouldPassOnWhereThingsAre()
    {
        const QMap<QByteArray, QByteArray> environment{{"XDG_STATE_HOME", "/a b/100%"},
            {"ORBITLEDGE_API_URL", "https://example.app/?a=b"}, {"HOME", "/not/this"}};
        const auto units = unitsForReminders(
            tuesday, "/usr/bin/true", [&](const char *name) { return environment.value(name); });
        QVERIFY(units.has_value());
        QVERIFY(units->service.contains("\nEnvironment=\"XDG_STATE_HOME=/a b/100%%\"\n"));
        QVERIFY(units->service.contains("\nEnvironment=\"ORBITLEDGE_API_URL=https://example.app/?a=b\"\n"));
        for (const char *const name :
            {"XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_CACHE_HOME", "ORBITLEDGE_WEB_URL"})
            QVERIFY(units->service.contains("\nUnsetEnvironment=" + QByteArray(name) + '\n'));
        QVERIFY(!units->service.contains("/not/this"));
    }

    void shouldRefuseWhatSystemdWouldPassOver_data()
    {
        QTest::addColumn<QByteArray>("value");
        QTest::newRow("a control character") << QByteArray("/a\x1b");
        QTest::newRow("not UTF-8") << QByteArray("/a\xff");
    }
    void shouldRefuseWhatSystemdWouldPassOver()
    {
        QFETCH(const QByteArray, value);
        const auto units = unitsForReminders(tuesday, "/usr/bin/true", [&](const char *name) {
            return QByteArrayView(name) == "XDG_STATE_HOME" ? value : QByteArray();
        });
        QVERIFY(!units.has_value());
        QCOMPARE(units.error(), u"the variable XDG_STATE_HOME has a value that systemd does not take"_s);
    }

    void shouldRefuseAProgramWithoutAPlace()
    {
        QVERIFY(!unitsForReminders(tuesday, "", noVariable).has_value());
        QVERIFY(!unitsForReminders(tuesday, "orbitledge", noVariable).has_value());
    }
};

ORBITLEDGE_TEST_MAIN(SystemdUnitsTest)
#include "SystemdUnitsTest.moc"
