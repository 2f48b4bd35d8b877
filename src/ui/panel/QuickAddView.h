#pragma once

#include "state/AppStore.h"
#include "ui/panel/CenteredPanel.h"
#include "ui/panel/LogoImages.h"

namespace orbitledge::ui {

class QuickAddView : public CenteredPanel {
    Q_OBJECT

public:
    QuickAddView(AppStore &store, LogoImages *logos, QWidget *parent = nullptr);
};

} // namespace orbitledge::ui
