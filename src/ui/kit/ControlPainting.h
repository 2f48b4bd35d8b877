#pragma once

#include "ui/kit/Palette.h"

#include <QStyle>

class QPainter;
class QStyleOption;
class QStyleOptionSlider;
class QStyleOptionSpinBox;
class QWidget;

namespace orbitledge::ui {

// How the style draws the toolkit's own controls, from what it is told of them. A widget is told where there
// is one; it knows the text scale.

ColorScheme colorSchemeOf(const QStyleOption &option);
qreal atScale(const QWidget *widget, qreal measure);

bool hasFocus(const QStyleOption &option);
/// Who presses with the pointer knows where they are.
bool wasReachedByKeyboard(const QStyleOption &option);

/// The ground and the line of what one writes in or chooses from.
void paintField(QPainter &painter, const QStyleOption &option, const QWidget *widget, bool showsFocus);
void paintPushButton(QPainter &painter, const QStyleOption &option, const QWidget *widget);
void paintCheckBox(QPainter &painter, const QStyleOption &option);
void paintRadioButton(QPainter &painter, const QStyleOption &option);
/// One of a spin box's two arrows.
void paintStep(QPainter &painter, const QStyleOptionSpinBox &option, const QWidget *widget,
    const QRect &place, QStyle::SubControl part);
void paintScrollBar(QPainter &painter, const QStyleOptionSlider &option, const QRect &thumb);

} // namespace orbitledge::ui
