#include "ui/kit/Palette.h"

#include "timeline/BrandColor.h"

#include <QToolTip>
#include <QWidget>

#include <algorithm>
#include <array>
#include <optional>

namespace orbitledge::ui {

namespace {

struct Pair {
    QRgb light = 0;
    QRgb dark = 0;
    double lightOpacity = 1;
    double darkOpacity = 1;
};

constexpr QRgb opaque(QRgb rgb)
{
    return 0xFF00'0000U | rgb;
}

constexpr QRgb nearBlack = opaque(0x0A0A0A);
constexpr QRgb white = opaque(0xFFFFFF);

constexpr Pair foregroundAt(double lightOpacity, double darkOpacity)
{
    return {nearBlack, white, lightOpacity, darkOpacity};
}

Pair pairOf(Tone tone)
{
    switch (tone) {
    case Tone::Cyan:
        return {opaque(0x0E7490), opaque(0x67E8F9)};
    case Tone::Ink:
        return {opaque(0x18181B), opaque(0xEDEDED)};
    case Tone::Slate:
        return {opaque(0x52525B), opaque(0xA6A6A6)};
    case Tone::Grey:
        return {opaque(0x71717A), opaque(0x7A7A7A)};
    case Tone::Red:
        return {opaque(0xDC2626), opaque(0xFF6B6B)};
    case Tone::Amber:
        return {opaque(0xB45309), opaque(0xFFB44C)};
    case Tone::MidGrey:
        return {opaque(0x8E8E96), opaque(0x4F4F4F)};
    case Tone::Paper:
        return {opaque(0xEFEFF2), opaque(0x101010)};
    case Tone::BlackAndWhite:
        return {nearBlack, white};
    case Tone::InkAndWhite:
        return {opaque(0x18181B), white};
    case Tone::Fill:
        return foregroundAt(0.08, 0.07);
    case Tone::Veil:
        return foregroundAt(0.05, 0.04);
    case Tone::Emphasis:
    case Tone::Stroke:
        return foregroundAt(0.1, 0.09);
    case Tone::Surface:
        return {white, white, 1, 0.04};
    case Tone::OnCyan:
        return {white, nearBlack};
    case Tone::Alert:
        return {opaque(0xC0272D), opaque(0xFF6B6B)};
    }
    Q_UNREACHABLE();
}

/// What a tone is where there is to be more contrast.
Pair clearPairOf(Tone tone)
{
    switch (tone) {
    case Tone::Paper:
    case Tone::Surface:
        return {white, nearBlack};
    case Tone::Ink:
    case Tone::InkAndWhite:
    case Tone::Slate:
        return {nearBlack, white};
    case Tone::Grey:
    case Tone::MidGrey:
        return pairOf(Tone::Slate);
    case Tone::Fill:
    case Tone::Emphasis:
        return foregroundAt(0.16, 0.2);
    case Tone::Veil:
        return foregroundAt(0.08, 0.1);
    case Tone::Stroke:
        return foregroundAt(0.6, 0.6);
    default:
        return pairOf(tone);
    }
}

std::optional<QColor> parsedHex(QStringView text)
{
    const auto isKept = [](QChar character) { return character.isLetterOrNumber(); };
    while (!text.isEmpty() && !isKept(text.front()))
        text = text.sliced(1);
    while (!text.isEmpty() && !isKept(text.back()))
        text.chop(1);
    const auto isHexDigit = [](QChar character) {
        const char16_t unit = character.unicode();
        return (unit >= u'0' && unit <= u'9') || (unit >= u'a' && unit <= u'f')
            || (unit >= u'A' && unit <= u'F');
    };
    if (text.size() != 6 || !std::ranges::all_of(text, isHexDigit))
        return std::nullopt;
    return QColor::fromRgb(opaque(text.toUInt(nullptr, 16)));
}

/// The colours that the toolkit's controls are made of, all opaque.
struct Ground {
    explicit Ground(ColorScheme colorScheme)
        : paper(colorOf(Tone::Paper, colorScheme))
        , surface(over(colorOf(Tone::Surface, colorScheme), paper))
        , ink(colorOf(Tone::Ink, colorScheme))
        , slate(colorOf(Tone::Slate, colorScheme))
        , grey(colorOf(Tone::Grey, colorScheme))
        , cyan(colorOf(Tone::Cyan, colorScheme))
        , onCyan(colorOf(Tone::OnCyan, colorScheme))
        , stroke(over(colorOf(Tone::Stroke, colorScheme), paper))
        , filled(over(colorOf(Tone::Fill, colorScheme), paper))
    {
    }

