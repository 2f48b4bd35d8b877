#pragma once

#include <QRectF>

class QColor;
class QPainter;

namespace orbitledge::ui {

/// The radii of corners, by what they belong to.
inline constexpr qreal controlRadius = 8;
inline constexpr qreal smallControlRadius = 7;

/// Fields and buttons that stand beside each other.
inline constexpr qreal controlHeight = 34;

inline constexpr qreal focusRingWidth = 2;

/// A line of `width` that lies wholly inside `frame`, with the frame's outer radius.
void paintFrame(QPainter &painter, const QRectF &frame, qreal radius, const QColor &color, qreal width);

void fillRounded(QPainter &painter, const QRectF &frame, qreal radius, const QColor &color);

} // namespace orbitledge::ui
