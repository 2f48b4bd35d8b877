#include "platform/linux/PosixFileStore.h"
#include "platform/linux/notifications/SystemdDelivery.h"
#include "support/DesktopLab.h"

#include <QCoreApplication>
#include <QCoroTask>
#include <QDBusConnectionInterface>
#include <QDateTime>
#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QProcess>
#include <QTest>

#include <unistd.h>

using namespace orbitledge;
using namespace orbitledge::testing;
using namespace Qt::StringLiterals;

namespace {

QByteArray systemctl(const QStringList &arguments)
{
    QProcess process;
    process.start(u"systemctl"_s, QStringList{u"--user"_s, u"--no-pager"_s, u"--no-legend"_s} + arguments);
    if (!process.waitForFinished() || process.exitStatus() != QProcess::NormalExit)
        qFatal("systemctl failed");
    return process.readAllStandardOutput() + process.readAllStandardError();
}

QByteArray unitProperty(const QString &unit, const QString &name)
{
    return systemctl({u"show"_s, unit, u"--property="_s + name, u"--value"_s}).trimmed();
}

Instant inSeconds(qint64 seconds)
{
    return Instant::fromSecondsSinceEpoch(QDateTime::currentSecsSinceEpoch() + seconds);
}

const QString timer = u"app.example.Reminders.reminders.timer"_s;
const QString service = u"app.example.Reminders.reminders.service"_s;

} // namespace

