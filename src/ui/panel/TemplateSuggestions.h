#pragma once

#include "model/SubscriptionTemplate.h"
#include "ui/panel/Component.h"
#include "ui/panel/LogoImages.h"

namespace orbitledge::ui {

class SuggestionButton;
class WrappingLayout;

/// Entries of the catalogue to choose from. Where there are none, it is not there.
class TemplateSuggestions : public Component {
    Q_OBJECT

public:
    explicit TemplateSuggestions(LogoImages *logos, QWidget *parent = nullptr);

    void setSuggestions(const QList<SubscriptionTemplate> &suggestions);

Q_SIGNALS:
    void chosen(const orbitledge::SubscriptionTemplate &suggestion);

protected:
    void measure() final;

private:
    WrappingLayout *m_lines;
    /// All there can be, seen or not, so that the keyboard finds them in their place, and does not lose it to
    /// each new answer.
    QList<SuggestionButton *> m_buttons;
};

} // namespace orbitledge::ui
