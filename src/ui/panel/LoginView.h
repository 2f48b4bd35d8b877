#pragma once

#include "state/AppStore.h"
#include "ui/panel/CenteredPanel.h"

namespace orbitledge::ui {

class LoginView : public CenteredPanel {
    Q_OBJECT

public:
    explicit LoginView(AppStore &store, QWidget *parent = nullptr);
};

} // namespace orbitledge::ui
