#include "ui/panel/SymbolView.h"

#include "ui/kit/Typography.h"

#include <QEvent>
#include <QPainter>

namespace orbitledge::ui {

SymbolView::SymbolView(Symbol symbol, qreal side, Tone tone, QWidget *parent)
    : QWidget(parent)
    , m_symbol(symbol)
    , m_side(side)
    , m_tone(tone)
{
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
}

void SymbolView::setSymbol(Symbol symbol, Tone tone)
{
    m_symbol = symbol;
    m_tone = tone;
    update();
}

QSize SymbolView::sizeHint() const
{
    return {scaled(*this, m_side), scaled(*this, m_side)};
}

void SymbolView::paintEvent(QPaintEvent * /*event*/)
{
    QPainter painter(this);
    paintSymbol(painter, m_symbol, rect(), colorOf(m_tone, colorSchemeOf(palette())));
}

void SymbolView::changeEvent(QEvent *event)
{
    QWidget::changeEvent(event);
    if (event->type() == QEvent::FontChange)
        updateGeometry();
    update();
}

} // namespace orbitledge::ui
