// What looks on while things fail has to see what it is there for: here it is shown each of these on purpose.

#include "soak/SoakWatch.h"

#include "soak/FaultProxy.h"
#include "soak/NotificationLog.h"
#include "support/TestMain.h"

#include <QDBusMessage>
#include <QTcpSocket>

#include <csignal>

using namespace orbitledge::testing;
using namespace Qt::StringLiterals;

class SoakWatchTest : public QObject {
    Q_OBJECT

private:
    static std::unique_ptr<QTcpSocket> ask(FaultProxy &proxy, const QByteArray &what)
    {
        const int before = countOf(proxy);
        auto socket = std::make_unique<QTcpSocket>();
        socket->connectToHost(u"127.0.0.1"_s, static_cast<quint16>(proxy.url().port()));
        socket->write(what + " HTTP/1.1\r\nHost: 127.0.0.1\r\n\r\n");
        if (!QTest::qWaitFor([&] { return countOf(proxy) > before; }))
            qFatal("the proxy does not hear");
        return socket;
    }
    static int countOf(const FaultProxy &proxy)
    {
        int count = 0;
        for (const int each : proxy.requests())
            count += each;
        return count;
    }

    static void show(DesktopLab &lab, const QString &title)
    {
        QDBusMessage message = QDBusMessage::createMethodCall(
            Dunst::name(), u"/org/freedesktop/Notifications"_s, Dunst::name(), u"Notify"_s);
        message.setArguments({u"Test"_s, 0U, u"icon"_s, title, u"body"_s, QStringList(), QVariantMap(), -1});
        QCOMPARE(lab.bus().call(message).type(), QDBusMessage::ReplyMessage);
    }

private Q_SLOTS:
    void shouldSeeTwoFetchesAtATime()
    {
        FaultProxy proxy;
        proxy.setWeather(FaultProxy::Weather::Mute);
        const auto profile = ask(proxy, "GET /auth/profile");
        const auto list = ask(proxy, "GET /subscriptions");
        QCOMPARE(proxy.overlaps(), QStringList());
        const auto again = ask(proxy, "GET /subscriptions");
        QCOMPARE(proxy.overlaps(), QStringList(u"GET /subscriptions twice at a time"_s));
        QCOMPARE(proxy.underWay(), 3);
    }

    void shouldTakeNoFetchForTwo()
    {
        FaultProxy proxy;
        proxy.setWeather(FaultProxy::Weather::Mute);
        {
            const auto givenUp = ask(proxy, "GET /subscriptions");
        }
        const auto first = ask(proxy, "GET /subscriptions");
        // The list of a sign-in is fetched on its own, and so is what another run asks for.
        const auto signIn = ask(proxy, "POST /auth/login");
        const auto itsList = ask(proxy, "GET /subscriptions");
        proxy.beginLife();
        const auto ofNextRun = ask(proxy, "GET /auth/profile");
        QCOMPARE(proxy.overlaps(), QStringList());
    }

    void shouldEndWhileSomebodyWaits()
    {
        std::unique_ptr<QTcpSocket> waiting;
        {
            FaultProxy proxy;
            proxy.setWeather(FaultProxy::Weather::Mute);
            waiting = ask(proxy, "GET /subscriptions");
        }
        QTRY_COMPARE(waiting->state(), QAbstractSocket::UnconnectedState);
    }

    void shouldSeeWhatWasShownTwice()
    {
        DesktopLab lab({.hasDisplay = true});
        Dunst dunst(lab);
        dunst.start();
        NotificationLog log(lab.environment(), lab.path(u"monitor.log"_s));
        const auto awaitShown = [&](qint64 count) {
            QTRY_COMPARE((log.read({}), log.verdict(0).shown + log.verdict(0).again), count);
        };
        show(lab, u"A renews soon"_s);
        show(lab, u"B renews soon"_s);
        awaitShown(2);
        QVERIFY(log.verdict(0).wrong.isEmpty());
        log.recordKill();
        const qint64 kill = NotificationLog::now();
        QTRY_VERIFY(NotificationLog::now() > kill + 1); // its times are whole milliseconds
        show(lab, u"B renews soon"_s);
        awaitShown(3);
        QVERIFY(log.verdict(60'000).wrong.isEmpty());
        show(lab, u"B renews soon"_s);
        awaitShown(4);
        QCOMPARE(log.verdict(60'000).wrong.size(), 1);
        log.recordForgetting({.begin = 0, .end = NotificationLog::now()});
        QVERIFY(log.verdict(60'000).wrong.isEmpty());
    }

    void shouldSeeASecretOnTheBus()
    {
        DesktopLab lab({.hasDisplay = true});
        Dunst dunst(lab);
        dunst.start();
        NotificationLog log(lab.environment(), lab.path(u"monitor.log"_s));
        show(lab, u"open sesame"_s);
        QTRY_VERIFY(log.read({"open sesame"}).has_value());
    }

    void shouldSeeWhatGoesWrongWithTheProgram()
    {
        SoakDesk desk;
        SoakWatch watch(desk);
        QTRY_VERIFY_WITH_TIMEOUT(desk.pings().hasAnswered(), 60'000);
        QTRY_VERIFY_WITH_TIMEOUT(QFile::exists(desk.cacheFile()), 60'000);
        QTRY_COMPARE_WITH_TIMEOUT(watch.glance(), QString(), 60'000);

        const auto process = static_cast<pid_t>(desk.process());
        const std::size_t answers = desk.pings().program().count;
        ::kill(process, SIGSTOP);
        QTest::qWait(1000); // for which it says nothing
        ::kill(process, SIGCONT);
        QTRY_VERIFY(desk.pings().program().count > answers + 2);
        QVERIFY2(watch.glance().startsWith(u"it did not answer for "), qPrintable(watch.glance()));

        QFile leaked(desk.path(u"cache/leaked"_s));
        QVERIFY(leaked.open(QIODevice::WriteOnly));
        leaked.write("xx" + desk.secrets().constFirst());
        leaked.close();
        // Not at each look.
        QVERIFY(QTest::qWaitFor([&] { return watch.look().startsWith(u"a secret is in "); }));
        leaked.remove();

        QFile cache(desk.cacheFile());
        QVERIFY(cache.open(QIODevice::WriteOnly));
        cache.write("{\"version\":1,");
        cache.close();
        QVERIFY(watch.glance().startsWith(u"the saved data cannot be read: "));

        ::kill(process, SIGSEGV);
        QTRY_VERIFY_WITH_TIMEOUT(watch.glance().startsWith(u"it ended by itself"), 60'000);
    }
};

ORBITLEDGE_TEST_MAIN(SoakWatchTest)
#include "SoakWatchTest.moc"
