#include "platform/curl/CurlHttpSession.h"
#include "support/FaultServer.h"
#include "support/TestMain.h"

#include <QElapsedTimer>

using namespace orbitledge;
using namespace orbitledge::testing;
using namespace std::chrono_literals;

/// Takes as long as the limits are, which is why it stands alone: other tests run beside it.
class HttpTimeoutTest : public QObject {
    Q_OBJECT

private:
    static HttpRequest get(const QUrl &url)
    {
        HttpRequest request;
        request.url = url;
        return request;
    }

private Q_SLOTS:
    void shouldKeepToItsOwnLimitsInRealTime()
    {
        FaultServer mute;
        mute.answerAll({FaultServer::StayMute{}});
        FaultServer slow;
        slow.answerAll({FaultServer::Send{"HTTP/1.1 200 OK\r\nContent-Length: 100\r\n\r\n"},
            FaultServer::Drip{QByteArray(100, ' '), 1s}});
        CurlHttpSession session("Agent/1");
        QElapsedTimer timer;
        timer.start();
        auto muteTask = session.send(get(mute.url()));
        auto slowTask = session.send(get(slow.url()));
        const auto muteOutcome = QCoro::waitFor(muteTask);
        const qint64 idle = timer.elapsed();
        const auto slowOutcome = QCoro::waitFor(slowTask);
        const qint64 total = timer.elapsed();
        QVERIFY(!muteOutcome && !slowOutcome);
        QCOMPARE(muteOutcome.error().kind, TransportFailure::Kind::TimedOut);
        QCOMPARE(slowOutcome.error().kind, TransportFailure::Kind::TimedOut);
        QVERIFY2(idle >= 20'000 && idle < 25'000, QByteArray::number(idle).constData());
        QVERIFY2(total >= 30'000 && total < 35'000, QByteArray::number(total).constData());
    }
};

ORBITLEDGE_TEST_MAIN(HttpTimeoutTest)
#include "HttpTimeoutTest.moc"
