#include "ui/panel/ScrollArea.h"

#include "ui/kit/Typography.h"

#include <QEvent>
#include <QLayout>
#include <QScrollArea>
#include <QTimer>

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
        content->installEventFilter(this);
        viewport()->setAutoFillBackground(false);
    }

    QSize minimumSizeHint() const override { return {0, 0}; }

protected:
    void resizeEvent(QResizeEvent *event) override
    {
        keepHigh();
        QScrollArea::resizeEvent(event);
    }

    bool eventFilter(QObject *watched, QEvent *event) override
    {
        if (event->type() == QEvent::LayoutRequest)
            keepHigh();
        return QScrollArea::eventFilter(watched, event);
    }

private:
    // The toolkit's own does not ask for a height that depends on the width.
    void keepHigh()
    {
        const QLayout *const layout = widget()->layout();
        if (layout != nullptr && layout->hasHeightForWidth())
            widget()->setMinimumHeight(layout->minimumHeightForWidth(viewport()->width()));
    }
};

} // namespace

QScrollArea *makeScrollArea(QWidget *content)
{
    return new UprightScrollArea(content);
}

void reveal(QWidget *widget)
{
    QTimer::singleShot(0, widget, [widget] {
        constexpr qreal around = 12;
        for (QWidget *outer = widget->parentWidget(); outer != nullptr; outer = outer->parentWidget()) {
            if (auto *const area = qobject_cast<QScrollArea *>(outer))
                area->ensureWidgetVisible(widget, 0, scaled(*widget, around));
        }
    });
}

} // namespace orbitledge::ui
