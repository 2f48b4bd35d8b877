#include "platform/linux/PosixFileStore.h"
#include "platform/linux/ProcessLock.h"
#include "platform/linux/SystemClock.h"
#include "platform/linux/notifications/NotificationQueue.h"
#include "support/Dunst.h"
#include "support/NotificationDriver.h"
#include "support/ProgramEnd.h"
#include "support/TestMain.h"
#include "support/Times.h"

#include <QDBusMessage>
#include <QElapsedTimer>
#include <QRandomGenerator>

using namespace orbitledge;
using namespace orbitledge::testing;
using namespace Qt::StringLiterals;

namespace {

const SystemClock systemClock;

/// The program itself in a session, with what it is to show in its file.
struct Session {
    DesktopLab lab{{.hasDisplay = true}};
    Dunst dunst{lab};
    PosixFileStore files;

    [[nodiscard]] QString file() const
    {
        return lab.path(u"state/app.orbitledge.Orbitledge/reminders.json"_s);
    }

    /// Replaces the file: these were due so many milliseconds ago, and renew tomorrow.
    void keep(const QStringList &names, qint64 ago)
    {
        NotificationQueue queue;
        for (const QString &name : names) {
            const NotificationRequest request{
                .identifier = u"orbitledge.renewal."_s + name,
                .content = {.title = name, .body = u"It renews soon."_s, .userInfo = {}},
                .trigger = TimeIntervalTrigger{std::chrono::milliseconds(0)},
                .lastDay
                = LocalDate::fromDaysSinceEpoch(systemClock.now().millisecondsSinceEpoch() / day + 1),
            };
            if (!queue.add(request, later(systemClock.now(), -ago)))
                qFatal("cannot be added");
        }
        if (!files.replace(file().toStdString(), queue.encoded()))
            qFatal("cannot write %s", qPrintable(file()));
    }

    [[nodiscard]] ProgramEnd deliver() const
    {
        QProcess program;
        start(program);
        if (!program.waitForFinished())
            qFatal("it does not end");
        return {program.exitCode(), program.readAllStandardOutput(), program.readAllStandardError()};
    }

    void start(QProcess &program) const
    {
        program.setProcessEnvironment(lab.environment());
        program.setChildProcessModifier([] { ::prctl(PR_SET_PDEATHSIG, SIGKILL); });
        program.start(QStringLiteral(ORBITLEDGE_PROGRAM), {u"deliver-reminders"_s});
        if (!program.waitForStarted())
            qFatal("cannot start the program");
    }

    /// Who is killed takes along the process that works for it, a moment later.
    void awaitNobodyInCharge() const
    {
        const std::string lock = (file() + u".lock"_s).toStdString();
        DesktopLab::await("the end of who delivers", [&] { return ProcessLock::take(lock)->has_value(); });
    }

    void startMock(const QString &serverName)
    {
        lab.startService(Dunst::name(), u"/usr/bin/python3"_s,
            {QStringLiteral(ORBITLEDGE_TEST_SUPPORT) + u"/mock_notifications.py"_s, serverName});
    }

    /// For the mock.
    void closeAll() const
    {
        const QDBusMessage message = QDBusMessage::createMethodCall(
            Dunst::name(), u"/org/freedesktop/Notifications"_s, u"app.orbitledge.Test"_s, u"CloseAll"_s);
        QCOMPARE(lab.bus().call(message).type(), QDBusMessage::ReplyMessage);
    }

    int sentCount(const QByteArray &title)
    {
        return static_cast<int>(lab.monitored().count("   string \"" + title + "\"\n"));
    }
};

} // namespace

class DeliverRemindersTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void shouldShowWhatIsDueAndEnd()
    {
        Session session;
        session.dunst.start();
        session.lab.startMonitor();
        session.keep({u"a"_s, u"b"_s, u"c"_s, u"d"_s, u"e"_s}, second);
        for (int run = 0; run < 2; ++run) {
            const auto outcome = session.deliver();
            QCOMPARE(outcome.errors, "");
            QCOMPARE(outcome.output, "");
            QCOMPARE(outcome.complaint(), "");
            QCOMPARE(session.dunst.displayedCount(), 5);
        }
        QVERIFY(session.lab.monitored().contains("string \"desktop-entry\""));
    }

    void shouldGatherWhatIsLate()
    {
        Session session;
        session.dunst.start();
        session.lab.startMonitor();
        session.keep({u"a"_s, u"b"_s, u"c"_s, u"d"_s, u"e"_s}, hour);
        QCOMPARE(session.deliver().complaint(), "");
        QCOMPARE(session.dunst.displayedCount(), 1);
        QCOMPARE(session.sentCount("5 reminders came due while Orbitledge was not running."), 1);
    }

    void shouldDoNothingWhereNothingIsKept()
    {
        Session session;
        const auto outcome = session.deliver();
        QCOMPARE(outcome.errors, "");
        QCOMPARE(outcome.complaint(), "");
        QVERIFY(!QFile::exists(session.file()));
    }

    void shouldSayThatNobodyShowsThem()
    {
        Session session;
        session.keep({u"a"_s}, second);
        const auto outcome = session.deliver();
        QCOMPARE(outcome.errors,
            "orbitledge: Reminders are due, but nothing on this desktop shows notifications at the "
            "moment.\n");
        QCOMPARE(outcome.exitCode, 1);
        session.dunst.start();
        QCOMPARE(session.deliver().complaint(), "");
        QCOMPARE(session.dunst.displayedCount(), 1);
    }

    void shouldLeaveThemToTheProcessThatIsInCharge()
    {
        Session session;
        session.dunst.start();
        session.keep({u"a"_s}, second);
        NotificationDriver driver(session.lab.environment(), session.file());
        QCOMPARE(driver.pending(), QByteArrayList{"a"});
        const auto outcome = session.deliver();
        QCOMPARE(outcome.errors, "");
        QCOMPARE(outcome.complaint(), "");
        QCOMPARE(session.dunst.displayedCount(), 0);
        driver.quit();
        QCOMPARE(session.deliver().complaint(), "");
        QCOMPARE(session.dunst.displayedCount(), 1);
    }

    void shouldBeSeenOnADesktopThatTakesBackWhatASenderLeftBehind()
    {
        Session session;
        session.startMock(u"gnome-shell"_s);
        session.lab.startMonitor();
        session.keep({u"a"_s}, second);
        QCOMPARE(session.deliver().complaint(), "");
        QCOMPARE(session.sentCount("a"), 1);
        QVERIFY(!session.lab.monitored().contains("string \"desktop-entry\""));
        // Who stays says whose they are.
        NotificationDriver driver(session.lab.environment(), session.lab.path(u"other/reminders.json"_s));
        driver.tell("start");
        driver.tell("now b");
        driver.tell("save");
        driver.tell("clock 2026-03-17T12:00:02Z");
        driver.awaitPending({});
        QCOMPARE(session.sentCount("b"), 1);
        QVERIFY(session.lab.monitored().contains("string \"desktop-entry\""));
    }

    void shouldSayThatTheFileCannotBeRead()
    {
        Session session;
        QVERIFY(QDir().mkpath(session.file())); // a folder in its place
        const auto outcome = session.deliver();
        QCOMPARE(outcome.exitCode, 1);
        QCOMPARE(
            outcome.errors, "orbitledge: The reminders that wait to be shown cannot be read or written.\n");
    }

    void shouldShowEachOnceWheneverItIsKilled()
    {
        Session session;
        session.startMock(u"mock"_s);
        session.lab.startMonitor();
        // The shortest of some runs, so that most of those to come are killed before their end.
        QElapsedTimer elapsed;
        qint64 duration = std::numeric_limits<qint64>::max();
        for (int i = 0; i < 5; ++i) {
            session.keep({u"warm up"_s}, second);
            elapsed.start();
            QCOMPARE(session.deliver().complaint(), "");
            duration = std::min(duration, elapsed.nsecsElapsed() / 1000);
        }

        constexpr int kills = 200;
        const quint32 seed = QRandomGenerator::system()->generate();
        qInfo("seed %u, killed within %lld microseconds", seed, duration);
        QRandomGenerator random(seed);
        int inTime = 0;
        for (int i = 0; i < kills; ++i) {
            QStringList names;
            for (const char part : {'x', 'y', 'z'})
                names.append(u"run %1 %2"_s.arg(i).arg(QLatin1Char(part)));
            session.keep(names, second);
            QProcess program;
            session.start(program);
            const qint64 moment = random.bounded(duration);
            elapsed.restart();
            while (elapsed.nsecsElapsed() / 1000 < moment && program.state() == QProcess::Running)
                program.waitForFinished(0);
            const qint64 lived = elapsed.nsecsElapsed() / 1000;
            program.kill();
            program.waitForFinished();
            if (program.exitStatus() == QProcess::CrashExit)
                ++inTime;
            else
                duration = std::clamp<qint64>(lived, 1, duration); // the machine is less busy than it was
            session.awaitNobodyInCharge();
            QCOMPARE(session.deliver().complaint(), "");
            // Or each would have somebody waiting for a click.
            session.closeAll();
        }

        const QByteArray monitored = session.lab.monitored();
        int twice = 0;
        for (int i = 0; i < kills; ++i) {
            int twiceInRun = 0;
            for (const char part : {'x', 'y', 'z'}) {
                const QByteArray title
                    = "   string \"run " + QByteArray::number(i) + ' ' + QByteArray(1, part) + "\"\n";
                const auto count = monitored.count(title);
                QVERIFY2(count == 1 || count == 2, (title + QByteArray::number(count)).constData());
                twiceInRun += count == 2 ? 1 : 0;
            }
            QVERIFY(twiceInRun <= 1);
            twice += twiceInRun;
        }
        qInfo("%d of %d runs were killed before their end; %d reminders were shown twice", inTime, kills,
            twice);
        QVERIFY(inTime > kills / 2);
    }
};

ORBITLEDGE_TEST_MAIN(DeliverRemindersTest)
#include "DeliverRemindersTest.moc"
