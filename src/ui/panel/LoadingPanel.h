#pragma once

#include <QWidget>

namespace orbitledge::ui {

/// The shape of rows that are still to come.
class LoadingPanel : public QWidget {
    Q_OBJECT

public:
    explicit LoadingPanel(QWidget *parent = nullptr);

protected:
    void paintEvent(QPaintEvent *event) override;
};

} // namespace orbitledge::ui
