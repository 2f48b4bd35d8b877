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
    void measure() final;
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;

private:
    void chooseLabels();

    QHBoxLayout *m_row;
    FooterButton *m_add;
    FooterButton *m_calendar;
    FooterButton *m_settings;
};

} // namespace orbitledge::ui
