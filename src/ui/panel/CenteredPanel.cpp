#include "ui/panel/CenteredPanel.h"

#include "ui/kit/Typography.h"

#include <QVBoxLayout>

namespace orbitledge::ui {

namespace {

constexpr qreal margin = 20;

} // namespace

CenteredPanel::CenteredPanel(QWidget *parent)
    : Component(parent)
    , m_column(new QVBoxLayout(this))
{
    m_column->setSpacing(0);
    m_column->addStretch();
    m_column->addStretch();
    measure();
}

void CenteredPanel::add(QWidget *widget, qreal gap)
{
    const int end = m_column->count() - 1;
    m_column->insertSpacing(end, scaled(*this, gap));
    m_gaps.append({.position = end, .measure = gap});
    m_column->insertWidget(end + 1, widget, 0, Qt::AlignHCenter);
}

void CenteredPanel::measure()
{
    const int around = scaled(*this, margin);
    m_column->setContentsMargins(around, around, around, around);
    for (const Gap &gap : std::as_const(m_gaps))
        m_column->itemAt(gap.position)->spacerItem()->changeSize(0, scaled(*this, gap.measure));
    m_column->invalidate();
}

} // namespace orbitledge::ui
