#include "ui/panel/CenteredPanel.h"

#include "ui/kit/Typography.h"
#include "ui/panel/ScrollArea.h"

#include <QScrollArea>
#include <QVBoxLayout>

namespace orbitledge::ui {

namespace {

constexpr qreal margin = 20;

} // namespace

CenteredPanel::CenteredPanel(QWidget *parent)
    : Component(parent)
    , m_content(new QWidget)
    , m_column(new QVBoxLayout(m_content))
{
    auto *const around = new QVBoxLayout(this);
    around->setContentsMargins({});
    around->addWidget(makeScrollArea(m_content));
    m_column->setSpacing(0);
    m_column->addStretch();
    m_column->addStretch();
    measure();
}

int CenteredPanel::addGap(qreal gap)
{
    const int end = m_column->count() - 1;
    m_column->insertSpacing(end, scaled(*this, gap));
    m_gaps.append({.position = end, .measure = gap});
    return end + 1;
}

void CenteredPanel::addWide(QWidget *widget, qreal gap)
{
    m_column->insertWidget(addGap(gap), widget);
}

void CenteredPanel::add(QWidget *widget, qreal gap, qreal mostWidth)
{
    const int place = addGap(gap);
    if (!widget->sizePolicy().hasHeightForWidth()) {
        m_column->insertWidget(place, widget, 0, Qt::AlignHCenter);
        return;
    }
    // An alignment would give it another width than the one that its height is told for.
    constexpr int allThereIs = 1000;
    auto *const line = new QHBoxLayout;
    line->addStretch(1);
    line->addWidget(widget, allThereIs);
    line->addStretch(1);
    m_column->insertLayout(place, line);
    m_limits.append({.widget = widget, .measure = mostWidth});
    widget->setMaximumWidth(scaled(*this, mostWidth));
}

void CenteredPanel::measure()
{
    const int around = scaled(*this, margin);
    m_column->setContentsMargins(around, around, around, around);
    for (const Gap &gap : std::as_const(m_gaps))
        m_column->itemAt(gap.position)->spacerItem()->changeSize(0, scaled(*this, gap.measure));
    for (const Limit &limit : std::as_const(m_limits))
        limit.widget->setMaximumWidth(scaled(*this, limit.measure));
    m_column->invalidate();
}

} // namespace orbitledge::ui
