#include "ui/panel/Component.h"

#include <QEvent>

namespace orbitledge::ui {

void Component::changeEvent(QEvent *event)
{
    QWidget::changeEvent(event);
    if (event->type() == QEvent::FontChange) {
        measure();
        updateGeometry();
    }
    update();
}

} // namespace orbitledge::ui
