#pragma once

#include "ui/panel/Component.h"

class QHBoxLayout;

namespace orbitledge::ui {

class FooterButton;

/// What can be done from the timeline.
class PanelFooter : public Component {
    Q_OBJECT

public:
    explicit PanelFooter(QWidget *parent = nullptr);

    /// Gives the keyboard to the button that adds, as when its form was closed.
    void focusAdd();

Q_SIGNALS:
    void addRequested();
    void calendarRequested();
    void settingsRequested();

protected:
    void measure() override;
    void paintEvent(QPaintEvent *event) override;

private:
    QHBoxLayout *m_row;
    FooterButton *m_add;
};

} // namespace orbitledge::ui
