#include "ui/kit/RoundedFrame.h"

#include "ui/kit/Typography.h"

#include <QEvent>
#include <QPainter>

namespace orbitledge::ui {

RoundedFrame::RoundedFrame(QWidget *parent)
    : RoundedFrame(Look(), parent)
{
}

RoundedFrame::RoundedFrame(Look look, QWidget *parent)
    : QWidget(parent)
    , m_look(look)
{
}

void RoundedFrame::setLook(Look look)
{
    m_look = look;
    update();
}

void RoundedFrame::paintEvent(QPaintEvent * /*event*/)
{
    const ColorScheme colorScheme = colorSchemeOf(palette());
    const qreal radius = scaled(*this, m_look.radius);
    QPainter painter(this);
    fillRounded(painter, rect(), radius, colorOf(m_look.ground, colorScheme));
    if (m_look.line)
        paintFrame(painter, rect(), radius, colorOf(*m_look.line, colorScheme), 1);
}

void RoundedFrame::changeEvent(QEvent *event)
{
    QWidget::changeEvent(event);
    update();
}

} // namespace orbitledge::ui
