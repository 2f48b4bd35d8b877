#pragma once

#include <boost/multiprecision/cpp_int.hpp>

#include <algorithm>
#include <string>
#include <string_view>

// Arithmetic on whole fractions, written down without a look at how Decimal goes about it: what a result
// must be follows from its exact value and from the documented limits alone.
namespace orbitledge::testing {

using Integer = boost::multiprecision::cpp_int;
using Rational = boost::multiprecision::cpp_rational;

inline Integer powerOfTen(int exponent)
{
    return boost::multiprecision::pow(Integer(10), static_cast<unsigned>(exponent));
}

inline Rational scaled(const Integer &significand, int exponent)
{
    return exponent >= 0 ? Rational(Integer(significand * powerOfTen(exponent)))
                         : Rational(significand, powerOfTen(-exponent));
}

/// The exact value of a text of the form -123.456.
inline Rational rationalFromPlainText(std::string_view text)
{
    const bool negative = text.starts_with('-');
    std::string digits(text.substr(negative ? 1 : 0));
    int fraction = 0;
    if (const auto point = digits.find('.'); point != std::string::npos) {
        fraction = static_cast<int>(digits.size() - point - 1);
        digits.erase(point, 1);
    }
    // Leading zeros would be read as the mark of an octal number.
    digits.erase(0, std::min(digits.find_first_not_of('0'), digits.size() - 1));
    const Rational value = scaled(Integer(digits), -fraction);
    return negative ? Rational(-value) : value;
}

/// significand × 10^exponent as -123.456, without zeros that say nothing.
inline std::string plainText(bool negative, const Integer &significand, int exponent)
{
    if (significand == 0)
        return "0";
    std::string digits = significand.str();
    if (exponent >= 0) {
        digits.append(static_cast<std::size_t>(exponent), '0');
    } else {
        const auto fraction = static_cast<std::size_t>(-exponent);
        if (digits.size() <= fraction)
            digits.insert(0, fraction + 1 - digits.size(), '0');
        digits.insert(digits.size() - fraction, 1, '.');
        digits.erase(digits.find_last_not_of('0') + 1);
        if (digits.ends_with('.'))
            digits.pop_back();
    }
    return (negative ? "-" : "") + digits;
}

inline const Integer &largestSignificand()
{
    static const Integer largest = (Integer(1) << 128) - 1;
    return largest;
}

/// Whether the value is a significand below 2^128 times a power of ten from 10^-128 to 10^127.
inline bool isRepresentable(const Rational &value)
{
    const Rational inUnits = abs(value) * Rational(powerOfTen(128));
    if (denominator(inUnits) != 1)
        return false;
    Integer significand = numerator(inUnits);
    for (int exponent = -128; exponent < 127 && significand % 10 == 0 && significand != 0; ++exponent)
        significand /= 10;
    return significand <= largestSignificand();
}

/// The text of the number that must stand for `value`: itself where it is representable, else the nearest
/// one of 38 significant digits (ties to even), but nothing below 10^-128 and nothing past the largest.
inline std::string textOfNearest(const Rational &value)
{
    const bool negative = value < 0;
    const Rational magnitude = abs(value);
    if (magnitude == 0)
        return "0";
    if (isRepresentable(magnitude)) {
        const Integer inUnits = numerator(Rational(magnitude * Rational(powerOfTen(128))));
        return plainText(negative, inUnits, -128);
    }
    const Rational largest = scaled(largestSignificand(), 127);
    if (magnitude >= largest)
        return plainText(negative, largestSignificand(), 127);

    const Rational inLeastUnits = magnitude * Rational(powerOfTen(128));
    const Integer wholeLeastUnits = numerator(inLeastUnits) / denominator(inLeastUnits);
    const int surplus = static_cast<int>(wholeLeastUnits.str().size()) - 38;
    const int unit = -128 + std::max(0, surplus); // of the last digit that stays
    const Rational inUnits = magnitude / scaled(1, unit);
    Integer whole = numerator(inUnits) / denominator(inUnits);
    const Rational rest = inUnits - Rational(whole);
    const Rational half(1, 2);
    if (rest > half || (rest == half && whole % 2 != 0))
        ++whole;
    if (scaled(whole, unit) > largest)
        return plainText(negative, largestSignificand(), 127);
    return plainText(negative, whole, unit);
}

} // namespace orbitledge::testing
