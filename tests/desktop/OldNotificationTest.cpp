// Reminders that were shown while nothing ran, and what becomes of a click on them.

#include "platform/linux/PosixFileStore.h"
#include "platform/linux/SystemClock.h"
#include "platform/linux/notifications/NotificationQueue.h"
#include "support/Dunst.h"
#include "support/ResidentDesk.h"
#include "support/TestMain.h"
#include "support/Times.h"

using namespace orbitledge;
using namespace orbitledge::testing;
using namespace Qt::StringLiterals;

class OldNotificationTest : public QObject {
    Q_OBJECT

private:
    std::optional<ResidentDesk> m_desk;
    std::optional<Dunst> m_dunst;

    void startDunst()
    {
        m_dunst.emplace(m_desk->lab);
        m_dunst->start();
    }
    /// One that tells everybody of a click, not the sender alone.
    void startMock()
    {
        m_desk->lab.startService(Dunst::name(), u"/usr/bin/python3"_s,
            {QStringLiteral(ORBITLEDGE_TEST_SUPPORT) + u"/mock_notifications.py"_s, u"mock"_s});
    }
    void tellMock(const QString &interface, const QString &method, uint number)
    {
        QDBusMessage message = QDBusMessage::createMethodCall(
            Dunst::name(), u"/org/freedesktop/Notifications"_s, interface, method);
        message << number;
        QCOMPARE(m_desk->lab.bus().call(message).type(), QDBusMessage::ReplyMessage);
    }
    void choose(uint number) { tellMock(u"app.orbitledge.Test"_s, u"Choose"_s, number); }
    void close(uint number) { tellMock(Dunst::name(), u"CloseNotification"_s, number); }

    [[nodiscard]] static QString pageOf(const QString &reminder)
    {
        return u"https://example.com/subscriptions/%1/edit"_s.arg(reminder);
    }

    /// As a run of the program has left it behind: these are due, and renew tomorrow.
    void plan(const QStringList &reminders, const QString &kind = u"orbitledge.renewal."_s)
    {
        const std::filesystem::path file
            = m_desk->lab.path(u"state/app.orbitledge.Orbitledge/reminders.json"_s).toStdString();
        PosixFileStore files;
        const auto before = files.read(file);
        auto queue = before ? *NotificationQueue::decoded(*before) : NotificationQueue();
        const Instant now = SystemClock().now();
        for (const QString &reminder : reminders) {
            const NotificationRequest request{
                .identifier = kind + reminder,
                .content = {.title = reminder,
                    .body = u"It renews soon."_s,
                    .userInfo = {{u"url"_s, pageOf(reminder)}}},
                .trigger = TimeIntervalTrigger{std::chrono::milliseconds(0)},
                .lastDay = LocalDate::fromDaysSinceEpoch(now.millisecondsSinceEpoch() / day + 1),
            };
            QVERIFY(queue.add(request, later(now, -second)));
        }
        QVERIFY(files.replace(file, queue.encoded()));
    }

    /// Those that were left behind to wait for clicks.
    [[nodiscard]] QList<pid_t> waiting() const
    {
        QList<pid_t> processes;
        const QByteArray home = "HOME=" + m_desk->lab.path(u"home"_s).toLocal8Bit();
        for (const QString &entry : QDir(u"/proc"_s).entryList(QDir::Dirs)) {
            const auto contentOf = [&entry](const QString &name) {
                QFile file(u"/proc/%1/%2"_s.arg(entry, name));
                return file.open(QIODevice::ReadOnly) ? file.readAll().split('\0') : QByteArrayList();
            };
            if (entry.toInt() > 0 && contentOf(u"cmdline"_s).contains("deliver-reminders")
                && contentOf(u"environ"_s).contains(home))
                processes.append(entry.toInt());
        }
        return processes;
    }
    void awaitNobodyWaiting()
    {
        DesktopLab::await("nobody to wait for clicks", [&] { return waiting().isEmpty(); });
    }

    void deliver(const QStringList &reminders)
    {
        const qsizetype before = waiting().size();
        plan(reminders);
        const auto result = m_desk->run({u"deliver-reminders"_s});
        QCOMPARE(result.errors, ""_ba);
        QCOMPARE(result.complaint(), "");
        QCOMPARE(waiting().size(), before + 1);
    }

