#include "bench/SampleData.h"
#include "model/RecordCodecs.h"

#include <benchmark/benchmark.h>
#include <simdjson.h>

#include <array>
#include <cstdlib>
#include <string>
#include <vector>

using namespace orbitledge;

namespace {

constexpr std::array keys{"id", "user_id", "name", "cost", "currency", "converted_cost", "converted_currency",
    "billing_cycle", "next_billing_date", "category", "category_name", "status", "template_id", "logo_url",
    "cancelled_at", "cancellation_date", "trial_end_date", "trial_notification_days",
    "trial_notification_sent", "created_at", "updated_at"};

using PlainRecord = std::array<std::string, keys.size()>;

/// The least that any reader of these fields does: each into a plain string, nothing checked.
std::vector<PlainRecord> readPlain(const simdjson::padded_string_view &json)
{
    std::vector<PlainRecord> records;
    simdjson::ondemand::parser parser;
    simdjson::ondemand::document document = parser.iterate(json);
    for (simdjson::ondemand::object object : document.get_array()) {
        PlainRecord &record = records.emplace_back();
        for (std::size_t i = 0; i < keys.size(); ++i) {
            simdjson::ondemand::value value;
            if (object.find_field(keys[i]).get(value) != simdjson::SUCCESS)
                continue;
            if (value.type() == simdjson::ondemand::json_type::string)
                record[i] = std::string_view(value.get_string());
            else
                record[i] = value.raw_json_token();
        }
    }
    return records;
}

void plainStrings(benchmark::State &state)
{
    const QByteArray json = bench::sampleJson(state.range(0));
    const simdjson::padded_string padded(json.constData(), static_cast<std::size_t>(json.size()));
    for (auto _ : state)
        benchmark::DoNotOptimize(readPlain(padded));
    state.SetBytesProcessed(state.iterations() * json.size());
    state.SetComplexityN(state.range(0));
}

void records(benchmark::State &state)
{
    QByteArray json = bench::sampleJson(state.range(0));
    json.reserve(json.size() + 64);
    for (auto _ : state) {
        const auto decoded = decodeJson<QList<Subscription>>(json);
        if (!decoded || decoded->size() != state.range(0))
            std::abort();
    }
    state.SetBytesProcessed(state.iterations() * json.size());
    state.SetComplexityN(state.range(0));
}

} // namespace

BENCHMARK(plainStrings)
    ->Name("decode/plain-strings")
    ->Arg(100)
    ->Arg(10'000)
    ->Arg(100'000)
    ->Arg(1'000'000)
    ->Unit(benchmark::kMillisecond);
BENCHMARK(records)
    ->Name("decode/records")
    ->Arg(10)
    ->Arg(100)
    ->Arg(1'000)
    ->Arg(10'000)
    ->Arg(100'000)
    ->Arg(1'000'000)
    ->Unit(benchmark::kMillisecond);
