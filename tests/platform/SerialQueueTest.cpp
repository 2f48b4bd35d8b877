#include "platform/SerialQueue.h"

#include "support/TestMain.h"

#include <QCoroTask>

#include <atomic>
#include <thread>
#include <vector>

using namespace orbitledge;

class SerialQueueTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    // The first of all: the threads of the others may be there for a moment after their queues.
    void shouldStartNoThreadBeforeTheFirstJob()
    {
        const auto threads = [] {
            return QDir(QStringLiteral("/proc/self/task"))
                .entryList(QDir::Dirs | QDir::NoDotAndDotDot)
                .size();
        };
        const auto before = threads();
        const SerialQueue queue;
        QCOMPARE(threads(), before);
    }

    void shouldReturnTheResultOnTheCallingThread()
    {
        SerialQueue queue;
        std::thread::id worker;
        bool resumedHere = false;
        int result = 0;
        const auto caller = std::this_thread::get_id();
        const auto use = [&]() -> QCoro::Task<> {
            result = co_await queue.run([&worker] {
                worker = std::this_thread::get_id();
                return 42;
            });
            resumedHere = std::this_thread::get_id() == caller;
        };
        QCoro::waitFor(use());

        QCOMPARE(result, 42);
        QVERIFY(worker != caller);
        QVERIFY(resumedHere);
    }

    void shouldRunJobsOneAtATimeInTheOrderOfTheCalls()
    {
        SerialQueue queue;
        constexpr int count = 200;
        std::vector<int> order; // touched by the jobs alone: two at once would be a race
        std::atomic_int running = 0;
        bool overlapped = false;
        const auto job = [&](int number) {
            return queue.run([&, number] {
                if (++running > 1)
                    overlapped = true;
                order.push_back(number);
                --running;
                return number;
            });
        };
        const auto use = [&]() -> QCoro::Task<> {
            std::vector<QCoro::Task<int>> tasks;
            for (int i = 0; i < count; ++i)
                tasks.push_back(job(i));
            for (int i = 0; i < count; ++i) {
                const int result = co_await tasks[static_cast<std::size_t>(i)];
                if (result != i)
                    qFatal("job %d gave %d", i, result);
            }
        };
        QCoro::waitFor(use());

        QVERIFY(!overlapped);
        QCOMPARE(order.size(), std::size_t{count});
        QVERIFY(std::ranges::is_sorted(order));
    }

    void shouldNotHoldUpTheEventLoop()
    {
        SerialQueue queue;
        std::atomic_bool release = false;
        int eventsMeanwhile = 0;
        const auto use = [&]() -> QCoro::Task<> {
            auto waiting = queue.run([&release] {
                while (!release)
                    std::this_thread::yield();
                return true;
            });
            // Each round goes through the event loop; the job ends only after the last of them.
            QTimer timer;
            QObject::connect(&timer, &QTimer::timeout, &timer, [&] {
                if (++eventsMeanwhile == 10)
                    release = true;
            });
            timer.start(0);
            co_await waiting;
        };
        QCoro::waitFor(use());
        QVERIFY(eventsMeanwhile >= 10);
    }

    void shouldFinishWhatWasHandedOverWhenItEnds()
    {
        std::atomic_int done = 0;
        {
            SerialQueue queue;
            for (int i = 0; i < 20; ++i)
                (void)queue.run([&done] { return ++done; });
        }
        QCOMPARE(done.load(), 20);
        // The waiting coroutines still end, once the event loop runs, without touching the queue.
        QCoreApplication::processEvents();
    }

    void shouldGiveResultsToWhoWaitsAlsoAfterItsEnd()
    {
        bool resumed = false;
        const auto use
            = [&](SerialQueue &queue) -> QCoro::Task<> { resumed = co_await queue.run([] { return true; }); };
        auto queue = std::make_unique<SerialQueue>();
        const auto task = use(*queue);
        queue.reset();
        QVERIFY(!resumed);
        QTRY_VERIFY(resumed);
    }
};

ORBITLEDGE_TEST_MAIN(SerialQueueTest)
#include "SerialQueueTest.moc"
