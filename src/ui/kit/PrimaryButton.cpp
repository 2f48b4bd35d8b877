#include "ui/kit/PrimaryButton.h"

#include "ui/kit/Drawing.h"
#include "ui/kit/Palette.h"
#include "ui/kit/ProgressIndicator.h"
#include "ui/kit/Typography.h"

#include <QFontMetricsF>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>

#include <algorithm>
#include <cmath>

namespace orbitledge::ui {

namespace {

constexpr qreal sideInset = 16;
constexpr qreal indicatorSide = 14;
constexpr qreal indicatorGap = 8;
constexpr qreal ringGap = 3;

// Dimmed further in the light, the label would lose its contrast.
qreal pressedOpacity(ColorScheme colorScheme)
{
    return isDark(colorScheme) ? 0.8 : 0.9;
}

} // namespace

PrimaryButton::PrimaryButton(const QString &text, QWidget *parent)
    : ButtonBase(parent)
    , m_idleText(text)
    , m_indicator(new ProgressIndicator(this))
{
    setText(text);
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
    m_indicator->setTone(Tone::OnCyan);
    m_indicator->hide();
}

void PrimaryButton::setBusy(const QString &busyText)
{
    m_isBusy = true;
    setDown(false);
    setText(busyText);
    placeIndicator();
    m_indicator->show();
    updateGeometry();
}

void PrimaryButton::setIdle()
{
    m_isBusy = false;
    setText(m_idleText);
    m_indicator->hide();
    updateGeometry();
}

QFont PrimaryButton::labelFont() const
{
    return fontOf(*this, 13, QFont::DemiBold);
}

// Busy, it is not narrower than before, so that it does not jump.
QSize PrimaryButton::sizeHint() const
{
    const QFontMetricsF metrics(labelFont());
    qreal width = metrics.horizontalAdvance(m_idleText);
    if (m_isBusy)
        width = std::max(
            width, metrics.horizontalAdvance(text()) + scaled(*this, indicatorSide + indicatorGap));
    return {static_cast<int>(std::ceil(width)) + 2 * scaled(*this, sideInset), scaled(*this, controlHeight)};
}

QRectF PrimaryButton::labelRect() const
{
    const QFontMetricsF metrics(labelFont());
    const qreal indicator = m_isBusy ? scaled(*this, indicatorSide + indicatorGap) : 0;
    const qreal width = std::min(metrics.horizontalAdvance(text()) + 1, this->width() - indicator);
    const QRectF both((this->width() - width - indicator) / 2, 0, width + indicator, height());
    return layoutDirection() == Qt::RightToLeft ? both.adjusted(0, 0, -indicator, 0)
                                                : both.adjusted(indicator, 0, 0, 0);
}

void PrimaryButton::placeIndicator()
{
    const int side = scaled(*this, indicatorSide);
    const int gap = scaled(*this, indicatorGap);
    const QRect label = labelRect().toRect();
    const int left = layoutDirection() == Qt::RightToLeft ? label.right() + gap : label.left() - gap - side;
    m_indicator->setGeometry(left, (height() - side) / 2, side, side);
}

void PrimaryButton::paintEvent(QPaintEvent * /*event*/)
{
    const ColorScheme colorScheme = colorSchemeOf(palette());
    const qreal radius = scaled(*this, controlRadius);
    const QRectF frame = rect();
    QPainter painter(this);
    QColor ground = colorOf(isEnabled() ? Tone::Cyan : Tone::Fill, colorScheme);
    if (isDown())
        ground.setAlphaF(static_cast<float>(pressedOpacity(colorScheme)));
    fillRounded(painter, frame, radius, ground);
    if (isHovered() && !isDown() && !m_isBusy)
        fillRounded(painter, frame, radius, colorOf(Tone::Emphasis, colorScheme));
    const QColor ink = colorOf(isEnabled() ? Tone::OnCyan : Tone::Grey, colorScheme);
    painter.setFont(labelFont());
    painter.setPen(ink);
    painter.drawText(labelRect(), Qt::AlignCenter | Qt::TextSingleLine, text());
    // On cyan, a ring of cyan would not be seen.
    if (showsFocusRing())
        paintFrame(painter, frame.adjusted(ringGap, ringGap, -ringGap, -ringGap), radius - ringGap, ink,
            focusRingWidth);
}

void PrimaryButton::resizeEvent(QResizeEvent *event)
{
    ButtonBase::resizeEvent(event);
    placeIndicator();
}

void PrimaryButton::changeEvent(QEvent *event)
{
    ButtonBase::changeEvent(event);
    m_indicator->setTone(isEnabled() ? Tone::OnCyan : Tone::Grey);
    placeIndicator();
}

void PrimaryButton::mousePressEvent(QMouseEvent *event)
{
    if (m_isBusy)
        event->accept();
    else
        ButtonBase::mousePressEvent(event);
}

void PrimaryButton::keyPressEvent(QKeyEvent *event)
{
    const bool leads
        = event->key() == Qt::Key_Tab || event->key() == Qt::Key_Backtab || event->key() == Qt::Key_Escape;
    if (m_isBusy && !leads)
        event->accept();
    else
        ButtonBase::keyPressEvent(event);
}

} // namespace orbitledge::ui
