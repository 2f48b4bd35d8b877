#include "ui/panel/ScrollArea.h"

#include <QScrollArea>

namespace orbitledge::ui {

namespace {

/// Its content is at least as high as it has to be for the width that there is.
class UprightScrollArea : public QScrollArea {
public:
    explicit UprightScrollArea(QWidget *content)
    {
        setFrameShape(QFrame::NoFrame);
        setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
        setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
        setFocusPolicy(Qt::NoFocus);
        setWidgetResizable(true);
        setWidget(content);
        content->setAutoFillBackground(false);
        viewport()->setAutoFillBackground(false);
    }

    QSize minimumSizeHint() const override { return {0, 0}; }
};

} // namespace

QScrollArea *makeScrollArea(QWidget *content)
{
    return new UprightScrollArea(content);
}

} // namespace orbitledge::ui
