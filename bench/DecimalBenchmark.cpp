#include "model/Decimal.h"

#include <benchmark/benchmark.h>
#include <boost/multiprecision/cpp_dec_float.hpp>

#include <array>
#include <string>

using namespace orbitledge;

namespace {

// The amounts' own type beside the general one of the same precision.
using General = boost::multiprecision::number<boost::multiprecision::cpp_dec_float<38>>;

const std::array<std::string, 4> amounts{"15.99", "1234.5", "0.918700", "120"};

void parse(benchmark::State &state)
{
    for (auto _ : state) {
        for (const std::string &amount : amounts)
            benchmark::DoNotOptimize(Decimal::fromJsonNumber(amount));
    }
    state.SetItemsProcessed(state.iterations() * 4);
}

void parseGeneral(benchmark::State &state)
{
    for (auto _ : state) {
        for (const std::string &amount : amounts)
            benchmark::DoNotOptimize(General(amount));
    }
    state.SetItemsProcessed(state.iterations() * 4);
}

void sumOfShares(benchmark::State &state)
{
    const Decimal amount = *Decimal::fromText("15.99");
    const Decimal other = *Decimal::fromText("119.5");
    for (auto _ : state) {
        Decimal sum;
        for (int i = 0; i < 100; ++i)
            sum += i % 2 == 0 ? amount : other.dividedBy(12);
        benchmark::DoNotOptimize(sum);
    }
    state.SetItemsProcessed(state.iterations() * 100);
}

void sumOfSharesGeneral(benchmark::State &state)
{
    const General amount("15.99");
    const General other("119.5");
    for (auto _ : state) {
        General sum = 0;
        for (int i = 0; i < 100; ++i)
            sum += i % 2 == 0 ? amount : General(other / 12);
        benchmark::DoNotOptimize(sum);
    }
    state.SetItemsProcessed(state.iterations() * 100);
}

} // namespace

BENCHMARK(parse)->Name("decimal/parse");
BENCHMARK(parseGeneral)->Name("decimal/parse (cpp_dec_float)");
BENCHMARK(sumOfShares)->Name("decimal/sum of shares");
BENCHMARK(sumOfSharesGeneral)->Name("decimal/sum of shares (cpp_dec_float)");
