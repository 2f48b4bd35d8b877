#pragma once

#include <QString>

#include <tl/expected.hpp>

#include <compare>
#include <optional>
#include <string>
#include <string_view>

namespace orbitledge {

/// An exact base-10 number for amounts of money.
///
/// The value is significand × 10^exponent with a sign; the significand is an integer below 2^128
/// (every number of up to 38 digits, and some of 39) and the exponent lies in −128…127. The form is
/// canonical: trailing zeros are not kept and there is one zero, so 10, 10.0 and 1e1 are the same
/// value and `==` compares values. (Only a result whose exponent would pass 127 keeps the zeros that
/// hold it at 127; a text that asks for more than 127 is refused.)
///
/// What fits that form is exact. A result, or a text, that needs more digits is rounded half-even to
/// 38 significant digits; no operation goes through binary floating point.
class Decimal {
public:
    enum class ParseError {
        /// The text is not a number of the expected grammar.
        Malformed,
        /// The number's exponent lies outside −128…127.
        ExponentOutOfRange,
    };

    /// Significant digits that any value, result or text is sure to keep.
    static constexpr int guaranteedDigits = 38;
    static constexpr int minimumExponent = -128;
    static constexpr int maximumExponent = 127;

    /// Zero.
    constexpr Decimal() = default;
    /// Exactly `value`.
    explicit Decimal(qint64 value);

    /// Reads a number by the grammar of RFC 8259, section 6: no leading `+`, no leading zeros, digits on
    /// both sides of the point. Costs no more than the length of the text, whatever its exponent says.
    static tl::expected<Decimal, ParseError> fromJsonNumber(std::string_view text);

    /// Reads a number in the fixed form that a person may type or a program may write: an optional sign,
    /// ASCII digits with an optional fraction after ".", an optional exponent, and nothing else.
    /// At least one digit is needed, on either side of the point.
    static tl::expected<Decimal, ParseError> fromText(std::string_view text);

    /// The number without an exponent and without trailing zeros: "0", "1000", "10.5", "-0.001".
    [[nodiscard]] std::string toAscii() const;
    [[nodiscard]] QString toString() const { return QString::fromLatin1(toAscii()); }

    [[nodiscard]] bool isZero() const { return m_high == 0 && m_low == 0; }
    [[nodiscard]] bool isNegative() const { return m_negative; }

    /// The value as an integer; absent where it has a fraction or does not fit.
    [[nodiscard]] std::optional<qint64> toInteger() const;

    /// Sums, products and quotients. Where the exponent of a result leaves its range, the result is the
    /// nearest number that can be held: the largest magnitude, or the number rounded at 10^−128.
    friend Decimal operator+(const Decimal &left, const Decimal &right);
    friend Decimal operator-(const Decimal &left, const Decimal &right) { return left + (-right); }
    friend Decimal operator*(const Decimal &left, const Decimal &right);
    Decimal operator-() const;
    Decimal &operator+=(const Decimal &other) { return *this = *this + other; }

    /// The quotient by a positive integer.
    [[nodiscard]] Decimal dividedBy(quint32 divisor) const;

    friend bool operator==(const Decimal &, const Decimal &) = default;
    friend std::strong_ordering operator<=>(const Decimal &left, const Decimal &right);

private:
    struct Access;
    friend struct Access;

    // The significand in two halves: an __int128 member would raise every record's alignment to 16.
    quint64 m_high = 0;
    quint64 m_low = 0;
    qint16 m_exponent = 0;
    bool m_negative = false;
};

} // namespace orbitledge
