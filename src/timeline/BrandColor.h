#pragma once

#include <QString>

#include <array>

namespace orbitledge {

/// One brand tint, as "#RRGGBB", for dark and for light surroundings.
struct BrandColor {
    QLatin1StringView dark;
    QLatin1StringView light;
};

inline constexpr std::array<BrandColor, 6> brandPalette{{
    {QLatin1StringView("#67E8F9"), QLatin1StringView("#0E7490")},
    {QLatin1StringView("#B7FF4A"), QLatin1StringView("#4D7C0F")},
    {QLatin1StringView("#FFB44C"), QLatin1StringView("#B45309")},
    {QLatin1StringView("#FF6B6B"), QLatin1StringView("#C0272D")},
    {QLatin1StringView("#A78BFA"), QLatin1StringView("#6D28D9")},
    {QLatin1StringView("#60A5FA"), QLatin1StringView("#1D4ED8")},
}};

/// Where in the palette a name has its colour: the same name has the same one everywhere.
/// The hash starts at 0 and takes each Unicode scalar as hash × 31 + scalar, kept to 31 bits.
std::size_t brandIndex(QStringView name);

inline const BrandColor &brandColor(QStringView name)
{
    return brandPalette[brandIndex(name)];
}

} // namespace orbitledge
