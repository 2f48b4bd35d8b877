#include "ui/panel/ScrollArea.h"

#include "ui/kit/Typography.h"

#include <QApplication>
#include <QEvent>
#include <QLayout>
#include <QScrollArea>
#include <QTimer>

namespace orbitledge::ui {

namespace {

/// Is seen of what there is above and below, where something is scrolled to.
constexpr qreal around = 12;

/// To all of it; the toolkit's own means the place in it where something is typed.
void scrollTo(QScrollArea &area, const QWidget &widget)
{
    const QRect place(widget.mapTo(area.widget(), QPoint()), widget.size());
    area.ensureVisible(place.center().x(), place.center().y(), 0, place.height() / 2 + scaled(area, around));
}

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
        connect(qApp, &QApplication::focusChanged, &m_following,
            [this](const QWidget *before, const QWidget *now) { follow(before, now); });
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
    /// The toolkit's own follows the Tab key alone, and only from one thing within it to another. What is
    /// clicked on does not move away, and who comes back to the window sees what they saw.
    void follow(const QWidget *before, const QWidget *now)
    {
        const bool isWithin = now != nullptr && now != widget() && widget()->isAncestorOf(now);
        const bool isSameWindow = isWithin && before != nullptr && before->window() == window();
        if (isSameWindow && QGuiApplication::mouseButtons() == Qt::NoButton)
            scrollTo(*this, *now);
    }

    // The toolkit's own does not ask for a height that depends on the width.
    void keepHigh()
    {
        const QLayout *const layout = widget()->layout();
        if (layout != nullptr && layout->hasHeightForWidth())
            widget()->setMinimumHeight(layout->minimumHeightForWidth(viewport()->width()));
    }

    /// Ends before the content goes, whose going moves the focus as well.
    QObject m_following;
};

} // namespace

QScrollArea *makeScrollArea(QWidget *content)
{
    return new UprightScrollArea(content);
}

void reveal(QWidget *widget)
{
    QTimer::singleShot(0, widget, [widget] {
        for (QWidget *outer = widget->parentWidget(); outer != nullptr; outer = outer->parentWidget()) {
            if (auto *const area = qobject_cast<QScrollArea *>(outer))
                scrollTo(*area, *widget);
        }
    });
}

} // namespace orbitledge::ui
