#include "demo/Money.h"

#include "demo/ExchangeRates.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace orbitledge::demo {

namespace {

struct Parts {
    std::string whole;
    std::string fraction;
};

Parts partsOf(const std::string &plain)
{
    const auto point = plain.find('.');
    if (point == std::string::npos)
        return {plain, {}};
    return {plain.substr(0, point), plain.substr(point + 1)};
}

} // namespace

int fractionDigits(const Decimal &value)
{
    return static_cast<int>(partsOf(value.toAscii()).fraction.size());
}

Decimal roundedHalfEven(const Decimal &value, int digits)
{
    const Decimal magnitude = value.isNegative() ? -value : value;
    const Parts parts = partsOf(magnitude.toAscii());
    const auto kept = static_cast<std::size_t>(digits);
    if (parts.fraction.size() <= kept)
        return value;
    const std::string rest = parts.fraction.substr(kept);
    const std::string head = parts.whole + parts.fraction.substr(0, kept);
    const bool isMiddle
        = rest.front() == '5' && std::all_of(rest.begin() + 1, rest.end(), [](char c) { return c == '0'; });
    const bool lastIsOdd = (head.back() - '0') % 2 == 1;
    const bool up = isMiddle ? lastIsOdd : rest.front() >= '5';

    const std::string scale = "e-" + std::to_string(digits);
    Decimal result = Decimal::fromText(head + scale).value_or(Decimal());
    if (up)
        result += Decimal::fromText("1" + scale).value_or(Decimal());
    return value.isNegative() ? -result : result;
}

QString fixedText(const Decimal &value, int digits)
{
    Parts parts = partsOf(value.toAscii());
    if (parts.fraction.size() < static_cast<std::size_t>(digits))
        parts.fraction.resize(static_cast<std::size_t>(digits), '0');
    const std::string text = parts.fraction.empty() ? parts.whole : parts.whole + "." + parts.fraction;
    return QString::fromStdString(text);
}

QString moneyText(const Decimal &value, const QString &currency)
{
    const Currency *const known = findCurrency(currency);
    const int digits = known != nullptr ? known->digits : 2;
    const Decimal rounded = roundedHalfEven(value.isNegative() ? -value : value, digits);
    QString number = fixedText(rounded, digits);
    const auto point = number.indexOf(u'.');
    for (auto at = (point < 0 ? number.size() : point) - 3; at > 0; at -= 3)
        number.insert(at, u',');

    const QString code = currency.toUpper();
    const QString symbol = code == "EUR"_L1 ? u"€"_s
        : code == "USD"_L1                  ? u"$"_s
        : code == "GBP"_L1                  ? u"£"_s
        : code == "JPY"_L1                  ? u"¥"_s
                                            : code + u'\u00A0';
    return (value.isNegative() && !rounded.isZero() ? u"−"_s : QString()) + symbol + number;
}

} // namespace orbitledge::demo
