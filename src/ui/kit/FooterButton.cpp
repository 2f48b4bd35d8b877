#include "ui/kit/FooterButton.h"

#include "ui/kit/Drawing.h"
#include "ui/kit/Palette.h"
#include "ui/kit/Typography.h"

#include <QFontMetricsF>
#include <QPainter>
#include <QStyle>

#include <cmath>

namespace orbitledge::ui {

namespace {

constexpr qreal designHeight = 28;
constexpr qreal sideInset = 8;
constexpr qreal symbolBesideText = 14;
constexpr qreal symbolAlone = 16;
constexpr qreal symbolGap = 6;
/// Less, and the label would lose its contrast.
constexpr qreal pressedOpacity = 0.65;
constexpr qreal disabledOpacity = 0.4;

} // namespace

FooterButton::FooterButton(const QString &text, QWidget *parent)
    : ButtonBase(parent)
{
    setText(text);
}

FooterButton::FooterButton(Symbol symbol, const QString &text, QWidget *parent)
    : ButtonBase(parent)
    , m_symbol(symbol)
{
    setText(text);
}

QFont FooterButton::labelFont() const
{
    return fontOf(*this, 12, QFont::Medium);
}

int FooterButton::symbolSide() const
{
    if (!m_symbol)
        return 0;
    return scaled(*this, text().isEmpty() ? symbolAlone : symbolBesideText);
}

int FooterButton::gap() const
{
    return m_symbol && !text().isEmpty() ? scaled(*this, symbolGap) : 0;
}

QSize FooterButton::sizeHint() const
{
    const auto label = static_cast<int>(std::ceil(QFontMetricsF(labelFont()).horizontalAdvance(text())));
    return {label + symbolSide() + gap() + 2 * scaled(*this, sideInset), scaled(*this, designHeight)};
}

void FooterButton::paintEvent(QPaintEvent * /*event*/)
{
    const ColorScheme colorScheme = colorSchemeOf(palette());
    const qreal radius = scaled(*this, smallControlRadius);
    const int inset = scaled(*this, sideInset);
    const QColor ink = colorOf(Tone::Ink, colorScheme);
    QPainter painter(this);
    if (isHovered())
        fillRounded(painter, rect(), radius, colorOf(Tone::Veil, colorScheme));
    painter.setOpacity(!isEnabled() ? disabledOpacity : isDown() ? pressedOpacity : 1);
    const QRect content = rect().adjusted(inset, 0, -inset, 0);
    if (m_symbol) {
        const QRect place(content.left(), content.top(), symbolSide(), content.height());
        paintSymbol(painter, *m_symbol, QStyle::visualRect(layoutDirection(), rect(), place), ink);
    }
    painter.setFont(labelFont());
    painter.setPen(ink);
    const QRect label = content.adjusted(symbolSide() + gap(), 0, 1, 0);
    painter.drawText(QStyle::visualRect(layoutDirection(), rect(), label),
        Qt::AlignVCenter | Qt::AlignLeading | Qt::TextSingleLine, text());
    painter.setOpacity(1);
    paintFocusRing(painter, radius);
}

} // namespace orbitledge::ui
