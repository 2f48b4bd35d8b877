#pragma once

#include "ui/kit/RoundedFrame.h"

class QVBoxLayout;

namespace orbitledge::ui {

/// Rows of a form on a common ground, with lines between those that are shown.
class SettingsGroup : public RoundedFrame {
    Q_OBJECT

public:
    explicit SettingsGroup(QWidget *parent = nullptr);

    void addRow(QWidget *row);

protected:
    void paintEvent(QPaintEvent *event) override;
    void changeEvent(QEvent *event) override;

private:
    void measure();

    QVBoxLayout *m_rows;
};

} // namespace orbitledge::ui
