#pragma once

#include <QFont>

class QWidget;

namespace orbitledge::ui {

/// The design's sizes are pixels that do not depend on the device, at a text scale of 1.
inline constexpr qreal baseTextSize = 13;

/// Sets the text scale of a window, from 1 to 2; what is beyond is brought into that range. It is kept as the
/// size of the window's font, so that its components are told by the toolkit when it changes. Tooltips, which
/// belong to no window, follow the one that was changed last.
void applyTextScale(QWidget &window, qreal scale);

/// The text scale of the window that a widget is in.
qreal textScaleOf(const QWidget &widget);

/// A measure of the design in the text scale of the widget's window, in whole pixels.
int scaled(const QWidget &widget, qreal designMeasure);

/// The desktop's own font in a size of the design; tracking is what is added to each letter's advance.
QFont fontOf(
    const QWidget &widget, qreal designSize, QFont::Weight weight = QFont::Normal, qreal tracking = 0);

/// Where a text begins by the direction of the window, as everything else, and not by that of its letters.
Qt::Alignment leadingIn(const QWidget &widget);

} // namespace orbitledge::ui
