#include "ui/panel/SubscriptionList.h"

#include <QFocusEvent>
#include <QScrollBar>

#include <algorithm>

namespace orbitledge::ui {

/// Until there is a row to give it to.
void SubscriptionList::keepFocus()
{
    m_isPassedOver = true;
    setFocus(Qt::OtherFocusReason);
    m_isPassedOver = false;
}

/// The row that is seen to have the keyboard.
std::optional<SubscriptionList::Followed> SubscriptionList::findFollowed() const
{
    for (const Realized &realized : m_realized) {
        const bool isInView = viewport()->rect().intersects(realized.row->geometry());
        if (isInView && realized.row->showsFocusWithin())
            return Followed{
                .id = realized.row->content().id, .row = realized.row, .top = topOf(realized.position)};
    }
    return std::nullopt;
}

/// Where it went, as one that was cancelled goes to the end. Who uses the mouse stays where the pointer is.
void SubscriptionList::follow(const Followed &followed)
{
    const auto found = std::ranges::find(m_realized, followed.row, &Realized::row);
    // Where it is gone, its row may show another one.
    const bool isThere = found != m_realized.end() && found->row->content().id == followed.id;
    if (isThere && topOf(found->position) != followed.top)
        reveal(found->position);
}

void SubscriptionList::setCurrent(qsizetype position)
{
    m_current = std::max<qsizetype>(0, position);
    m_currentId = m_rowCount > 0 ? entryAt(m_current).subscription->id : QUuid();
}

void SubscriptionList::focusInEvent(QFocusEvent *event)
{
    QAbstractScrollArea::focusInEvent(event);
    if (m_rowCount == 0 || m_isPassedOver)
        return;
    reveal(m_current);
    realize();
    rowAt(m_current)->setFocus(event->reason());
}

/// The toolkit would go through the rows in the order in which they were made.
bool SubscriptionList::focusNextPrevChild(bool next)
{
    SubscriptionRow *const row = m_rowCount > 0 ? rowAt(m_current) : nullptr;
    if (row == nullptr || !row->hasFocusWithin())
        return QAbstractScrollArea::focusNextPrevChild(next);
    if (row->focusNextControl(next))
        return true;
    // On from here, as if this had been one thing.
    keepFocus();
    return QAbstractScrollArea::focusNextPrevChild(next);
}

void SubscriptionList::moveCurrent(int key)
{
    const qsizetype page = std::max<qsizetype>(1, viewport()->height() / rowHeight() - 1);
    qsizetype target = m_current;
    switch (key) {
    case Qt::Key_Up:
        target -= 1;
        break;
    case Qt::Key_Down:
        target += 1;
        break;
    case Qt::Key_Home:
        target = 0;
        break;
    case Qt::Key_End:
        target = m_rowCount - 1;
        break;
    case Qt::Key_PageUp:
        target -= page;
        break;
    case Qt::Key_PageDown:
        target += page;
        break;
    default:
        return;
    }
    target = std::clamp<qsizetype>(target, 0, m_rowCount - 1);
    setCurrent(target);
    reveal(target);
    realize();
    rowAt(target)->setFocus(Qt::TabFocusReason);
}

void SubscriptionList::reveal(qsizetype position)
{
    const int top = topOf(position);
    const bool isFirstOfSection = placeOf(position).index == 0;
    const int from = isFirstOfSection ? top - headerHeight() : top;
    QScrollBar *const bar = verticalScrollBar();
    if (from < bar->value())
        bar->setValue(from);
    else if (top + rowHeight() > bar->value() + viewport()->height())
        bar->setValue(top + rowHeight() - viewport()->height());
}

} // namespace orbitledge::ui