    QColor paper;
    QColor surface;
    QColor ink;
    QColor slate;
    QColor grey;
    QColor cyan;
    QColor onCyan;
    QColor stroke;
    QColor filled;
};

} // namespace

QColor colorOf(Tone tone, ColorScheme colorScheme)
{
    const Pair pair = isHighContrast(colorScheme) ? clearPairOf(tone) : pairOf(tone);
    const bool isLight = !isDark(colorScheme);
    QColor color = QColor::fromRgb(isLight ? pair.light : pair.dark);
    color.setAlphaF(static_cast<float>(isLight ? pair.lightOpacity : pair.darkOpacity));
    return color;
}

QColor over(const QColor &tint, const QColor &ground)
{
    const float opacity = tint.alphaF();
    const auto mixed = [opacity](float top, float under) { return top * opacity + under * (1 - opacity); };
    const QColor result = QColor::fromRgbF(mixed(tint.redF(), ground.redF()),
        mixed(tint.greenF(), ground.greenF()), mixed(tint.blueF(), ground.blueF()));
    // In eight bits, as it is drawn, so that it equals what is drawn.
    return QColor::fromRgb(result.rgb());
}

QColor colorOfText(QStringView hex, ColorScheme colorScheme)
{
    const std::optional<QColor> parsed = parsedHex(hex);
    if (!parsed)
        return colorOf(Tone::Cyan, colorScheme);
    if (isDark(colorScheme))
        return *parsed;
    const auto isThisTint
        = [hex](const BrandColor &color) { return hex.compare(color.dark, Qt::CaseInsensitive) == 0; };
    const auto *const tint = std::ranges::find_if(brandPalette, isThisTint);
    return tint == brandPalette.end() ? *parsed : parsedHex(QString(tint->light)).value_or(*parsed);
}

ColorScheme colorSchemeOf(const QPalette &palette)
{
    const QColor window = palette.color(QPalette::Window);
    const ColorScheme plain = window.lightnessF() < 0.5F ? ColorScheme::Dark : ColorScheme::Light;
    const ColorScheme clear = withHighContrast(plain);
    // Their papers are different.
    return window == colorOf(Tone::Paper, clear) ? clear : plain;
}

QPalette paletteFor(ColorScheme colorScheme)
{
    const Ground ground(colorScheme);
    QPalette palette;
    palette.setColor(QPalette::Window, ground.paper);
    palette.setColor(QPalette::WindowText, ground.ink);
    palette.setColor(QPalette::Base, ground.surface);
    palette.setColor(QPalette::AlternateBase, over(colorOf(Tone::Veil, colorScheme), ground.surface));
    palette.setColor(QPalette::Text, ground.ink);
    palette.setColor(QPalette::PlaceholderText, ground.slate);
    palette.setColor(QPalette::Button, ground.surface);
    palette.setColor(QPalette::ButtonText, ground.ink);
    palette.setColor(QPalette::BrightText, colorOf(Tone::BlackAndWhite, colorScheme));
    palette.setColor(QPalette::Highlight, ground.cyan);
    palette.setColor(QPalette::HighlightedText, ground.onCyan);
    palette.setColor(QPalette::Link, ground.cyan);
    palette.setColor(QPalette::LinkVisited, ground.slate);
    palette.setColor(QPalette::ToolTipBase, ground.surface);
    palette.setColor(QPalette::ToolTipText, ground.ink);
    // What bevels are made of; the style draws hardly any.
    palette.setColor(QPalette::Light, ground.surface);
    palette.setColor(QPalette::Midlight, ground.paper);
    palette.setColor(QPalette::Mid, ground.filled);
    palette.setColor(QPalette::Dark, ground.stroke);
    palette.setColor(QPalette::Shadow, QColor::fromRgb(nearBlack));
    for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText, QPalette::Link,
             QPalette::LinkVisited, QPalette::PlaceholderText, QPalette::HighlightedText})
        palette.setColor(QPalette::Disabled, role, ground.grey);
    palette.setColor(QPalette::Disabled, QPalette::Base, ground.paper);
    palette.setColor(QPalette::Disabled, QPalette::Button, ground.paper);
    palette.setColor(QPalette::Disabled, QPalette::Highlight, ground.filled);
    return palette;
}

void applyColorScheme(QWidget &window, ColorScheme colorScheme)
{
    const QPalette palette = paletteFor(colorScheme);
    window.setPalette(palette);
    QToolTip::setPalette(palette);
}

} // namespace orbitledge::ui
