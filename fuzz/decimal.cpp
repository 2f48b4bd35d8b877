#include "model/Decimal.h"

#include "JsonGrammar.h"
#include "Require.h"
#include "support/DecimalOracle.h"

using namespace orbitledge;

namespace {

/// The value by whole fractions, for texts that are short enough to compute with.
void checkValue(std::string_view text, const Decimal &number)
{
    const auto exponentAt = std::min(text.find_first_of("eE"), text.size());
    const std::string exponent(text.substr(std::min(exponentAt + 1, text.size())));
    if (text.size() > 120 || exponent.size() > 4)
        return;
    std::string mantissa(text.substr(0, exponentAt));
    if (mantissa.starts_with('+'))
        mantissa.erase(0, 1);
    const int shift = exponent.empty() ? 0 : std::stoi(exponent);
    const testing::Rational value = testing::rationalFromPlainText(mantissa) * testing::scaled(1, shift);
    fuzz::require(number.toAscii() == testing::textOfNearest(value), "a number is exact or the nearest one");
}

void checkArithmetic(const Decimal &number)
{
    const Decimal one(1);
    fuzz::require(number + Decimal() == number, "nothing added changes nothing");
    fuzz::require(number - number == Decimal(), "a number less itself is nothing");
    fuzz::require(number * one == number && one * number == number, "once a number is the number");
    fuzz::require(number.dividedBy(1) == number, "a number by one is the number");
    fuzz::require(-(-number) == number, "the opposite of the opposite is the number");
    fuzz::require(number + number == number * Decimal(2), "a number and itself are twice the number");
    fuzz::require((number <=> number) == 0, "a number equals itself");
    fuzz::require((number < Decimal()) == number.isNegative(), "negative numbers are below zero");
    fuzz::require((number == Decimal()) == number.isZero(), "zero is zero");
    if (const auto integer = number.toInteger())
        fuzz::require(Decimal(*integer) == number, "an integer is the number");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const std::string_view text = fuzz::textOf(data, size);
    const auto fromJson = Decimal::fromJsonNumber(text);
    const auto fromText = Decimal::fromText(text);

    std::string_view rest = text;
    const bool isJsonNumber = fuzz::JsonGrammar::takeNumber(rest) && rest.empty();
    fuzz::require(isJsonNumber == (fromJson || fromJson.error() != Decimal::ParseError::Malformed),
        "a JSON number is one by its grammar");
    if (isJsonNumber)
        fuzz::require(fromJson == fromText, "a JSON number is a number that a person may type");
    if (!fromText)
        return 0;

    const std::string printed = fromText->toAscii();
    fuzz::require(Decimal::fromText(printed) == fromText, "what was printed can be read");
    fuzz::require(Decimal::fromJsonNumber(printed) == fromText, "what was printed is a JSON number");
    fuzz::require(printed.size() <= 39 + 127 + 1, "no text is longer than the limits allow");
    checkValue(text, *fromText);
    checkArithmetic(*fromText);
    return 0;
}
