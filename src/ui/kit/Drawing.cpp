#include "ui/kit/Drawing.h"

#include <QColor>
#include <QPainter>
#include <QPen>

#include <algorithm>

namespace orbitledge::ui {

void paintFrame(QPainter &painter, const QRectF &frame, qreal radius, const QColor &color, qreal width)
{
    const qreal half = width / 2;
    const qreal innerRadius = std::max(0.0, radius - half);
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(color, width));
    painter.setBrush(Qt::NoBrush);
    painter.drawRoundedRect(frame.adjusted(half, half, -half, -half), innerRadius, innerRadius);
    painter.restore();
}

void fillRounded(QPainter &painter, const QRectF &frame, qreal radius, const QColor &color)
{
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(color);
    painter.drawRoundedRect(frame, radius, radius);
    painter.restore();
}

} // namespace orbitledge::ui
