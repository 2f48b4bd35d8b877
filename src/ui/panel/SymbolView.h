#pragma once

#include "ui/kit/Palette.h"
#include "ui/kit/Symbols.h"

#include <QWidget>

namespace orbitledge::ui {

/// A symbol to look at. Nothing for assistive technology, as words stand beside it.
class SymbolView : public QWidget {
    Q_OBJECT

public:
    /// `side` in the design's pixels.
    SymbolView(Symbol symbol, qreal side, Tone tone, QWidget *parent = nullptr);

    void setSymbol(Symbol symbol, Tone tone);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

protected:
    void paintEvent(QPaintEvent *event) override;
    void changeEvent(QEvent *event) override;

private:
    Symbol m_symbol;
    qreal m_side;
    Tone m_tone;
};

} // namespace orbitledge::ui
