#pragma once

#include "ui/panel/CenteredPanel.h"

namespace orbitledge::ui {

/// It is being found out whether somebody is signed in.
class SessionCheckPanel : public CenteredPanel {
    Q_OBJECT

public:
    explicit SessionCheckPanel(QWidget *parent = nullptr);
};

} // namespace orbitledge::ui
