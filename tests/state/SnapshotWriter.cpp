#include "platform/linux/PosixFileStore.h"
#include "state/SnapshotCache.h"
#include "support/SampleRecords.h"

#include <QCoreApplication>
#include <QElapsedTimer>

#include <cstdio>

using namespace orbitledge;

// Saves two snapshots of different size in turn, until it is killed. Says, once both were saved, how many
// microseconds that took.
int main(int argc, char **argv)
{
    if (argc != 2)
        return 2;
    const QCoreApplication application(argc, argv);
    const CacheSnapshot small = testing::sampleSnapshot(150);
    const CacheSnapshot large = testing::sampleSnapshot(400);
    SnapshotCache cache(argv[1], std::make_shared<PosixFileStore>());
    const auto save = [&](const CacheSnapshot &snapshot) -> QCoro::Task<> {
        if (!co_await cache.save(snapshot))
            std::abort();
    };
    QElapsedTimer pace;
    QCoro::waitFor(save(small));
    pace.start();
    QCoro::waitFor(save(large));
    QCoro::waitFor(save(small));
    std::printf("%lld\n", static_cast<long long>(pace.nsecsElapsed() / 1000));
    std::fflush(stdout);
    while (true) {
        QCoro::waitFor(save(large));
        QCoro::waitFor(save(small));
    }
}
