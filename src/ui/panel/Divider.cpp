#include "ui/panel/Divider.h"

#include "ui/kit/Palette.h"

#include <QPainter>

namespace orbitledge::ui {

Divider::Divider(QWidget *parent)
    : QWidget(parent)
{
    setFixedHeight(1);
}

void Divider::paintEvent(QPaintEvent * /*event*/)
{
    QPainter painter(this);
    painter.fillRect(rect(), colorOf(Tone::Stroke, colorSchemeOf(palette())));
}

} // namespace orbitledge::ui
