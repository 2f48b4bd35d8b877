#pragma once

#include "ui/kit/ButtonBase.h"
#include "ui/kit/Symbols.h"

namespace orbitledge::ui {

/// A symbol to press, where there is no room for words; it has them in its name and its tooltip.
class CompactIconButton : public ButtonBase {
    Q_OBJECT

public:
    CompactIconButton(
        Symbol symbol, const QString &accessibleName, const QString &toolTip, QWidget *parent = nullptr);

    void setSymbol(Symbol symbol);
    /// Leaves the symbol out, for as long as something else stands in its place.
    void setBlank(bool isBlank);

    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    Symbol m_symbol;
    bool m_isBlank = false;
};

} // namespace orbitledge::ui
