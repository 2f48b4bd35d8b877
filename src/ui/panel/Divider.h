#pragma once

#include <QWidget>

namespace orbitledge::ui {

/// A line across.
class Divider : public QWidget {
    Q_OBJECT

public:
    explicit Divider(QWidget *parent = nullptr);

protected:
    void paintEvent(QPaintEvent *event) override;
};

} // namespace orbitledge::ui
