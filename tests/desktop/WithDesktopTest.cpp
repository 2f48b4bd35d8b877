#include "support/ProgramEnd.h"
#include "support/TestMain.h"

#include <QProcess>

#include <csignal>

using namespace orbitledge::testing;
using namespace Qt::StringLiterals;

namespace {

constexpr int patience = 30'000; // milliseconds; only reached by what will never come

/// The script that puts a command into a desktop session.
class WithDesktop {
public:
    void start(const QStringList &arguments)
    {
        m_process.start(QStringLiteral(ORBITLEDGE_SCRIPTS) + u"/with-desktop"_s, arguments);
        if (!m_process.waitForStarted())
            qFatal("cannot start the script");
    }

    ProgramEnd finish(const QByteArray &input = {})
    {
        m_process.write(input);
        m_process.closeWriteChannel();
        if (!m_process.waitForFinished())
            qFatal("the script does not end");
        return {m_process.exitCode(), m_process.readAllStandardOutput(), m_process.readAllStandardError()};
    }

    QProcess &process() { return m_process; }

private:
    QProcess m_process;
};

ProgramEnd run(const QStringList &arguments, const QByteArray &input = {})
{
    WithDesktop script;
    script.start(arguments);
    return script.finish(input);
}

bool isRunning(const QByteArray &pid)
{
    return ::kill(pid.toInt(), 0) == 0;
}

} // namespace

class WithDesktopTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void shouldPassEverythingOn()
    {
        const QTemporaryDir dir;
        const ProgramEnd outcome
            = run({dir.path(), u"sh"_s, u"-c"_s, u"cat; echo \"$1\" >&2; exit 3"_s, u"sh"_s, u"two words"_s},
                "through");
        QCOMPARE(outcome.exitCode, 3);
        QCOMPARE(outcome.output, "through");
        QCOMPARE(outcome.errors, "two words\n");
    }

    void shouldKeepItsFoldersToItself()
    {
        const QTemporaryDir parent;
        // Too long for a socket to be in it.
        const QString dir = parent.filePath(u"not there yet/"_s + QString(100, u'x'));
        const ProgramEnd outcome = run({dir, u"sh"_s, u"-c"_s,
            u"for d in \"$HOME\" \"$XDG_CONFIG_HOME\" \"$XDG_DATA_HOME\" \"$XDG_STATE_HOME\""
            u" \"$XDG_CACHE_HOME\" \"$XDG_RUNTIME_DIR\"; do stat -c %a \"$d\"; done"_s});
        QCOMPARE(outcome.output, QByteArray("700\n").repeated(6));
        QCOMPARE(QFile::permissions(dir) & (QFile::ReadGroup | QFile::ExeGroup | QFile::ReadOther),
            QFile::Permissions());
        QCOMPARE(QFile::permissions(dir + u"/keyring-password"_s)
                & (QFile::ReadGroup | QFile::ReadOther | QFile::WriteGroup | QFile::WriteOther),
            QFile::Permissions());
    }

    void shouldComeUpInAFolderOfAnyName()
    {
        const QTemporaryDir parent;
        for (const QString &name : {u"two words"_s, u"\u00dcbung, 100% = a;b"_s}) {
            const ProgramEnd outcome = run({parent.filePath(name), u"dbus-send"_s, u"--session"_s,
                u"--print-reply"_s, u"--dest=org.freedesktop.secrets"_s, u"/org/freedesktop/secrets"_s,
                u"org.freedesktop.DBus.Peer.Ping"_s});
            QVERIFY2(outcome.exitCode == 0, outcome.errors.constData());
        }
    }

    void shouldKeepTheKeyringForTheNextSession()
    {
        const QTemporaryDir dir;
        const QTemporaryDir other;
        const QStringList look{u"secret-tool"_s, u"lookup"_s, u"a"_s, u"b"_s};
        QCOMPARE(
            run({dir.path(), u"secret-tool"_s, u"store"_s, u"--label=x"_s, u"a"_s, u"b"_s}, "kept").exitCode,
            0);
        QCOMPARE(run(QStringList{dir.path()} + look).output, "kept");
        QCOMPARE(run(QStringList{other.path()} + look).output, "");
    }

    void shouldRefuseASecondSessionAtATime()
    {
        const QTemporaryDir dir;
        WithDesktop first;
        first.start({dir.path(), u"sh"_s, u"-c"_s, u"echo ready; cat"_s});
        QVERIFY(QTest::qWaitFor([&] { return first.process().canReadLine(); }, patience));
        const ProgramEnd second = run({dir.path(), u"true"_s});
        QCOMPARE(second.exitCode, 125);
        QCOMPARE(second.errors.count('\n'), 1);
        QCOMPARE(first.finish().complaint(), "");
        QCOMPARE(run({dir.path(), u"true"_s}).complaint(), "");
    }

    void shouldEndEverythingHoweverItEnds_data()
    {
        QTest::addColumn<int>("signal");
        QTest::newRow("by itself") << 0;
        QTest::newRow("terminated") << SIGTERM;
        QTest::newRow("interrupted") << SIGINT;
        QTest::newRow("killed") << SIGKILL;
    }
    void shouldEndEverythingHoweverItEnds()
    {
        QFETCH(const int, signal);
        const QTemporaryDir dir;
        WithDesktop script;
        // The command, the bus, and the keyring.
        script.start({dir.path(), u"sh"_s, u"-c"_s,
            u"for name in org.freedesktop.DBus org.freedesktop.secrets; do dbus-send --session"
            u" --print-reply=literal --dest=org.freedesktop.DBus / "
            u"org.freedesktop.DBus.GetConnectionUnixProcessID"
            u" string:$name; done; echo $$; cat"_s});
        QByteArray said;
        QVERIFY(QTest::qWaitFor(
            [&] {
                said += script.process().readAllStandardOutput();
                return said.count('\n') == 3;
            },
            patience));
        QByteArrayList pids;
        for (const QByteArray &line : said.trimmed().split('\n'))
            pids.append(line.trimmed().split(' ').constLast());
        for (const QByteArray &pid : pids)
            QVERIFY2(isRunning(pid), pid.constData());

        if (signal != 0)
            ::kill(static_cast<pid_t>(script.process().processId()), signal);
        else
            script.process().closeWriteChannel();
        QVERIFY(script.process().waitForFinished());
        // Where the script had no time to wait for them, somebody else has to reap them first.
        for (const QByteArray &pid : pids)
            QVERIFY2(
                QTest::qWaitFor([&] { return !isRunning(pid) || isZombie(pid); }, patience), pid.constData());
        QVERIFY(script.process().readAllStandardError().isEmpty());
    }

    void shouldSayInOneLineWhatIsWrong_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::newRow("nothing") << QStringList{};
        QTest::newRow("no command") << QStringList{u"/tmp/somewhere"_s};
        QTest::newRow("no folder") << QStringList{u"/proc/nowhere/at all"_s, u"true"_s};
    }
    void shouldSayInOneLineWhatIsWrong()
    {
        QFETCH(const QStringList, arguments);
        const ProgramEnd outcome = run(arguments);
        QCOMPARE(outcome.exitCode, 125);
        QVERIFY(outcome.errors.startsWith("with-desktop: "));
        QCOMPARE(outcome.errors.count('\n'), 1);
        QVERIFY(outcome.output.isEmpty());
    }

private:
    static bool isZombie(const QByteArray &pid)
    {
        QFile status(u"/proc/"_s + QString::fromLatin1(pid) + u"/stat"_s);
        return status.open(QIODevice::ReadOnly) && status.readAll().contains(") Z ");
    }
};

ORBITLEDGE_TEST_MAIN(WithDesktopTest)
#include "WithDesktopTest.moc"
