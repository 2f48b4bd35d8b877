#pragma once

#include "model/SubscriptionTemplate.h"
#include "ui/kit/ButtonBase.h"
#include "ui/panel/LogoImages.h"

namespace orbitledge::ui {

class TemplateLogo;

/// An entry of the catalogue to start from.
class SuggestionButton : public ButtonBase {
    Q_OBJECT

public:
    explicit SuggestionButton(LogoImages *logos, QWidget *parent = nullptr);

    const SubscriptionTemplate &suggestion() const { return m_suggestion; }
    void setSuggestion(const SubscriptionTemplate &suggestion);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void changeEvent(QEvent *event) override;

private:
    QFont labelFont() const;
    /// Of the label, from the left where text runs to the right.
    int labelStart() const;
    void placeLogo();

    SubscriptionTemplate m_suggestion;
    TemplateLogo *m_logo;
};

} // namespace orbitledge::ui
