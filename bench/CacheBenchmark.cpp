#include "bench/SampleData.h"
#include "platform/linux/PosixFileStore.h"

#include <QTemporaryDir>

#include <benchmark/benchmark.h>

#include <cstdlib>

using namespace orbitledge;

namespace {

// What the cache does on its thread, without the way there and back.

void save(benchmark::State &state)
{
    const QTemporaryDir folder;
    const std::filesystem::path path = folder.filePath(QStringLiteral("snapshot.json")).toStdString();
    const CacheSnapshot snapshot = bench::sampleSnapshot(state.range(0));
    PosixFileStore files;
    for (auto _ : state) {
        if (!files.replace(path, encodeCacheSnapshot(snapshot)))
            std::abort();
    }
    state.SetComplexityN(state.range(0));
}

void load(benchmark::State &state)
{
    const QTemporaryDir folder;
    const std::filesystem::path path = folder.filePath(QStringLiteral("snapshot.json")).toStdString();
    PosixFileStore files;
    if (!files.replace(path, encodeCacheSnapshot(bench::sampleSnapshot(state.range(0)))))
        std::abort();
    for (auto _ : state) {
        auto content = files.read(path);
        if (!content || !decodeCacheSnapshot(*std::move(content)))
            std::abort();
    }
    state.SetComplexityN(state.range(0));
}

} // namespace

BENCHMARK(save)
    ->Name("cache/save")
    ->Arg(10)
    ->Arg(100)
    ->Arg(1'000)
    ->Arg(10'000)
    ->Arg(100'000)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();
BENCHMARK(load)
    ->Name("cache/load")
    ->Arg(10)
    ->Arg(100)
    ->Arg(1'000)
    ->Arg(10'000)
    ->Arg(100'000)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();
