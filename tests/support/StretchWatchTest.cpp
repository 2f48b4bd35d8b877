#include "support/StretchWatch.h"

#include "support/TestMain.h"

#include <thread>
#include <vector>

using namespace orbitledge::testing;
using namespace std::chrono_literals;

namespace {

/// Whether a watch sees at least this much of what `hold` does, at one of some times: where the machine is
/// busy, the watch may look too late.
template <typename Hold> bool sees(double milliseconds, Hold hold)
{
    for (int attempt = 0; attempt < 20; ++attempt) {
        const StretchWatch watch;
        QTest::qWait(50);
        hold();
        if (watch.count() > 0 && watch.longestMilliseconds() >= milliseconds)
            return true;
    }
    return false;
}

} // namespace

class StretchWatchTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void shouldSeeAThreadThatIsHeld()
    {
        QVERIFY(sees(75, [] {
            std::this_thread::sleep_for(80ms);
            QTest::qWait(10);
        }));
    }

    void shouldSeeOneThatIsHeldWithinAnEvent()
    {
        QVERIFY(sees(75, [] {
            QTimer::singleShot(20ms, [] { std::this_thread::sleep_for(80ms); });
            QTest::qWait(150);
        }));
    }

    void shouldSeeOneThatIsStillHeld()
    {
        QVERIFY(sees(75, [] { std::this_thread::sleep_for(80ms); }));
    }

    void shouldSeeOneThatWorks()
    {
        QVERIFY(sees(55, [] { workFor(60ms); }));
    }

    void shouldNotMistakeWaitingForBeingHeld()
    {
        const StretchWatch watch;
        QVERIFY(QTest::qWaitFor([&watch] { return watch.count() > 10; }, 30'000));
        QVERIFY2(
            watch.longestMilliseconds() < 50, QByteArray::number(watch.longestMilliseconds()).constData());
    }

    void shouldNotCountTheWaitForAProcessor()
    {
        const ProcessorWait wait;
        std::vector<std::jthread> others;
        for (unsigned i = 0; i < 4 * std::thread::hardware_concurrency(); ++i)
            others.emplace_back([](const std::stop_token &stop) {
                while (!stop.stop_requested()) { }
            });
        const StretchWatch watch;
        for (int round = 0; round < 10; ++round) {
            QTimer::singleShot(0, [] { workFor(20ms); });
            QTest::qWait(10);
        }
        QVERIFY(watch.count() > 0);
        if (wait.total() < 100ms)
            QSKIP("nothing had to wait for a processor, or nobody counts it here");
        QVERIFY2(
            watch.longestMilliseconds() < 50, QByteArray::number(watch.longestMilliseconds()).constData());
    }

private:
    static void workFor(std::chrono::nanoseconds duration)
    {
        const auto end = workOfThisThread() + duration;
        while (workOfThisThread() < end) { }
    }
};

ORBITLEDGE_TEST_MAIN(StretchWatchTest)
#include "StretchWatchTest.moc"
