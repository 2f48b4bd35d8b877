#include "model/UuidText.h"

#include <array>

namespace orbitledge {

namespace {

constexpr int hexValue(char c)
{
    if (c >= '0' && c <= '9')
        return c - '0';
    if (c >= 'a' && c <= 'f')
        return c - 'a' + 10;
    if (c >= 'A' && c <= 'F')
        return c - 'A' + 10;
    return -1;
}

} // namespace

std::optional<QUuid> uuidFromText(std::string_view text)
{
    if (text.size() != 36)
        return std::nullopt;
    std::array<unsigned char, 16> bytes{};
    std::size_t at = 0;
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        if ((i == 4 || i == 6 || i == 8 || i == 10) && text[at++] != '-')
            return std::nullopt;
        const int high = hexValue(text[at]);
        const int low = hexValue(text[at + 1]);
        if (high < 0 || low < 0)
            return std::nullopt;
        bytes[i] = static_cast<unsigned char>(high * 16 + low);
        at += 2;
    }
    const auto join = [&bytes](std::size_t from, std::size_t count) {
        unsigned value = 0;
        for (std::size_t i = from; i < from + count; ++i)
            value = value << 8U | bytes[i];
        return value;
    };
    return QUuid(join(0, 4), static_cast<ushort>(join(4, 2)), static_cast<ushort>(join(6, 2)), bytes[8],
        bytes[9], bytes[10], bytes[11], bytes[12], bytes[13], bytes[14], bytes[15]);
}

QString uuidText(const QUuid &uuid)
{
    return uuid.toString(QUuid::WithoutBraces).toUpper();
}

} // namespace orbitledge
