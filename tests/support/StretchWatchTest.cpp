#include "support/StretchWatch.h"

#include "support/TestMain.h"

#include <thread>

using namespace orbitledge::testing;
using namespace std::chrono_literals;

class StretchWatchTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void shouldSeeAThreadThatIsHeld()
    {
        const StretchWatch watch;
        QTest::qWait(50);
        QVERIFY(watch.count() > 0);
        std::this_thread::sleep_for(80ms);
        QTest::qWait(10);
        QVERIFY(watch.longestMilliseconds() >= 75);
    }

    void shouldSeeOneThatIsHeldWithinAnEvent()
    {
        const StretchWatch watch;
        QTimer::singleShot(20ms, [] { std::this_thread::sleep_for(80ms); });
        QTest::qWait(150);
        QVERIFY(watch.longestMilliseconds() >= 75);
    }

    void shouldSeeOneThatIsStillHeld()
    {
        const StretchWatch watch;
        QTest::qWait(20);
        std::this_thread::sleep_for(80ms);
        QVERIFY(watch.longestMilliseconds() >= 75);
    }

    void shouldNotMistakeWaitingForBeingHeld()
    {
        const StretchWatch watch;
        QTest::qWait(300);
        QVERIFY(watch.count() > 10);
        QVERIFY2(
            watch.longestMilliseconds() < 50, QByteArray::number(watch.longestMilliseconds()).constData());
    }
};

ORBITLEDGE_TEST_MAIN(StretchWatchTest)
#include "StretchWatchTest.moc"
