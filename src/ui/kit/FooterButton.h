#pragma once

#include "ui/kit/ButtonBase.h"
#include "ui/kit/Symbols.h"

#include <optional>

namespace orbitledge::ui {

/// A quiet button of a footer: a symbol, a label, or both. One without a label needs an accessible name.
class FooterButton : public ButtonBase {
    Q_OBJECT

public:
    explicit FooterButton(const QString &text, QWidget *parent = nullptr);
    FooterButton(Symbol symbol, const QString &text, QWidget *parent = nullptr);

    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    QFont labelFont() const;
    int symbolSide() const;
    int gap() const;

    std::optional<Symbol> m_symbol;
};

} // namespace orbitledge::ui
