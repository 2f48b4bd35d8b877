#pragma once

#include <QColor>
#include <QPalette>
#include <QStringView>

class QWidget;

namespace orbitledge::ui {

enum class ColorScheme {
    Light,
    Dark,
    /// For those who ask their desktop for more contrast: paper is white or black, and lines are as clear as
    /// text.
    LightHighContrast,
    DarkHighContrast,
};

constexpr bool isDark(ColorScheme colorScheme)
{
    return colorScheme == ColorScheme::Dark || colorScheme == ColorScheme::DarkHighContrast;
}

constexpr bool isHighContrast(ColorScheme colorScheme)
{
    return colorScheme == ColorScheme::LightHighContrast || colorScheme == ColorScheme::DarkHighContrast;
}

constexpr ColorScheme withHighContrast(ColorScheme colorScheme)
{
    return isDark(colorScheme) ? ColorScheme::DarkHighContrast : ColorScheme::LightHighContrast;
}

/// The colours there are. What text stands on is chosen so that it has a contrast of 4.5 to 1 at least:
/// Ink, Slate, BlackAndWhite, InkAndWhite, Cyan and Alert on Paper and Surface, OnCyan on Cyan. The other
/// tones are for bars, dots, symbols and lines.
enum class Tone {
    Cyan,
    Ink,
    Slate,
    Grey,
    Red,
    Amber,
    MidGrey,
    Paper,
    BlackAndWhite,
    InkAndWhite,
    /// Tints, to lie on Paper or Surface.
    Fill,
    Veil,
    /// The ground of what is pointed out, with text on it.
    Emphasis,
    Stroke,
    /// What is written in, and what stands out from Paper: white, or a veil. Darker than Paper, neither
    /// cyan nor slate would be readable on it in the light.
    Surface,
    /// Text on a cyan ground.
    OnCyan,
    /// A red for sentences: Red itself is too pale on Paper in the light.
    Alert,
};

/// Tints keep their opacity; `over` lays them on something.
QColor colorOf(Tone tone, ColorScheme colorScheme);

/// The colour that results where `tint` lies on `ground`, which is opaque.
QColor over(const QColor &tint, const QColor &ground);

/// The ground of a badge that counts, with white text, whatever is around it.
inline constexpr QRgb badgeRed = 0xFFDC2626;

/// The colour of a text such as "#B7FF4A": six hexadecimal digits, with anything around them that is neither
/// letter nor digit. One of the brand's tints has a darker partner in light surroundings; any other colour is
/// the same everywhere; what is no colour is cyan.
QColor colorOfText(QStringView hex, ColorScheme colorScheme);

/// Which color scheme a palette belongs to, by how light its windows are.
ColorScheme colorSchemeOf(const QPalette &palette);

/// Every role, so that the toolkit's own controls belong to the family.
QPalette paletteFor(ColorScheme colorScheme);

/// Gives a window and what is in it a color scheme: the palette is inherited, and each component repaints
/// when it changes. Tooltips, which belong to no window, follow the one that was changed last.
void applyColorScheme(QWidget &window, ColorScheme colorScheme);

} // namespace orbitledge::ui
