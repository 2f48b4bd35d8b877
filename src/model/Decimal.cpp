#include "model/Decimal.h"

#include "model/DecimalDigits.h"

#include <boost/multiprecision/cpp_int.hpp>

#include <algorithm>
#include <array>
#include <limits>
#include <vector>

namespace orbitledge {

using namespace decimal;

namespace {

template <unsigned Bits>
using Integer = boost::multiprecision::number<boost::multiprecision::cpp_int_backend<Bits, Bits,
    boost::multiprecision::unsigned_magnitude, boost::multiprecision::unchecked, void>>;

// Wide enough for a product of two significands, or for a sum of two that lie up to 38 digits apart.
using Double = Integer<256>;

// Wide enough for a significand moved by the whole span of exponents (128 bits and 255 digits).
using Wide = Integer<1024>;

bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}

/// The powers of ten that the type can hold.
template <typename Number> const std::vector<Number> &wholePowers()
{
    static const auto table = [] {
        std::vector<Number> entries;
        const Number limit = std::numeric_limits<Number>::max() / 10;
        for (Number power = 1;; power *= 10) {
            entries.push_back(power);
            if (power > limit)
                return entries;
        }
    }();
    return table;
}

template <typename Number> const Number &wholePower(int exponent)
{
    return wholePowers<Number>()[static_cast<std::size_t>(exponent)];
}

/// Of a value that is not zero.
template <typename Number> int digitCount(const Number &value)
{
    // log10(2), rounded down so that the estimate is right or one too small.
    const int estimate = static_cast<int>(boost::multiprecision::msb(value) * 30102 / 100000);
    return value >= wholePower<Number>(estimate + 1) ? estimate + 2 : estimate + 1;
}

/// Drops the last `count` digits, half-even; `inexact` says that something non-zero was cut off before.
template <typename Number> Number withoutDigits(const Number &value, int count, bool inexact)
{
    // Of a unit that the type cannot hold, every value is less than half.
    if (static_cast<std::size_t>(count) >= wholePowers<Number>().size())
        return 0;
    const auto &unit = wholePower<Number>(count);
    Number quotient;
    Number remainder;
    boost::multiprecision::divide_qr(value, unit, quotient, remainder);
    const int half = remainder.compare(Number(unit - remainder));
    const bool odd = boost::multiprecision::bit_test(quotient, 0);
    if (half > 0 || (half == 0 && (inexact || odd)))
        ++quotient;
    return quotient;
}

} // namespace

/// The significand as one number, and the ways back to the canonical form.
struct Decimal::Access {
    static Significand significand(const Decimal &value)
    {
        return (Significand{value.m_high} << 64) | value.m_low;
    }

    /// The canonical value: trailing zeros are taken off as far as the exponent's range allows.
    static Decimal canonical(bool negative, Significand significand, int exponent)
    {
        while (significand > std::numeric_limits<quint64>::max() && significand % 10 == 0
            && exponent < maximumExponent) {
            significand /= 10;
            ++exponent;
        }
        // Most amounts fit 64 bits, where a remainder costs a tenth.
        if (significand <= std::numeric_limits<quint64>::max()) {
            auto narrow = static_cast<quint64>(significand);
            while (narrow != 0 && narrow % 10 == 0 && exponent < maximumExponent) {
                narrow /= 10;
                ++exponent;
            }
            significand = narrow;
        }
        if (exponent < minimumExponent || exponent > maximumExponent)
            return withinRange(negative, significand, exponent);
        return raw(negative, significand, exponent);
    }

    template <typename Number>
    static Decimal fromInteger(bool negative, Number value, int exponent, bool inexact = false)
    {
        if (!inexact) {
            // Zeros at the end are no digits to keep: without them the value may fit as it is.
            while (value > Number(largestSignificand) && value % 10 == 0) {
                value /= 10;
                ++exponent;
            }
            if (value <= Number(largestSignificand))
                return canonical(negative, static_cast<Significand>(value), exponent);
        }
        // Rounded once, at whichever limit comes first: rounding again at the least exponent would make
        // ties of numbers that are none.
        const int surplus = std::max({0, digitCount(value) - guaranteedDigits, minimumExponent - exponent});
        const Number rounded = withoutDigits(value, surplus, inexact);
        return canonical(negative, static_cast<Significand>(rounded), exponent + surplus);
    }

    /// Two significands of which the second counts in units that are 10^gap times larger.
    struct Operands {
        Significand fine;
        Significand coarse;
        int gap;
        int exponent;
    };

