#include "support/Dunst.h"
#include "support/NotificationDriver.h"
#include "support/PageRecorder.h"
#include "support/TestMain.h"

#include <QDBusMessage>
#include <QDBusReply>

using namespace orbitledge::testing;
using namespace Qt::StringLiterals;

namespace {

/// A session with a screen, a browser that writes down what it opens, and a file for what is to be shown.
struct Session {
    DesktopLab lab{{.hasDisplay = true}};
    Dunst dunst{lab};
    QProcessEnvironment environment = lab.environment();
    PageRecorder browser{lab, environment};

    [[nodiscard]] QString file() const { return lab.path(u"state/app/reminders.json"_s); }

    void startMock(const QString &serverName)
    {
        lab.startService(Dunst::name(), u"/usr/bin/python3"_s,
            {QStringLiteral(ORBITLEDGE_TEST_SUPPORT) + u"/mock_notifications.py"_s, serverName});
    }
    void chooseOnMock(uint number)
    {
        QDBusMessage message = QDBusMessage::createMethodCall(
            Dunst::name(), u"/org/freedesktop/Notifications"_s, u"app.orbitledge.Test"_s, u"Choose"_s);
        message << number;
        if (lab.bus().call(message).type() != QDBusMessage::ReplyMessage)
            qFatal("nobody can choose");
    }

    /// How often a notification of that title was sent to whoever shows them.
    int sentCount(const QByteArray &title)
    {
        return static_cast<int>(lab.monitored().count("   string \"" + title + "\"\n"));
    }

    /// Another program's notification; its number.
    [[nodiscard]] uint notifyFromElsewhere() const
    {
        QDBusMessage message = QDBusMessage::createMethodCall(
            Dunst::name(), u"/org/freedesktop/Notifications"_s, Dunst::name(), u"Notify"_s);
        message << u"Other"_s << 0U << QString() << u"Something else"_s << QString()
                << QStringList{u"default"_s, u"Open"_s} << QVariantMap() << 0;
        const QDBusReply<uint> reply = lab.bus().call(message);
        if (!reply.isValid())
            qFatal("%s", qPrintable(reply.error().message()));
        return reply.value();
    }
};

} // namespace

class NotificationTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void shouldFireAtItsMinuteAndOpenItsPage()
    {
        Session session;
        session.dunst.start();
        session.lab.startMonitor();
        NotificationDriver driver(session.environment, session.file());
        driver.tell("start");
        QCOMPARE(driver.tell("schedule soon 2026-03-18"), "");
        QCOMPARE(driver.tell("save"), "");
        driver.tell("clock 2026-03-18T08:59:59Z");
        QCOMPARE(driver.pending(), QByteArrayList{"soon"});
        driver.tell("clock 2026-03-18T09:00:00Z");
        session.dunst.awaitDisplayed(1);
        driver.awaitPending({});
        QCOMPARE(session.sentCount("soon"), 1);

        const QByteArray monitored = session.lab.monitored();
        const QByteArray notify = monitored.mid(monitored.indexOf("member=Notify\n"));
        QVERIFY(notify.contains("string \"Orbitledge\""));
        QVERIFY(notify.contains("string \"default\""));
        QVERIFY(notify.contains("string \"desktop-entry\"\n         variant             string "
                                "\"app.orbitledge.Orbitledge\""));
        QVERIFY(notify.contains("string \"sound-name\""));
        // This daemon reads markup, which the text is not.
        QVERIFY(notify.contains("string \"&lt;b&gt;AT&amp;T&lt;/b&gt; renews soon.\""));

        session.dunst.click();
        QCOMPARE(driver.awaitLine("chosen"), "chosen https://example.com/soon opened");
        QTRY_COMPARE_WITH_TIMEOUT(
            session.browser.pages(), QByteArrayList{"https://example.com/soon"}, 20'000);
    }

    void shouldNotMindWhatPeopleChooseOfOthers()
    {
        Session session;
        session.dunst.start();
        session.lab.startMonitor();
        NotificationDriver driver(session.environment, session.file());
        driver.tell("start");
        driver.tell("now ours");
        driver.tell("save");
        driver.tell("clock 2026-03-17T12:00:02Z");
        session.dunst.awaitDisplayed(1);
        driver.awaitPending({});
        session.dunst.click();
        QCOMPARE(driver.awaitLine("chosen"), "chosen https://example.com/ours opened");

        const auto choices = [&] { return session.lab.monitored().count("member=ActionInvoked"); };
        QCOMPARE(choices(), 1);
        session.dunst.closeAll();
        session.dunst.awaitDisplayed(0);
        (void)session.notifyFromElsewhere();
        session.dunst.awaitDisplayed(1);
        session.dunst.click();
        QTRY_COMPARE_WITH_TIMEOUT(choices(), 2, 20'000);
        // Nor does it believe somebody who only says that ours was chosen.
        QDBusMessage forged = QDBusMessage::createSignal(
            u"/org/freedesktop/Notifications"_s, Dunst::name(), u"ActionInvoked"_s);
        for (uint number = 0; number < 10; ++number) {
            forged.setArguments({number, u"default"_s});
            session.lab.bus().send(forged);
        }
        QTRY_COMPARE_WITH_TIMEOUT(choices(), 12, 20'000);
        QCOMPARE(driver.tell("settings"), "0 on"); // the bus keeps the order
        QVERIFY(!driver.hasSaid("chosen"));
        QCOMPARE(session.browser.pages(), QByteArrayList{"https://example.com/ours"});
    }

    void shouldTakeBackWhatIsShown()
    {
        Session session;
        session.dunst.start();
        NotificationDriver driver(session.environment, session.file());
        driver.tell("start");
        driver.tell("now here");
        driver.tell("schedule later 2026-03-20");
        driver.tell("save");
        driver.tell("clock 2026-03-17T12:00:02Z");
        session.dunst.awaitDisplayed(1);
        driver.awaitPending({"later"});
        (void)session.notifyFromElsewhere();
        session.dunst.awaitDisplayed(2);
        QCOMPARE(driver.tell("forget"), "");
        session.dunst.awaitDisplayed(1);
        QCOMPARE(driver.pending(), QByteArrayList());
    }

    void shouldLoseNothingToADaemonThatIsKilled()
    {
        Session session;
        session.dunst.start();
        session.lab.startMonitor();
        NotificationDriver driver(session.environment, session.file());
        driver.tell("start");
        for (const char *const name : {"a 2026-03-18", "b 2026-03-19", "c 2026-03-20"})
            driver.tell(QByteArray("schedule ") + name);
        driver.tell("save");
        driver.tell("clock 2026-03-18T09:00:00Z");
        session.dunst.awaitDisplayed(1);
        driver.awaitPending({"b", "c"});
        session.dunst.kill();
        driver.tell("clock 2026-03-19T09:00:00Z");
        QCOMPARE(driver.pending(), (QByteArrayList{"b", "c"}));
        session.dunst.start();
        session.dunst.awaitDisplayed(1);
        driver.awaitPending({"c"});
        session.dunst.kill();
        session.dunst.start();
        driver.tell("clock 2026-03-20T09:00:00Z");
        session.dunst.awaitDisplayed(1);
        driver.awaitPending({});
        for (const char *const name : {"a", "b", "c"})
            QCOMPARE(session.sentCount(name), 1);
    }

    void shouldWaitForADaemonThatIsMute()
    {
        Session session;
        session.dunst.start();
        session.lab.startMonitor();
        NotificationDriver driver(session.environment, session.file());
        driver.tell("start");
        driver.tell("schedule a 2026-03-18");
        driver.tell("save");
        session.dunst.pause();
        driver.tell("clock 2026-03-18T09:00:00Z");
        // It is asked, and meanwhile everything goes on.
        session.lab.awaitCall("GetServerInformation");
        driver.tell("schedule b 2026-03-19");
        QCOMPARE(driver.tell("save"), "");
        QCOMPARE(driver.pending(), (QByteArrayList{"a", "b"}));
        QCOMPARE(session.sentCount("a"), 0);
        session.dunst.resume();
        session.dunst.awaitDisplayed(1);
        driver.awaitPending({"b"});
        QCOMPARE(session.sentCount("a"), 1);
    }

    void shouldStartADaemonThatTheBusOffers()
    {
        Session session;
        NotificationDriver driver(session.environment, session.file());
        driver.tell("start");
        QCOMPARE(driver.tell("ask"), "no");
        QCOMPARE(driver.tell("settings"), "1 off");
        session.lab.offerService(Dunst::name(), u"/usr/bin/dunst "_s + session.dunst.arguments().join(u' '));
        QCOMPARE(driver.tell("settings"), "2 on");
        driver.tell("now a");
        driver.tell("save");
        driver.tell("clock 2026-03-17T12:00:02Z");
        session.dunst.awaitDisplayed(1);
    }

    void shouldKeepEverythingWithoutABus()
    {
        Session session;
        QProcessEnvironment nowhere = session.environment;
        nowhere.insert(u"DBUS_SESSION_BUS_ADDRESS"_s, u"unix:path=/nowhere"_s);
        {
            NotificationDriver driver(nowhere, session.file());
            driver.tell("start");
            QCOMPARE(driver.tell("schedule a 2026-03-18"), "");
            QCOMPARE(driver.tell("save"), "");
            driver.tell("clock 2026-03-18T09:00:00Z");
            QCOMPARE(driver.tell("settings"), "0 off");
            QCOMPARE(driver.pending(), QByteArrayList{"a"});
            driver.quit();
        }
        session.dunst.start();
        NotificationDriver driver(session.environment, session.file());
        driver.tell("clock 2026-03-18T10:00:00Z");
        driver.tell("start");
        session.dunst.awaitDisplayed(1);
        driver.awaitPending({});
    }

    void shouldTellOfWhatAnEarlierRunHasShown()
    {
        // By a daemon that tells everybody what was chosen.
        Session session;
        session.startMock(u"mock"_s);
        session.lab.startMonitor();
        {
            NotificationDriver driver(session.environment, session.file());
            driver.tell("start");
            driver.tell("now earlier");
            driver.tell("save");
            driver.tell("clock 2026-03-17T12:00:02Z");
            driver.awaitPending({});
            driver.tell("save");
            driver.quit();
        }
        (void)session.notifyFromElsewhere();
        NotificationDriver driver(session.environment, session.file());
        driver.tell("start");
        QCOMPARE(driver.tell("settings"), "0 on"); // by now it knows the daemon
        session.chooseOnMock(2);
        session.chooseOnMock(1);
        QCOMPARE(driver.awaitLine("chosen"), "chosen https://example.com/earlier opened token-1");
        QVERIFY(!driver.hasSaid("chosen"));
        // And takes it back, also after another start, but not what belongs to others.
        QCOMPARE(driver.tell("forget"), "");
        driver.quit();
        QTRY_COMPARE_WITH_TIMEOUT(session.lab.monitored().count("member=CloseNotification"), 1, 20'000);
    }

    // ---- killed on the way ----

    void shouldTellOnceWhereverItIsKilled_data()
    {
        QTest::addColumn<QString>("step");
        QTest::addColumn<int>("fewest");
        QTest::addColumn<int>("most");
        // Sent, but not yet recorded: that is the window in which somebody is told twice, and never not at
        // all.
        QTest::newRow("before it is shown") << u"before-show"_s << 1 << 1;
        QTest::newRow("while it is being shown") << u"while-showing"_s << 1 << 2;
        QTest::newRow("after it was shown") << u"after-show"_s << 2 << 2;
        QTest::newRow("before that is saved") << u"before-save"_s << 2 << 2;
        QTest::newRow("after that was saved") << u"after-save"_s << 1 << 1;
    }

    void shouldTellOnceWhereverItIsKilled()
    {
        QFETCH(const QString, step);
        QFETCH(const int, fewest);
        QFETCH(const int, most);
        Session session;
        session.dunst.start();
        session.lab.startMonitor();
        {
            NotificationDriver driver(session.environment, session.file());
            for (const char *const name : {"a", "b", "c"})
                driver.tell(QByteArray("schedule ") + name + " 2026-03-18");
            driver.tell("save");
            driver.quit();
        }
        {
            NotificationDriver driver(session.environment, session.file(), step, 2);
            driver.tell("clock 2026-03-18T10:00:00Z");
            driver.tell("start");
            driver.awaitDeath();
            QVERIFY(driver.wasKilled());
        }
        {
            NotificationDriver driver(session.environment, session.file());
            driver.tell("clock 2026-03-18T10:00:00Z");
            driver.tell("start");
            driver.awaitPending({});
            driver.tell("save");
            driver.quit();
        }
        QCOMPARE(session.sentCount("a"), 1);
        const int count = session.sentCount("b");
        QVERIFY2(count >= fewest && count <= most, QByteArray::number(count));
        QCOMPARE(session.sentCount("c"), 1);
        {
            NotificationDriver driver(session.environment, session.file());
            driver.tell("clock 2026-03-19T10:00:00Z");
            driver.tell("start");
            for (const char *const name : {"a", "b", "c"})
                driver.tell(QByteArray("now ") + name);
            QCOMPARE(driver.pending(), QByteArrayList());
        }
        QCOMPARE(session.sentCount("b"), count);
    }
};

ORBITLEDGE_TEST_MAIN(NotificationTest)
#include "NotificationTest.moc"
