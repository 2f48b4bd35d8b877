#pragma once

#include "presentation/WeekContent.h"

#include <QWidget>

namespace orbitledge::ui {

/// A day of the week strip: weekday, day of the month, and dots for renewals.
class WeekDayColumn : public QWidget {
    Q_OBJECT

public:
    explicit WeekDayColumn(QWidget *parent = nullptr);

    void setContent(const WeekDayContent &content);

protected:
    void paintEvent(QPaintEvent *event) override;
    void changeEvent(QEvent *event) override;

private:
    void paintDots(QPainter &painter) const;

    WeekDayContent m_content;
};

} // namespace orbitledge::ui
