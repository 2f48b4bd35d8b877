#include "bench/SampleData.h"
#include "model/RecordCodecs.h"
#include "timeline/TimelineBuilder.h"

#include <benchmark/benchmark.h>

#include <cstdlib>

using namespace orbitledge;

namespace {

void timeline(benchmark::State &state)
{
    // Decoded, because decoding decides how the texts lie in memory.
    const auto subscriptions = decodeJson<QList<Subscription>>(bench::sampleJson(state.range(0)));
    const Calendar calendar(*TimeZone::named("Europe/Berlin"), *Locale::named("de_DE"));
    const auto now = *Instant::fromText("2026-03-18T09:00:00Z");
    for (auto _ : state) {
        const TimelineSnapshot snapshot = buildTimeline(*subscriptions, QStringLiteral("EUR"), now, calendar);
        if (snapshot.sections.isEmpty())
            std::abort();
    }
    state.SetComplexityN(state.range(0));
}

} // namespace

BENCHMARK(timeline)
    ->Name("timeline")
    ->Arg(10)
    ->Arg(100)
    ->Arg(1'000)
    ->Arg(10'000)
    ->Arg(100'000)
    ->Arg(1'000'000)
    ->Unit(benchmark::kMillisecond);