/// Runs inside a session that has systemd's user instance.
class UserSystemdTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    static void initTestCase()
    {
        const QString systemd = qEnvironmentVariable("ORBITLEDGE_USER_SYSTEMD");
        if (systemd != "running"_L1)
            QSKIP(qPrintable(u"no user instance of systemd: "_s + systemd));
        DesktopLab::await("systemd on the bus", [] {
            return QDBusConnection::sessionBus().interface()->isServiceRegistered(
                u"org.freedesktop.systemd1"_s);
        });
    }

    void init()
    {
        m_folder = std::make_unique<QTemporaryDir>();
        m_program = m_folder->filePath(u"program"_s);
    }

    void cleanup() { QVERIFY(arrange(std::nullopt)); }

    void shouldRunTheProgramOnce()
    {
        writeProgram("date +%s > time\necho \"$@\" >> ran");
        QVERIFY(arrange(inSeconds(2)));
        QCOMPARE(unitProperty(timer, u"UnitFileState"_s), "enabled");
        QVERIFY(systemctl({u"list-timers"_s, u"--all"_s}).contains(timer.toUtf8()));
        QTRY_COMPARE_WITH_TIMEOUT(words("ran"), "deliver-reminders\n", 20'000);
        QVERIFY(Instant::fromSecondsSinceEpoch(words("time").trimmed().toLongLong()) >= m_last.value());
        QTRY_COMPARE_WITH_TIMEOUT(unitProperty(service, u"ActiveState"_s), "inactive", 20'000);
        QCOMPARE(unitProperty(service, u"Result"_s), "success");
        // What is in force is left alone, although its time is over.
        QVERIFY(arrange(m_last));
        QCOMPARE(unitProperty(timer, u"SubState"_s), "elapsed");
        QCOMPARE(words("ran"), "deliver-reminders\n");
    }

    void shouldLeaveNothing()
    {
        writeProgram("true");
        QVERIFY(arrange(inSeconds(1000)));
        QVERIFY(arrange(std::nullopt));
        verifyNothingIsLeft();
    }

    void shouldNotRunAtOnceWhatIsDueLater()
    {
        writeProgram("echo ran >> ran");
        // It elapses, so that its stamp is of now, and again, so that there are both.
        for (int round = 1; round <= 2; ++round) {
            QVERIFY(arrange(inSeconds(1)));
            QTRY_COMPARE_WITH_TIMEOUT(words("ran"), QByteArray("ran\n").repeated(round), 20'000);
            QTRY_COMPARE_WITH_TIMEOUT(unitProperty(service, u"ActiveState"_s), "inactive", 20'000);
        }
        QVERIFY(arrange(inSeconds(1000)));
        QCOMPARE(unitProperty(timer, u"SubState"_s), "waiting");
        QCOMPARE(unitProperty(service, u"ActiveState"_s), "inactive");
        QCOMPARE(words("ran"), "ran\nran\n");
    }

    void shouldRunAtOnceWhatIsOverdue_data()
    {
        QTest::addColumn<bool>("hasElapsedBefore");
        QTest::newRow("for the first time") << false;
        QTest::newRow("after another") << true;
    }
    void shouldRunAtOnceWhatIsOverdue()
    {
        QFETCH(const bool, hasElapsedBefore);
        writeProgram("echo ran >> ran");
        if (hasElapsedBefore) {
            QVERIFY(arrange(inSeconds(1)));
            QTRY_COMPARE_WITH_TIMEOUT(words("ran"), "ran\n", 20'000);
            QTRY_COMPARE_WITH_TIMEOUT(unitProperty(service, u"ActiveState"_s), "inactive", 20'000);
            QVERIFY(QFile::remove(m_folder->filePath(u"ran"_s)));
        }
        QVERIFY(arrange(inSeconds(-1000)));
        QTRY_COMPARE_WITH_TIMEOUT(words("ran"), "ran\n", 20'000);
    }

    void shouldMakeUpForWhatWasMissedAtTheNextLogin()
    {
        writeProgram("echo ran >> ran");
        // Far enough away for the machine to be "off" before.
        QVERIFY(arrange(inSeconds(8)));
        const QByteArray due = unitProperty(timer, u"NextElapseUSecRealtime"_s);
        QVERIFY(!due.isEmpty());
        // As if the machine were off: it does not elapse, but is linked and begins with the session's timers.
        systemctl({u"stop"_s, u"timers.target"_s, timer});
        QTRY_VERIFY_WITH_TIMEOUT(inSeconds(0) > m_last.value(), 20'000);
        QCOMPARE(words("ran"), QByteArray());
        systemctl({u"daemon-reload"_s});
        systemctl({u"start"_s, u"timers.target"_s});
        QTRY_COMPARE_WITH_TIMEOUT(words("ran"), "ran\n", 20'000);
        // Once is enough.
        QTRY_COMPARE_WITH_TIMEOUT(unitProperty(service, u"ActiveState"_s), "inactive", 20'000);
        systemctl({u"stop"_s, u"timers.target"_s, timer});
        systemctl({u"start"_s, u"timers.target"_s});
        QCOMPARE(unitProperty(timer, u"SubState"_s), "elapsed");
        QCOMPARE(words("ran"), "ran\n");
    }

    void shouldBeArrangedAnewFromWithinADelivery()
    {
        writeProgram(
            "echo begin >> ran\n"
            "if ! test -e again; then\n"
            "    touch again\n"
            "    echo arrange 1 $(($(date +%s) + 3))000 | " ORBITLEDGE_DELIVERY_PROBE " \"$0\" >> said\n"
            "fi\n"
            "echo end >> ran");
        QVERIFY(arrange(inSeconds(1)));
        // The second one may follow at once, where the first has taken its time.
        QTRY_VERIFY_WITH_TIMEOUT(words("ran").startsWith("begin\nend\n"), 20'000);
        QVERIFY2(words("said").startsWith("1 ok\n"), words("said"));
        QTRY_COMPARE_WITH_TIMEOUT(words("ran"), "begin\nend\nbegin\nend\n", 20'000);
        QTRY_COMPARE_WITH_TIMEOUT(unitProperty(service, u"ActiveState"_s), "inactive", 20'000);
        QCOMPARE(unitProperty(service, u"Result"_s), "success");
    }

    void shouldBeTakenBackFromWithinADelivery()
    {
        writeProgram("echo begin >> ran\n"
                     "echo arrange 1 never | " ORBITLEDGE_DELIVERY_PROBE " \"$0\" >> said\n"
                     "echo end >> ran");
        QVERIFY(arrange(inSeconds(1)));
        QTRY_COMPARE_WITH_TIMEOUT(words("ran"), "begin\nend\n", 20'000);
        QVERIFY2(words("said").startsWith("1 ok\n"), words("said"));
        QTRY_COMPARE_WITH_TIMEOUT(unitProperty(service, u"ActiveState"_s), "inactive", 20'000);
        verifyNothingIsLeft();
    }

    void shouldRunAProgramOfAnyName_data()
    {
        QTest::addColumn<QByteArray>("name");
        QTest::newRow("for systemd") << QByteArray("%h $HOME ${HOME} $$ %% ü; # 'x");
        QTest::newRow("for the shell") << QByteArray("\"a\" 'b' \\ $(touch c) `d`; & é\n*");
        QTest::newRow("not UTF-8") << QByteArray("a\xff\"b");
    }
    void shouldRunAProgramOfAnyName()
    {
        QFETCH(const QByteArray, name);
        writeProgram("echo ran >> ran");
        const QByteArray path = m_folder->path().toUtf8() + '/' + name;
        std::filesystem::create_symlink(m_program.toStdString(), path.toStdString());
        QVERIFY(arrange(inSeconds(0), path));
        QTRY_COMPARE_WITH_TIMEOUT(words("ran"), "ran\n", 20'000);
        std::filesystem::remove(path.toStdString()); // the folder would not know a name that is not UTF-8
    }

    void shouldRunTheProgramWithOurOwnPlaces()
    {
        writeProgram("env > environment.new; mv environment.new environment");
        const QByteArray strange = "/x \"%h\" $HOME \\ 'ü'\nEVIL=1";
        QVERIFY(arrange(inSeconds(0), {}, [&](const char *name) {
            return QByteArrayView(name) == "XDG_STATE_HOME" ? strange : QByteArray();
        }));
        QTRY_VERIFY_WITH_TIMEOUT(!words("environment").isEmpty(), 20'000);
        const QByteArray environment = '\n' + words("environment");
        QVERIFY2(environment.contains("\nXDG_STATE_HOME=" + strange + '\n'), environment);
        // The session has this one.
        QVERIFY(!qEnvironmentVariableIsEmpty("XDG_CACHE_HOME"));
        QVERIFY2(!environment.contains("\nXDG_CACHE_HOME="), environment);
    }

private:
    void writeProgram(const QByteArray &script)
    {
        QFile file(m_program);
        if (!file.open(QIODevice::WriteOnly))
            qFatal("cannot write the program");
        file.write("#!/bin/sh\ncd '" + m_folder->path().toUtf8() + "'\n" + script + '\n');
        file.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    }

    [[nodiscard]] QByteArray words(const char *name) const
    {
        QFile file(m_folder->filePath(QLatin1StringView(name)));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

    bool arrange(
        std::optional<Instant> next, const QByteArray &program = {},
        const std::function<QByteArray(const char *)> &variable
        = [](const char *name) { return qgetenv(name); })
    {
        m_last = next;
        SystemdDelivery delivery({.applicationId = u"app.example.Reminders"_s,
            .programPath = program.isEmpty() ? m_program.toStdString() : program.toStdString(),
            .configurationFolder = qgetenv("XDG_CONFIG_HOME").toStdString(),
            .dataFolder = qgetenv("XDG_DATA_HOME").toStdString(),
            .variable = variable,
            .files = std::make_shared<PosixFileStore>()});
        const auto outcome = QCoro::waitFor(delivery.arrange(next));
        if (!outcome)
            qWarning("%s", qPrintable(outcome.error()));
        return outcome.has_value();
    }

    static void verifyNothingIsLeft()
    {
        QTRY_VERIFY_WITH_TIMEOUT(!systemctl({u"list-units"_s, u"--all"_s}).contains("app.example"), 20'000);
        QVERIFY(!systemctl({u"list-timers"_s, u"--all"_s}).contains("app.example"));
        QVERIFY(!systemctl({u"list-unit-files"_s}).contains("app.example"));
        for (const char *const folder : {"XDG_CONFIG_HOME", "XDG_DATA_HOME"}) {
            QDirIterator entries(qEnvironmentVariable(folder),
                QDir::Files | QDir::System | QDir::Hidden | QDir::NoDotAndDotDot,
                QDirIterator::Subdirectories);
            QVERIFY2(!entries.hasNext(), qPrintable(entries.next()));
        }
    }

    std::unique_ptr<QTemporaryDir> m_folder;
    QString m_program;
    std::optional<Instant> m_last;
};

int main(int argc, char **argv)
{
    if (!qEnvironmentVariableIsSet("ORBITLEDGE_USER_SYSTEMD")) {
        QList<char *> arguments(argv, argv + argc + 1);
        QByteArray script = ORBITLEDGE_TEST_SUPPORT "/with-user-systemd";
        QByteArray self = QFile::symLinkTarget(u"/proc/self/exe"_s).toUtf8();
        arguments[0] = self.data();
        arguments.prepend(script.data());
        ::execv(script.constData(), arguments.data());
        qFatal("cannot run %s", script.constData());
    }
    const QCoreApplication application(argc, argv);
    UserSystemdTest test;
    return QTest::qExec(&test, argc, argv);
}
#include "UserSystemdTest.moc"