    template <typename Number>
    static Decimal sum(bool fineIsNegative, bool coarseIsNegative, const Operands &operands)
    {
        const Number fine(operands.fine);
        const Number coarse = Number(operands.coarse) * wholePower<Number>(operands.gap);
        if (fineIsNegative == coarseIsNegative)
            return fromInteger(fineIsNegative, Number(fine + coarse), operands.exponent);
        return fine >= coarse ? fromInteger(fineIsNegative, Number(fine - coarse), operands.exponent)
                              : fromInteger(coarseIsNegative, Number(coarse - fine), operands.exponent);
    }

    static tl::expected<Decimal, ParseError> scan(std::string_view text, bool json);

private:
    static Decimal raw(bool negative, Significand significand, int exponent)
    {
        Decimal result;
        if (significand == 0)
            return result;
        result.m_high = static_cast<quint64>(significand >> 64);
        result.m_low = static_cast<quint64>(significand);
        result.m_exponent = static_cast<qint16>(exponent);
        result.m_negative = negative;
        return result;
    }

    static Decimal withinRange(bool negative, Significand significand, int exponent)
    {
        for (; exponent > maximumExponent; --exponent) {
            if (__builtin_mul_overflow(significand, Significand{10}, &significand))
                return raw(negative, largestSignificand, maximumExponent);
        }
        if (exponent == maximumExponent)
            return raw(negative, significand, exponent);
        const int surplus = minimumExponent - exponent;
        const Double rounded = withoutDigits(Double(significand), surplus, false);
        return canonical(negative, static_cast<Significand>(rounded), minimumExponent);
    }
};

Decimal::Decimal(qint64 value)
{
    const auto bits = static_cast<quint64>(value);
    *this = Access::canonical(value < 0, value < 0 ? quint64{0} - bits : bits, 0);
}

tl::expected<Decimal, Decimal::ParseError> Decimal::Access::scan(std::string_view text, bool json)
{
    const auto malformed = tl::make_unexpected(ParseError::Malformed);
    const char *at = text.data();
    const char *const end = at + text.size();

    bool negative = false;
    if (at != end && (*at == '-' || (!json && *at == '+')))
        negative = *at++ == '-';

    DigitCollector digits;
    const char *const integerStart = at;
    while (at != end && isDigit(*at))
        digits.push(*at++ - '0');
    const auto integerDigits = at - integerStart;
    if (json && (integerDigits == 0 || (*integerStart == '0' && integerDigits > 1)))
        return malformed;

    qint64 fractionDigits = 0;
    if (at != end && *at == '.') {
        const char *const fractionStart = ++at;
        while (at != end && isDigit(*at))
            digits.push(*at++ - '0');
        fractionDigits = at - fractionStart;
        if (json && fractionDigits == 0)
            return malformed;
    }
    if (integerDigits + fractionDigits == 0)
        return malformed;

    qint64 written = 0;
    if (at != end && (*at == 'e' || *at == 'E')) {
        ++at;
        bool negativeExponent = false;
        if (at != end && (*at == '-' || *at == '+'))
            negativeExponent = *at++ == '-';
        if (at == end || !isDigit(*at))
            return malformed;
        // Far beyond any text that fits in memory, and far from overflowing.
        constexpr qint64 ceiling = qint64{1} << 40;
        while (at != end && isDigit(*at))
            written = std::min(ceiling, written * 10 + (*at++ - '0'));
        if (negativeExponent)
            written = -written;
    }
    if (at != end)
        return malformed;

    qint64 shift = 0;
    const Significand significand = digits.finish(shift);
    // A zero has no digits to place: only an exponent that someone wrote can be out of range.
    const qint64 exponent = significand == 0 ? written : written - fractionDigits + shift;
    if (exponent < minimumExponent || exponent > maximumExponent)
        return tl::make_unexpected(ParseError::ExponentOutOfRange);
    return canonical(negative, significand, static_cast<int>(exponent));
}

tl::expected<Decimal, Decimal::ParseError> Decimal::fromJsonNumber(std::string_view text)
{
    return Access::scan(text, true);
}

tl::expected<Decimal, Decimal::ParseError> Decimal::fromText(std::string_view text)
{
    return Access::scan(text, false);
}

std::string Decimal::toAscii() const
{
    if (isZero())
        return "0";
    std::array<char, powersOfTen> reversed{};
    std::size_t count = 0;
    for (Significand rest = Access::significand(*this); rest != 0; rest /= 10)
        reversed[count++] = static_cast<char>('0' + static_cast<int>(rest % 10));

    std::string text(m_negative ? "-" : "");
    const auto appendDigits = [&](std::size_t from, std::size_t to) {
        for (std::size_t i = from; i > to; --i)
            text.push_back(reversed[i - 1]);
    };
    if (m_exponent >= 0) {
        appendDigits(count, 0);
        text.append(static_cast<std::size_t>(m_exponent), '0');
        return text;
    }
    const auto fraction = static_cast<std::size_t>(-m_exponent);
    if (count > fraction) {
        appendDigits(count, fraction);
        text.push_back('.');
    } else {
        text.append("0.").append(fraction - count, '0');
    }
    appendDigits(std::min(count, fraction), 0);
    return text;
}

