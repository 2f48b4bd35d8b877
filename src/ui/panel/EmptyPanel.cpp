#include "ui/panel/EmptyPanel.h"

#include "ui/kit/PrimaryButton.h"
#include "ui/kit/ThemedLabel.h"
#include "ui/panel/SymbolView.h"

namespace orbitledge::ui {

using namespace Qt::StringLiterals;

EmptyPanel::EmptyPanel(QWidget *parent)
    : CenteredPanel(parent)
{
    auto *const title = new ThemedLabel(u"No subscriptions yet"_s,
        {.designSize = 14,
            .weight = QFont::DemiBold,
            .tone = Tone::Ink,
            .overflow = ThemedLabel::Overflow::Wrap,
            .alignment = Qt::AlignHCenter | Qt::AlignVCenter});
    title->setHeading(true);
    auto *const text = new ThemedLabel(u"Add your first renewal to see what\u2019s charging next."_s,
        {.designSize = 12,
            .tone = Tone::Slate,
            .overflow = ThemedLabel::Overflow::Wrap,
            .alignment = Qt::AlignHCenter | Qt::AlignVCenter});
    auto *const button = new PrimaryButton(u"Add a subscription"_s);
    add(new SymbolView(Symbol::CalendarPlus, 32, Tone::Slate), 0);
    add(title, 10);
    add(text, 4, 230);
    add(button, 14);
    connect(button, &PrimaryButton::clicked, this, &EmptyPanel::addRequested);
}

} // namespace orbitledge::ui
