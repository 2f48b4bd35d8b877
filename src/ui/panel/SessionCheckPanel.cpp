#include "ui/panel/SessionCheckPanel.h"

#include "ui/kit/ProgressIndicator.h"
#include "ui/kit/ThemedLabel.h"

namespace orbitledge::ui {

using namespace Qt::StringLiterals;

SessionCheckPanel::SessionCheckPanel(QWidget *parent)
    : CenteredPanel(parent)
{
    auto *const text = new ThemedLabel(u"Checking session\u2026"_s, {.designSize = 12, .tone = Tone::Slate});
    text->setAccessibleName(u"Checking your saved Orbitledge session"_s);
    add(new ProgressIndicator, 0);
    add(text, 10);
}

} // namespace orbitledge::ui
