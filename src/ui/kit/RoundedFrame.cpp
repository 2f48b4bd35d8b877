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
    , look_(look)
{
}

void RoundedFrame::setLook(Look look)
{
    look_ = look;
    update();
}

void RoundedFrame::paintEvent(QPaintEvent * /*event*/)
{
    const Appearance appearance = appearanceOf(palette());
    const qreal radius = scaled(*this, look_.radius);
    QPainter painter(this);
    fillRounded(painter, rect(), radius, colorOf(look_.ground, appearance));
    if (look_.line)
        paintFrame(painter, rect(), radius, colorOf(*look_.line, appearance), 1);
}

void RoundedFrame::changeEvent(QEvent *event)
{
    QWidget::changeEvent(event);
    update();
}

} // namespace orbitledge::ui
