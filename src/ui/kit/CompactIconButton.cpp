#include "ui/kit/CompactIconButton.h"

#include "ui/kit/Drawing.h"
#include "ui/kit/Palette.h"
#include "ui/kit/Typography.h"

#include <QPainter>

namespace orbitledge::ui {

namespace {

constexpr qreal side = 24;
constexpr qreal symbolSide = 14;
constexpr qreal disabledOpacity = 0.4;

} // namespace

CompactIconButton::CompactIconButton(
    Symbol symbol, const QString &accessibleName, const QString &toolTip, QWidget *parent)
    : ButtonBase(parent)
    , m_symbol(symbol)
{
    setAccessibleName(accessibleName);
    setToolTip(toolTip);
}

void CompactIconButton::setSymbol(Symbol symbol)
{
    m_symbol = symbol;
    update();
}

void CompactIconButton::setBlank(bool isBlank)
{
    m_isBlank = isBlank;
    update();
}

QSize CompactIconButton::sizeHint() const
{
    return {scaled(*this, side), scaled(*this, side)};
}

void CompactIconButton::paintEvent(QPaintEvent * /*event*/)
{
    const ColorScheme colorScheme = colorSchemeOf(palette());
    const qreal radius = scaled(*this, smallControlRadius);
    QPainter painter(this);
    if (isHovered() || isDown())
        fillRounded(painter, rect(), radius, colorOf(Tone::Fill, colorScheme));
    if (isDown())
        fillRounded(painter, rect(), radius, colorOf(Tone::Fill, colorScheme));
    const qreal inset = (width() - scaled(*this, symbolSide)) / 2.0;
    painter.setOpacity(isEnabled() ? 1 : disabledOpacity);
    if (!m_isBlank)
        paintSymbol(painter, m_symbol, QRectF(rect()).adjusted(inset, inset, -inset, -inset),
            colorOf(Tone::Ink, colorScheme));
    painter.setOpacity(1);
    paintFocusRing(painter, radius);
}

} // namespace orbitledge::ui
