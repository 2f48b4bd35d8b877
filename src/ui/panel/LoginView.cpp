#include "ui/panel/LoginView.h"

namespace orbitledge::ui {

LoginView::LoginView(AppStore & /*store*/, QWidget *parent)
    : CenteredPanel(parent)
{
}

} // namespace orbitledge::ui
