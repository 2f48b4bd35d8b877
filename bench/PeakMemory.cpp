#include "bench/SampleData.h"
#include "platform/linux/PosixFileStore.h"
#include "timeline/TimelineBuilder.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <string>

using namespace orbitledge;

namespace {

/// The largest resident size that this process has had, in bytes.
long long peakBytes()
{
    std::ifstream status("/proc/self/status");
    std::string line;
    while (std::getline(status, line)) {
        if (line.starts_with("VmHWM:"))
            return std::atoll(line.c_str() + std::strlen("VmHWM:")) * 1024;
    }
    return 0;
}

} // namespace

// bench_peak_memory write COUNT FILE   writes a snapshot of so many subscriptions
// bench_peak_memory decode FILE        reads and decodes it
// bench_peak_memory timeline FILE      builds the timeline of it too
//
// The last two print the size of the file and the peak of the resident memory, in bytes.
int main(int argc, char **argv)
{
    PosixFileStore files;
    if (argc == 4 && std::strcmp(argv[1], "write") == 0)
        return files.replace(argv[3], encodeCacheSnapshot(bench::sampleSnapshot(std::atoll(argv[2])))) ? 0
                                                                                                       : 1;
    if (argc != 3)
        return 2;
    auto content = files.read(argv[2]);
    if (!content)
        return 1;
    const qsizetype size = content->size();
    const auto snapshot = decodeCacheSnapshot(*std::move(content));
    if (!snapshot)
        return 1;
    TimelineSnapshot timeline;
    if (std::strcmp(argv[1], "timeline") == 0) {
        const Calendar calendar(*TimeZone::named("Europe/Berlin"), *Locale::named("de_DE"));
        timeline
            = buildTimeline(snapshot->subscriptions, QStringLiteral("EUR"), snapshot->fetchedAt, calendar);
    }
    std::printf("%lld %lld\n", static_cast<long long>(size), peakBytes());
    return 0;
}