std::optional<qint64> Decimal::toInteger() const
{
    if (m_exponent < 0 || m_exponent > 18)
        return std::nullopt;
    Significand magnitude = 0;
    const Significand power = powers[static_cast<std::size_t>(m_exponent)];
    if (__builtin_mul_overflow(Access::significand(*this), power, &magnitude))
        return std::nullopt;
    constexpr Significand limit = static_cast<quint64>(std::numeric_limits<qint64>::max());
    if (magnitude > limit + (m_negative ? 1 : 0))
        return std::nullopt;
    const auto bits = static_cast<quint64>(magnitude);
    return static_cast<qint64>(m_negative ? quint64{0} - bits : bits);
}

Decimal Decimal::operator-() const
{
    Decimal result = *this;
    result.m_negative = !m_negative && !isZero();
    return result;
}

Decimal operator+(const Decimal &left, const Decimal &right)
{
    using Access = Decimal::Access;
    if (left.isZero())
        return right;
    if (right.isZero())
        return left;

    const bool leftIsFiner = left.m_exponent <= right.m_exponent;
    const Decimal &fine = leftIsFiner ? left : right;
    const Decimal &coarse = leftIsFiner ? right : left;
    const int gap = coarse.m_exponent - fine.m_exponent;
    const Significand a = Access::significand(fine);

    Significand b = 0;
    if (gap < powersOfTen
        && !__builtin_mul_overflow(Access::significand(coarse), powers[static_cast<std::size_t>(gap)], &b)) {
        if (fine.m_negative != coarse.m_negative) {
            return a >= b ? Access::canonical(fine.m_negative, a - b, fine.m_exponent)
                          : Access::canonical(coarse.m_negative, b - a, fine.m_exponent);
        }
        Significand sum = 0;
        if (!__builtin_add_overflow(a, b, &sum))
            return Access::canonical(fine.m_negative, sum, fine.m_exponent);
    }

    const Access::Operands operands{a, Access::significand(coarse), gap, fine.m_exponent};
    return gap < powersOfTen ? Access::sum<Double>(fine.m_negative, coarse.m_negative, operands)
                             : Access::sum<Wide>(fine.m_negative, coarse.m_negative, operands);
}

Decimal operator*(const Decimal &left, const Decimal &right)
{
    using Access = Decimal::Access;
    const Significand a = Access::significand(left);
    const Significand b = Access::significand(right);
    const bool negative = left.m_negative != right.m_negative;
    const int exponent = left.m_exponent + right.m_exponent;
    Significand product = 0;
    if (!__builtin_mul_overflow(a, b, &product))
        return Access::canonical(negative, product, exponent);
    return Access::fromInteger(negative, Double(Double(a) * Double(b)), exponent);
}

Decimal Decimal::dividedBy(quint32 divisor) const
{
    Q_ASSERT(divisor != 0);
    const Significand significand = Access::significand(*this);
    // Long division, nine digits at a time while they fit.
    Significand quotient = significand / divisor;
    auto remainder = static_cast<quint64>(significand % divisor);
    int exponent = m_exponent;
    for (const std::size_t digits : {std::size_t{9}, std::size_t{1}}) {
        const auto step = static_cast<quint64>(powers[digits]);
        while (remainder != 0 && quotient < powers[guaranteedDigits - digits]) {
            remainder *= step;
            quotient = quotient * step + remainder / divisor;
            remainder %= divisor;
            exponent -= static_cast<int>(digits);
        }
    }
    if (remainder == 0)
        return Access::canonical(m_negative, quotient, exponent);
    // One digit more than is kept tells, with whether anything follows it, how to round.
    remainder *= 10;
    const Double withGuard = Double(quotient) * 10 + remainder / divisor;
    return Access::fromInteger(m_negative, withGuard, exponent - 1, remainder % divisor != 0);
}

std::strong_ordering operator<=>(const Decimal &left, const Decimal &right)
{
    const auto signOf = [](const Decimal &value) { return value.isZero() ? 0 : (value.m_negative ? -1 : 1); };
    if (const auto order = signOf(left) <=> signOf(right); order != 0)
        return order;
    // Compared whole and not by a difference, which could round two distinct numbers to zero.
    const int least = std::min(left.m_exponent, right.m_exponent);
    const auto aligned = [least](const Decimal &value) {
        return Wide(Wide(Decimal::Access::significand(value)) * wholePower<Wide>(value.m_exponent - least));
    };
    const int magnitude = aligned(left).compare(aligned(right));
    return (left.m_negative ? -magnitude : magnitude) <=> 0;
}

} // namespace orbitledge
