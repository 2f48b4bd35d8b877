#include "ui/panel/QuickAddView.h"

namespace orbitledge::ui {

QuickAddView::QuickAddView(AppStore & /*store*/, LogoImages * /*logos*/, QWidget *parent)
    : CenteredPanel(parent)
{
}

} // namespace orbitledge::ui
