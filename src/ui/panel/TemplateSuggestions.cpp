#include "ui/panel/TemplateSuggestions.h"

#include "presentation/QuickAddDraft.h"
#include "ui/kit/Typography.h"
#include "ui/panel/SuggestionButton.h"
#include "ui/panel/WrappingLayout.h"

namespace orbitledge::ui {

TemplateSuggestions::TemplateSuggestions(LogoImages *logos, QWidget *parent)
    : Component(parent)
    , m_lines(new WrappingLayout(this))
{
    QSizePolicy policy(QSizePolicy::Preferred, QSizePolicy::Minimum);
    policy.setHeightForWidth(true);
    setSizePolicy(policy);
    for (qsizetype i = 0; i < mostSuggestions; ++i) {
        auto *const button = new SuggestionButton(logos, this);
        m_lines->addWidget(button);
        m_buttons.append(button);
        connect(button, &SuggestionButton::clicked, this, [this, button] {
            const SubscriptionTemplate suggestion = button->suggestion();
            Q_EMIT chosen(suggestion);
        });
    }
    hide();
    measure();
}

void TemplateSuggestions::setSuggestions(const QList<SubscriptionTemplate> &suggestions)
{
    for (qsizetype i = 0; i < m_buttons.size(); ++i) {
        if (i < suggestions.size())
            m_buttons[i]->setSuggestion(suggestions[i]);
        m_buttons[i]->setVisible(i < suggestions.size());
    }
    setVisible(!suggestions.isEmpty());
}

void TemplateSuggestions::measure()
{
    m_lines->setContentsMargins(0, scaled(*this, 6), 0, 0);
    m_lines->setSpacing(scaled(*this, 6));
}

} // namespace orbitledge::ui
