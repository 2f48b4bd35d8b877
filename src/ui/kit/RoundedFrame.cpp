#include "ui/kit/RoundedFrame.h"

#include "ui/kit/Drawing.h"
#include "ui/kit/Palette.h"
#include "ui/kit/Typography.h"

#include <QEvent>
#include <QPainter>

namespace orbitledge::ui {

void RoundedFrame::paintEvent(QPaintEvent * /*event*/)
{
    const ColorScheme colorScheme = colorSchemeOf(palette());
    const qreal radius = scaled(*this, controlRadius);
    QPainter painter(this);
    fillRounded(painter, rect(), radius, colorOf(Tone::Surface, colorScheme));
    paintFrame(painter, rect(), radius, colorOf(Tone::Stroke, colorScheme), 1);
}

void RoundedFrame::changeEvent(QEvent *event)
{
    QWidget::changeEvent(event);
    update();
}

} // namespace orbitledge::ui
