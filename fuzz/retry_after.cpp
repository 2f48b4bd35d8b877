#include "Require.h"
#include "service/ResponseFailure.h"

#include <algorithm>
#include <cmath>

using namespace orbitledge;

namespace {

bool takeDigits(std::string_view &text)
{
    const auto end = std::min(text.find_first_not_of("0123456789"), text.size());
    text.remove_prefix(end);
    return end > 0;
}

bool takeOneOf(std::string_view &text, std::string_view characters)
{
    const bool found = !text.empty() && characters.find(text.front()) != std::string_view::npos;
    text.remove_prefix(found ? 1 : 0);
    return found;
}

/// A sign, digits with a point among, before or behind them, an exponent; nothing else.
bool isDecimalNumber(std::string_view text)
{
    takeOneOf(text, "+-");
    const bool hasInteger = takeDigits(text);
    const bool hasFraction = takeOneOf(text, ".") && takeDigits(text);
    if (!hasInteger && !hasFraction)
        return false;
    if (takeOneOf(text, "eE")) {
        takeOneOf(text, "+-");
        if (!takeDigits(text))
            return false;
    }
    return text.empty();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const std::string_view text = fuzz::textOf(data, size);
    const QByteArray header(text.data(), static_cast<qsizetype>(size));
    const auto seconds = retryAfterSeconds(header);
    fuzz::require(!seconds || std::isfinite(*seconds), "one can wait that long");
    fuzz::require(!seconds || isDecimalNumber(text), "what was read is a number");
    // The toolkit's reader knows more forms than these, but not other values for them.
    bool fits = false;
    const double expected = header.toDouble(&fits);
    if (isDecimalNumber(text) && fits && std::isnormal(expected))
        fuzz::require(seconds == expected, "a number is read, and exactly");

    const auto failure = failureOf({.statusCode = 429, .headers = {{"retry-after", header}}, .body = {}});
    const auto *const limited = failure ? failure->as<APIError::RateLimited>() : nullptr;
    fuzz::require(limited != nullptr && limited->retryAfter == seconds, "the header is the answer's");
    fuzz::require(
        failure->errorDescription().contains(QStringLiteral(" Try again in ")) == seconds.has_value(),
        "the seconds are told where there are some");
    return 0;
}
