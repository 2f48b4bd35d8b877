#include "bench/SampleData.h"
#include "reminders/RenewalNotificationPlanner.h"

#include <QUrl>

#include <benchmark/benchmark.h>

using namespace orbitledge;

namespace {

void reminders(benchmark::State &state)
{
    const QList<Subscription> subscriptions = bench::sampleSubscriptions(state.range(0));
    const Calendar calendar(*TimeZone::named("Europe/Berlin"), *Locale::named("de_DE"));
    const auto now = *Instant::fromText("2026-03-18T09:00:00Z");
    const ReminderSettings settings{.leadDays = 1,
        .currency = QStringLiteral("EUR"),
        .webURL = QUrl(QStringLiteral("https://example.com/"))};
    for (auto _ : state) {
        auto planning = planReminders(subscriptions, settings, now, calendar, {});
        benchmark::DoNotOptimize(planning);
    }
    state.SetComplexityN(state.range(0));
}

} // namespace

BENCHMARK(reminders)
    ->Name("reminders")
    ->Arg(10)
    ->Arg(100)
    ->Arg(1'000)
    ->Arg(10'000)
    ->Arg(100'000)
    ->Unit(benchmark::kMillisecond);
