#include "ui/kit/Typography.h"

#include <QToolTip>
#include <QWidget>

#include <algorithm>

namespace orbitledge::ui {

namespace {

// Sizes in pixels are whole numbers to the toolkit; sizes in points are not.
void setSizeInPixels(QFont &font, qreal pixels, const QWidget &widget)
{
    font.setPointSizeF(pixels * 72 / widget.logicalDpiY());
}

qreal sizeInPixels(const QFont &font, const QWidget &widget)
{
    return font.pointSizeF() > 0 ? font.pointSizeF() * widget.logicalDpiY() / 72 : font.pixelSize();
}

} // namespace

void applyTextScale(QWidget &window, qreal scale)
{
    QFont font;
    setSizeInPixels(font, baseTextSize * std::clamp(scale, 1.0, 2.0), window);
    window.setFont(font);
    QToolTip::setFont(window.font());
}

qreal textScaleOf(const QWidget &widget)
{
    const QWidget &window = *widget.window();
    return std::clamp(sizeInPixels(window.font(), window) / baseTextSize, 1.0, 2.0);
}

int scaled(const QWidget &widget, qreal designMeasure)
{
    return qRound(designMeasure * textScaleOf(widget));
}

QFont fontOf(const QWidget &widget, qreal designSize, QFont::Weight weight, qreal tracking)
{
    const qreal scale = textScaleOf(widget);
    QFont font = widget.font();
    setSizeInPixels(font, designSize * scale, widget);
    font.setWeight(weight);
    if (tracking != 0)
        font.setLetterSpacing(QFont::AbsoluteSpacing, tracking * scale);
    return font;
}

Qt::Alignment leadingIn(const QWidget &widget)
{
    return Qt::AlignAbsolute | (widget.isRightToLeft() ? Qt::AlignRight : Qt::AlignLeft) | Qt::AlignVCenter;
}

} // namespace orbitledge::ui
