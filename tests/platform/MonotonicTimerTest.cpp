#include "platform/MonotonicTimer.h"

#include "support/TestMain.h"

#include <QSignalSpy>

using namespace orbitledge;
using namespace std::chrono_literals;

class MonotonicTimerTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void shouldElapseOnceAfterTheInterval()
    {
        MonotonicTimer timer;
        QSignalSpy elapsed(&timer, &IntervalTimer::elapsed);
        QElapsedTimer passed;
        passed.start();
        timer.start(1s);
        QTRY_COMPARE_WITH_TIMEOUT(elapsed.size(), 1, 10'000);
        // To the second, as it wakes up together with others.
        QVERIFY(passed.elapsed() >= 450);
        QVERIFY(!elapsed.wait(1500));
    }

    void shouldElapseToTheMillisecondWhereItIsPrecise()
    {
        MonotonicTimer timer(MonotonicTimer::Precision::Milliseconds);
        QSignalSpy elapsed(&timer, &IntervalTimer::elapsed);
        // One to the second would now and then be as fast as this, by where in its second it starts.
        for (int i = 0; i < 3; ++i) {
            QElapsedTimer passed;
            passed.start();
            timer.start(300ms);
            QTRY_COMPARE_WITH_TIMEOUT(elapsed.size(), i + 1, 10'000);
            QCOMPARE_GE(passed.elapsed(), 300);
        }
    }

    void shouldCountFromTheLastStart()
    {
        MonotonicTimer timer;
        QSignalSpy elapsed(&timer, &IntervalTimer::elapsed);
        timer.start(1h);
        timer.start(1ms);
        QTRY_COMPARE_WITH_TIMEOUT(elapsed.size(), 1, 10'000);
    }

    void shouldNotElapseWhenStopped()
    {
        MonotonicTimer timer;
        QSignalSpy elapsed(&timer, &IntervalTimer::elapsed);
        timer.start(1ms);
        timer.stop();
        QVERIFY(!elapsed.wait(1200));
    }

    void shouldTakeTheLongestInterval()
    {
        MonotonicTimer timer;
        QSignalSpy elapsed(&timer, &IntervalTimer::elapsed);
        timer.start(24h);
        QVERIFY(!elapsed.wait(10));
        timer.stop();
        timer.stop();
    }
};

ORBITLEDGE_TEST_MAIN(MonotonicTimerTest)
#include "MonotonicTimerTest.moc"
