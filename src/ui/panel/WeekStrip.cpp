#include "ui/panel/WeekStrip.h"

#include "ui/kit/Typography.h"

#include <QStyle>

#include <algorithm>

namespace orbitledge::ui {

namespace {

constexpr qreal sideMargin = 16;
constexpr qreal columnWidth = 24;
constexpr qreal columnHeight = 44;
constexpr qreal bottomMargin = 12;

} // namespace

WeekStrip::WeekStrip(QWidget *parent)
    : Component(parent)
{
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
}

void WeekStrip::setContent(const QList<WeekDayContent> &days)
{
    while (m_columns.size() > days.size())
        delete m_columns.takeLast();
    while (m_columns.size() < days.size()) {
        m_columns.append(new WeekDayColumn(this));
        m_columns.last()->show();
    }
    for (qsizetype i = 0; i < days.size(); ++i)
        m_columns[i]->setContent(days[i]);
    measure();
}

QSize WeekStrip::sizeHint() const
{
    return {scaled(*this, sideMargin * 2 + columnWidth * 7), scaled(*this, columnHeight + bottomMargin)};
}

void WeekStrip::measure()
{
    if (m_columns.isEmpty())
        return;
    const int margin = scaled(*this, sideMargin);
    const int room = width() - 2 * margin;
    const auto count = static_cast<int>(m_columns.size());
    const int wide = std::min(scaled(*this, columnWidth), room / count);
    for (int i = 0; i < count; ++i) {
        const int left = count == 1 ? 0 : (room - wide) * i / (count - 1);
        const QRect place(margin + left, 0, wide, scaled(*this, columnHeight));
        m_columns[i]->setGeometry(QStyle::visualRect(layoutDirection(), rect(), place));
    }
}

void WeekStrip::resizeEvent(QResizeEvent *event)
{
    Component::resizeEvent(event);
    measure();
}

} // namespace orbitledge::ui
