#pragma once

#include "model/LocalDate.h"

#include <QtGlobal>

#include <array>
#include <charconv>
#include <string_view>

namespace orbitledge {

/// Puts numbers, and what stands between them, together without a format: a list has thousands of dates, and
/// reading the format anew for each of them was most of what writing one took. Holds 64 characters, which is
/// more than three numbers of any size with hyphens.
class FixedText {
public:
    /// With zeros in front up to `width` characters, of which a minus sign is one; what is longer stays
    /// whole.
    void number(qint64 value, qsizetype width)
    {
        std::array<char, 20> digits{};
        const auto magnitude = value < 0 ? 0 - static_cast<quint64>(value) : static_cast<quint64>(value);
        const auto length = std::to_chars(digits.begin(), digits.end(), magnitude).ptr - digits.begin();
        if (value < 0)
            character('-');
        for (qsizetype zeros = width - length - (value < 0 ? 1 : 0); zeros > 0; --zeros)
            character('0');
        for (qsizetype i = 0; i < length; ++i)
            character(digits[static_cast<std::size_t>(i)]);
    }

    void date(const LocalDate &date)
    {
        number(date.year, 4);
        character('-');
        number(date.month, 2);
        character('-');
        number(date.day, 2);
    }

    void character(char c) { m_characters[m_size++] = c; }

    [[nodiscard]] std::string_view view() const { return {m_characters.data(), m_size}; }

private:
    std::array<char, 64> m_characters{};
    std::size_t m_size = 0;
};

} // namespace orbitledge
