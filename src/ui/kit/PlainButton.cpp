#include "ui/kit/PlainButton.h"

#include "ui/kit/Drawing.h"
#include "ui/kit/Typography.h"

#include <QFontMetricsF>
#include <QPainter>

#include <algorithm>
#include <cmath>

namespace orbitledge::ui {

namespace {

/// Around the text, so that there is something to hit and room for the ring.
constexpr qreal sideInset = 6;
constexpr qreal verticalInset = 4;
constexpr qreal radius = 6;
constexpr qreal disabledOpacity = 0.4;

/// A tone that can be read as well: cyan with less opacity could not.
Tone pressedTone(Tone tone)
{
    return tone == Tone::Cyan ? Tone::Ink : Tone::Slate;
}

} // namespace

PlainButton::PlainButton(const QString &text, QWidget *parent)
    : PlainButton(text, Look(), parent)
{
}

PlainButton::PlainButton(const QString &text, Look look, QWidget *parent)
    : ButtonBase(parent)
    , m_look(look)
{
    setText(text);
    if (!look.wraps)
        return;
    QSizePolicy policy(QSizePolicy::Preferred, QSizePolicy::Minimum);
    policy.setHeightForWidth(true);
    setSizePolicy(policy);
}

QFont PlainButton::labelFont() const
{
    QFont font = fontOf(*this, m_look.designSize, m_look.weight);
    font.setUnderline(isHovered());
    return font;
}

QSize PlainButton::sizeHint() const
{
    const QFontMetricsF metrics(fontOf(*this, m_look.designSize, m_look.weight));
    return {static_cast<int>(std::ceil(metrics.horizontalAdvance(text()))) + 2 * scaled(*this, sideInset),
        static_cast<int>(std::ceil(metrics.height())) + 2 * scaled(*this, verticalInset)};
}

QSize PlainButton::wrappedSize(int width) const
{
    constexpr int unlimited = 10'000;
    const QSize insets(2 * scaled(*this, sideInset), 2 * scaled(*this, verticalInset));
    const QRectF bounds
        = QFontMetricsF(fontOf(*this, m_look.designSize, m_look.weight))
              .boundingRect(QRectF(0, 0, width - insets.width(), unlimited), Qt::TextWordWrap, text());
    return QSize(static_cast<int>(std::ceil(bounds.width())), static_cast<int>(std::ceil(bounds.height())))
        + insets;
}

// As wide as its longest word.
QSize PlainButton::minimumSizeHint() const
{
    return m_look.wraps ? QSize(wrappedSize(1).width(), sizeHint().height()) : sizeHint();
}

int PlainButton::heightForWidth(int width) const
{
    return m_look.wraps ? wrappedSize(std::min(width, maximumWidth())).height() : -1;
}

void PlainButton::paintEvent(QPaintEvent * /*event*/)
{
    QPainter painter(this);
    painter.setOpacity(isEnabled() ? 1 : disabledOpacity);
    painter.setFont(labelFont());
    painter.setPen(colorOf(isDown() ? pressedTone(m_look.tone) : m_look.tone, colorSchemeOf(palette())));
    const int inset = scaled(*this, sideInset);
    painter.drawText(rect().adjusted(m_look.wraps ? inset : 0, 0, m_look.wraps ? -inset : 0, 0),
        Qt::AlignCenter | (m_look.wraps ? Qt::TextWordWrap : Qt::TextSingleLine), text());
    painter.setOpacity(1);
    paintFocusRing(painter, scaled(*this, radius));
}

} // namespace orbitledge::ui
