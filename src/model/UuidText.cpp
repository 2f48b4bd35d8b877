#include "model/UuidText.h"

#include <array>

namespace orbitledge {

namespace {

constexpr unsigned notHexadecimal = 0x100;

// Lists hold four identifiers a record: a table is what makes them cheap to read.
constexpr auto hexValues = [] {
    std::array<quint16, 256> values{};
    values.fill(notHexadecimal);
    for (unsigned digit = 0; digit < 10; ++digit)
        values['0' + digit] = static_cast<quint16>(digit);
    for (unsigned letter = 0; letter < 6; ++letter) {
        values['a' + letter] = static_cast<quint16>(10 + letter);
        values['A' + letter] = static_cast<quint16>(10 + letter);
    }
    return values;
}();

} // namespace

std::optional<QUuid> uuidFromText(std::string_view text)
{
    if (text.size() != 36)
        return std::nullopt;
    if (text[8] != '-' || text[13] != '-' || text[18] != '-' || text[23] != '-')
        return std::nullopt;
    unsigned faults = 0;
    const auto number = [text, &faults](std::size_t from, std::size_t digits) {
        unsigned value = 0;
        for (std::size_t i = from; i < from + digits; ++i) {
            const unsigned digit = hexValues[static_cast<unsigned char>(text[i])];
            faults |= digit;
            value = value << 4U | digit;
        }
        return value;
    };
    const auto pair = [&number](std::size_t from) { return static_cast<uchar>(number(from, 2)); };
    const QUuid uuid(number(0, 8), static_cast<ushort>(number(9, 4)), static_cast<ushort>(number(14, 4)),
        pair(19), pair(21), pair(24), pair(26), pair(28), pair(30), pair(32), pair(34));
    if ((faults & notHexadecimal) != 0)
        return std::nullopt;
    return uuid;
}

QString uuidText(const QUuid &uuid)
{
    constexpr std::string_view digits = "0123456789ABCDEF";
    const QByteArray bytes = uuid.toRfc4122();
    std::array<char, 36> text{};
    std::size_t at = 0;
    for (qsizetype i = 0; i < bytes.size(); ++i) {
        if (i == 4 || i == 6 || i == 8 || i == 10)
            text[at++] = '-';
        const auto byte = static_cast<unsigned char>(bytes[i]);
        text[at++] = digits[byte >> 4U];
        text[at++] = digits[byte & 0xFU];
    }
    return QString::fromLatin1(text.data(), text.size());
}

} // namespace orbitledge
