#include "ui/panel/WrappingLayout.h"

#include <QStyle>
#include <QWidget>

#include <algorithm>

namespace orbitledge::ui {

WrappingLayout::WrappingLayout(QWidget *parent)
    : QLayout(parent)
{
}

WrappingLayout::~WrappingLayout() = default;

void WrappingLayout::addItem(QLayoutItem *item)
{
    m_items.emplace_back(item);
}

QLayoutItem *WrappingLayout::itemAt(int index) const
{
    return index >= 0 && index < count() ? m_items[static_cast<std::size_t>(index)].get() : nullptr;
}

QLayoutItem *WrappingLayout::takeAt(int index)
{
    if (index < 0 || index >= count())
        return nullptr;
    const auto place = m_items.begin() + index;
    QLayoutItem *const item = place->release();
    m_items.erase(place);
    return item;
}

int WrappingLayout::heightForWidth(int width) const
{
    return arrange(QRect(0, 0, width, 0), Purpose::Measure);
}

QSize WrappingLayout::sizeHint() const
{
    const QMargins margins = contentsMargins();
    QSize size(0, 0);
    for (const auto &item : m_items) {
        if (!item->isEmpty())
            size = QSize(size.width() + item->sizeHint().width() + spacing(),
                std::max(size.height(), item->sizeHint().height()));
    }
    return size.grownBy(margins);
}

QSize WrappingLayout::minimumSize() const
{
    QSize size(0, 0);
    for (const auto &item : m_items) {
        if (!item->isEmpty())
            size = size.expandedTo(item->minimumSize());
    }
    return size.grownBy(contentsMargins());
}

void WrappingLayout::setGeometry(const QRect &rect)
{
    QLayout::setGeometry(rect);
    arrange(rect, Purpose::Place);
}

int WrappingLayout::arrange(const QRect &rect, Purpose purpose) const
{
    const QMargins margins = contentsMargins();
    const QRect room = rect.marginsRemoved(margins);
    int left = room.left();
    int top = room.top();
    int bottom = room.top();
    for (const auto &item : m_items) {
        if (item->isEmpty())
            continue;
        const QSize size(std::min(item->sizeHint().width(), room.width()), item->sizeHint().height());
        if (left > room.left() && left + size.width() > room.left() + room.width()) {
            left = room.left();
            top = bottom + spacing();
        }
        if (purpose == Purpose::Place)
            item->setGeometry(
                QStyle::visualRect(parentWidget()->layoutDirection(), room, QRect({left, top}, size)));
        left += size.width() + spacing();
        bottom = std::max(bottom, top + size.height());
    }
    return bottom - rect.top() + margins.bottom();
}

} // namespace orbitledge::ui
