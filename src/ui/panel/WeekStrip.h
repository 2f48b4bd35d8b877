#pragma once

#include "ui/panel/Component.h"
#include "ui/panel/WeekDayColumn.h"

namespace orbitledge::ui {

/// The days of this week side by side.
class WeekStrip : public Component {
    Q_OBJECT

public:
    explicit WeekStrip(QWidget *parent = nullptr);

    /// Seven days, and six in a week in which a zone left one out.
    void setContent(const QList<WeekDayContent> &days);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return {0, sizeHint().height()}; }

protected:
    void measure() override;
    void resizeEvent(QResizeEvent *event) override;

private:
    QList<WeekDayColumn *> m_columns;
};

} // namespace orbitledge::ui