    void awaitPages(const QStringList &reminders)
    {
        QByteArrayList pages;
        for (const QString &reminder : reminders)
            pages.append(pageOf(reminder).toLatin1());
        QTRY_COMPARE_WITH_TIMEOUT(m_desk->openedPages(), pages, 60'000);
    }
    /// Also that nothing else is opened, by what comes behind.
    void awaitPagesAlone(const QStringList &reminders)
    {
        awaitPages(reminders);
        QCOMPARE(m_desk->activateAction(u"open-reminder"_s, {pageOf(u"last"_s)}).type(),
            QDBusMessage::ReplyMessage);
        awaitPages(reminders + QStringList{u"last"_s});
    }

    /// The program, as soon as it would hear of a click.
    void startListening()
    {
        m_desk->lab.startMonitor();
        m_desk->startResident();
        m_desk->lab.awaitCall("GetCapabilities");
    }

private Q_SLOTS:
    void init() { m_desk.emplace(); }
    void cleanup()
    {
        m_dunst.reset();
        m_desk.reset();
    }

    void shouldStartTheProgramForAClick()
    {
        startDunst();
        m_desk->offerProgram();
        deliver({u"a"_s});
        QVERIFY(!m_desk->owner());
        m_dunst->click();
        awaitPages({u"a"_s});
        QVERIFY(m_desk->owner());
        QVERIFY(!m_desk->isPanelOpen());
    }

    void shouldPassTheActivationTokenOn()
    {
        startMock();
        m_desk->offerProgram();
        m_desk->lab.startMonitor();
        deliver({u"a"_s});
        choose(1);
        awaitPages({u"a"_s});
        const QByteArray monitored = m_desk->lab.monitored();
        QVERIFY(monitored.mid(monitored.indexOf("member=ActivateAction")).contains("\"token-1\""));
    }

    void shouldOpenThePageOnceWhereTheProgramRunsByThen_data()
    {
        QTest::addColumn<bool>("tellsEverybody");
        QTest::newRow("who has shown it is told of the click") << false;
        QTest::newRow("everybody is told of the click") << true;
    }
    void shouldOpenThePageOnceWhereTheProgramRunsByThen()
    {
        QFETCH(bool, tellsEverybody);
        if (tellsEverybody)
            startMock();
        else
            startDunst();
        deliver({u"a"_s});
        startListening();
        if (tellsEverybody)
            choose(1);
        else
            m_dunst->click();
        awaitPagesAlone({u"a"_s});
    }

    void shouldBeTheProgramsWhereNobodyWaitsAnyMore()
    {
        startMock();
        deliver({u"a"_s});
        ::kill(waiting().constFirst(), SIGKILL);
        awaitNobodyWaiting();
        startListening();
        choose(1);
        awaitPagesAlone({u"a"_s});
    }

    void shouldOpenThePageByItselfWhereNothingCanBeStarted()
    {
        startDunst();
        deliver({u"a"_s});
        m_dunst->click();
        awaitPages({u"a"_s});
        m_dunst->closeAll();
        awaitNobodyWaiting();
        QVERIFY(!m_desk->owner());
    }

    void shouldKeepTheirOwnOfSeveralDeliveries()
    {
        startMock();
        deliver({u"a"_s});
        deliver({u"b"_s, u"c"_s});
        choose(2);
        awaitPages({u"b"_s});
        choose(1);
        awaitPages({u"b"_s, u"a"_s});
        close(1);
        QTRY_COMPARE(waiting().size(), 1);
        choose(3);
        awaitPages({u"b"_s, u"a"_s, u"c"_s});
        close(2);
        close(3);
        awaitNobodyWaiting();
    }

    void shouldEndWhenNothingIsShownAnyMore()
    {
        startDunst();
        deliver({u"a"_s, u"b"_s});
        m_dunst->closeAll();
        awaitNobodyWaiting();
        deliver({u"c"_s});
        m_dunst->kill();
        awaitNobodyWaiting();
        QCOMPARE(m_desk->openedPages(), QByteArrayList());
    }

    void shouldStayForNothingWhereNothingIsShown()
    {
        startDunst();
        QCOMPARE(m_desk->run({u"deliver-reminders"_s}).complaint(), "");
        awaitNobodyWaiting();
    }

    void shouldNotHoldUpWhoReadsItsOutput()
    {
        startDunst();
        plan({u"a"_s});
        QProcess shell;
        shell.setProcessEnvironment(m_desk->environment);
        shell.start(u"/bin/sh"_s,
            {u"-c"_s, u"\"$0\" deliver-reminders 2>&1 | cat"_s, QStringLiteral(ORBITLEDGE_PROGRAM)});
        QCOMPARE(ResidentDesk::finish(shell).complaint(), "");
        QCOMPARE(waiting().size(), 1);
    }

    void shouldEndWithTheSession()
    {
        startDunst();
        deliver({u"a"_s});
        const QString process = u"/proc/%1"_s.arg(waiting().constFirst());
        QVERIFY(QFile::exists(process));
        m_dunst.reset();
        m_desk.reset();
        QTRY_VERIFY_WITH_TIMEOUT(!QFile::exists(process), 20'000);
    }

    /// A command that finds something due leaves that to the same.
    void shouldWaitForClicksOnWhatACommandHasShown()
    {
        startDunst();
        QCOMPARE(m_desk->signIn().complaint(), "");
        plan({u"a"_s}, u"orbitledge.test."_s); // which fetching does not plan anew
        QCOMPARE(m_desk->run({u"refresh"_s}).output, "Up to date. 16 subscriptions fetched.\n"_ba);
        QCOMPARE(m_dunst->displayedCount(), 1);
        m_dunst->click();
        awaitPages({u"a"_s});
    }
};

ORBITLEDGE_TEST_MAIN(OldNotificationTest)
#include "OldNotificationTest.moc"
