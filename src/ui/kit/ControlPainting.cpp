#include "ui/kit/ControlPainting.h"

#include "ui/kit/Drawing.h"
#include "ui/kit/Symbols.h"
#include "ui/kit/Typography.h"

#include <QPainter>
#include <QStyleOption>

#include <algorithm>

namespace orbitledge::ui {

namespace {

bool isHovered(const QStyleOption &option)
{
    return option.state.testFlag(QStyle::State_MouseOver) && option.state.testFlag(QStyle::State_Enabled);
}

} // namespace

ColorScheme colorSchemeOf(const QStyleOption &option)
{
    return ui::colorSchemeOf(option.palette);
}

qreal atScale(const QWidget *widget, qreal measure)
{
    return widget ? scaled(*widget, measure) : measure;
}

bool hasFocus(const QStyleOption &option)
{
    return option.state.testFlag(QStyle::State_HasFocus);
}

bool wasReachedByKeyboard(const QStyleOption &option)
{
    return hasFocus(option) && option.state.testFlag(QStyle::State_KeyboardFocusChange);
}

void paintField(QPainter &painter, const QStyleOption &option, const QWidget *widget, bool showsFocus)
{
    const ColorScheme colorScheme = colorSchemeOf(option);
    const QRectF frame = option.rect;
    const qreal radius = atScale(widget, controlRadius);
    fillRounded(painter, frame, radius, option.palette.color(QPalette::Base));
    if (showsFocus) {
        paintFrame(painter, frame, radius, colorOf(Tone::Cyan, colorScheme), focusRingWidth);
        return;
    }
    if (isHovered(option))
        paintFrame(painter, frame, radius, colorOf(Tone::Stroke, colorScheme), 1);
    paintFrame(painter, frame, radius, colorOf(Tone::Stroke, colorScheme), 1);
}

void paintPushButton(QPainter &painter, const QStyleOption &option, const QWidget *widget)
{
    const ColorScheme colorScheme = colorSchemeOf(option);
    const QRectF frame = option.rect;
    const qreal radius = atScale(widget, controlRadius);
    fillRounded(painter, frame, radius, option.palette.color(QPalette::Button));
    const bool isDown
        = option.state.testFlag(QStyle::State_Sunken) || option.state.testFlag(QStyle::State_On);
    if (isDown)
        fillRounded(painter, frame, radius, colorOf(Tone::Fill, colorScheme));
    else if (isHovered(option))
        fillRounded(painter, frame, radius, colorOf(Tone::Veil, colorScheme));
    const auto *const button = qstyleoption_cast<const QStyleOptionButton *>(&option);
    const bool isDefault = button && button->features.testFlag(QStyleOptionButton::DefaultButton);
    if (wasReachedByKeyboard(option))
        paintFrame(painter, frame, radius, colorOf(Tone::Cyan, colorScheme), focusRingWidth);
    else
        paintFrame(painter, frame, radius, colorOf(isDefault ? Tone::Cyan : Tone::Stroke, colorScheme), 1);
}

void paintCheckBox(QPainter &painter, const QStyleOption &option)
{
    const ColorScheme colorScheme = colorSchemeOf(option);
    const QRectF frame = option.rect;
    constexpr qreal radius = 4;
    const bool isEnabled = option.state.testFlag(QStyle::State_Enabled);
    const bool isPartly = option.state.testFlag(QStyle::State_NoChange);
    if (!isPartly && !option.state.testFlag(QStyle::State_On)) {
        fillRounded(painter, frame, radius, option.palette.color(QPalette::Base));
        paintFrame(painter, frame, radius, colorOf(isEnabled ? Tone::Grey : Tone::Stroke, colorScheme), 1);
        return;
    }
    fillRounded(painter, frame, radius, colorOf(isEnabled ? Tone::Cyan : Tone::Grey, colorScheme));
    const QColor ink = colorOf(Tone::OnCyan, colorScheme);
    if (isPartly)
        painter.fillRect(QRectF(frame.left() + 4, frame.center().y() - 1, frame.width() - 8, 2), ink);
    else
        paintSymbol(painter, Symbol::Check, frame.adjusted(1, 1, -1, -1), ink);
}

void paintRadioButton(QPainter &painter, const QStyleOption &option)
{
    const ColorScheme colorScheme = colorSchemeOf(option);
    const QRectF frame = option.rect;
    const qreal radius = frame.width() / 2;
    const bool isEnabled = option.state.testFlag(QStyle::State_Enabled);
    if (!option.state.testFlag(QStyle::State_On)) {
        fillRounded(painter, frame, radius, option.palette.color(QPalette::Base));
        paintFrame(painter, frame, radius, colorOf(isEnabled ? Tone::Grey : Tone::Stroke, colorScheme), 1);
        return;
    }
    const qreal inset = frame.width() * 5 / 16;
    fillRounded(painter, frame, radius, colorOf(isEnabled ? Tone::Cyan : Tone::Grey, colorScheme));
    fillRounded(painter, frame.adjusted(inset, inset, -inset, -inset), radius - inset,
        colorOf(Tone::OnCyan, colorScheme));
}

void paintStep(QPainter &painter, const QStyleOptionSpinBox &option, const QWidget *widget,
    const QRect &place, QStyle::SubControl part)
{
    const bool isUp = part == QStyle::SC_SpinBoxUp;
    const auto needed = isUp ? QAbstractSpinBox::StepUpEnabled : QAbstractSpinBox::StepDownEnabled;
    const bool isEnabled
        = option.state.testFlag(QStyle::State_Enabled) && option.stepEnabled.testFlag(needed);
    const bool isPressed
        = isEnabled && option.activeSubControls == part && option.state.testFlag(QStyle::State_Sunken);
    const Tone tone = !isEnabled ? Tone::MidGrey : isPressed ? Tone::Cyan : Tone::Slate;
    QRectF symbol(0, 0, atScale(widget, 12), atScale(widget, 12));
    symbol.moveCenter(QRectF(place).center());
    paintSymbol(painter, isUp ? Symbol::ChevronUp : Symbol::ChevronDown, symbol,
        colorOf(tone, colorSchemeOf(option)));
}

void paintScrollBar(QPainter &painter, const QStyleOptionSlider &option, const QRect &thumb)
{
    if (option.minimum == option.maximum)
        return;
    const bool isHeld = option.state.testFlag(QStyle::State_Sunken);
    const bool isNear = option.state.testFlag(QStyle::State_MouseOver);
    QColor color = colorOf(Tone::MidGrey, colorSchemeOf(option));
    color.setAlphaF(isHeld || isNear ? 1.0F : 0.6F);
    const QRectF inner = QRectF(thumb).adjusted(2, 2, -2, -2);
    fillRounded(painter, inner, std::min(inner.width(), inner.height()) / 2, color);
}

} // namespace orbitledge::ui
