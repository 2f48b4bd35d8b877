#include "ui/kit/ButtonBase.h"

#include "ui/kit/Drawing.h"
#include "ui/kit/Palette.h"

#include <QEvent>
#include <QFocusEvent>
#include <QKeyEvent>
#include <QPainter>

namespace orbitledge::ui {

ButtonBase::ButtonBase(QWidget *parent)
    : QAbstractButton(parent)
{
    setFocusPolicy(Qt::StrongFocus);
    setAttribute(Qt::WA_Hover);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
}

bool ButtonBase::showsFocusRing() const
{
    return hasFocus() && m_wasReachedByKeyboard;
}

void ButtonBase::paintFocusRing(QPainter &painter, qreal radius) const
{
    if (showsFocusRing())
        paintFrame(painter, rect(), radius, colorOf(Tone::Cyan, colorSchemeOf(palette())), focusRingWidth);
}

void ButtonBase::changeEvent(QEvent *event)
{
    QAbstractButton::changeEvent(event);
    if (event->type() == QEvent::FontChange)
        updateGeometry();
    update();
}

void ButtonBase::focusInEvent(QFocusEvent *event)
{
    switch (event->reason()) {
    case Qt::TabFocusReason:
    case Qt::BacktabFocusReason:
    case Qt::ShortcutFocusReason:
        m_wasReachedByKeyboard = true;
        break;
    case Qt::MouseFocusReason:
        m_wasReachedByKeyboard = false;
        break;
    case Qt::ActiveWindowFocusReason:
    case Qt::PopupFocusReason:
    case Qt::MenuBarFocusReason:
        // It comes back, as it was.
        break;
    default:
        m_wasReachedByKeyboard = window()->testAttribute(Qt::WA_KeyboardFocusChange);
        break;
    }
    QAbstractButton::focusInEvent(event);
}

void ButtonBase::focusOutEvent(QFocusEvent *event)
{
    QAbstractButton::focusOutEvent(event);
    update();
}

void ButtonBase::keyPressEvent(QKeyEvent *event)
{
    const bool isReturn = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
    if (isReturn && !event->isAutoRepeat())
        click();
    else
        QAbstractButton::keyPressEvent(event);
}

} // namespace orbitledge::ui
