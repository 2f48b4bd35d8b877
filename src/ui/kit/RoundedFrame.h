#pragma once

#include <QWidget>

namespace orbitledge::ui {

/// A rounded ground with a line around it, for a layout of other components.
class RoundedFrame : public QWidget {
    Q_OBJECT

public:
    using QWidget::QWidget;

protected:
    void paintEvent(QPaintEvent *event) override;
    void changeEvent(QEvent *event) override;
};

} // namespace orbitledge::ui
