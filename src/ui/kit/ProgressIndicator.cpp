#include "ui/kit/ProgressIndicator.h"

#include "ui/kit/Typography.h"

#include <QEvent>
#include <QPainter>
#include <QPen>
#include <QStyle>
#include <QTimerEvent>

#include <algorithm>

namespace orbitledge::ui {

namespace {

constexpr qreal designSide = 16;
constexpr int frameInterval = 33;
constexpr int turnDuration = 900;
// The painter counts in sixteenths of a degree, against the clock, from three o'clock.
constexpr int fullTurn = 360 * 16;
constexpr int top = 90 * 16;
constexpr int arcLength = 100 * 16;

} // namespace

ProgressIndicator::ProgressIndicator(QWidget *parent)
    : QWidget(parent)
{
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    setAttribute(Qt::WA_TransparentForMouseEvents);
}

void ProgressIndicator::setTone(Tone tone)
{
    m_tone = tone;
    update();
}

QSize ProgressIndicator::sizeHint() const
{
    const int side = scaled(*this, designSide);
    return {side, side};
}

void ProgressIndicator::turnOrRest()
{
    const bool turns
        = isVisible() && style()->styleHint(QStyle::SH_Widget_Animation_Duration, nullptr, this) > 0;
    if (turns && !m_timer.isActive()) {
        m_sinceStart.start();
        m_timer.start(frameInterval, this);
    } else if (!turns) {
        m_timer.stop();
        m_sinceStart.invalidate();
    }
    update();
}

void ProgressIndicator::paintEvent(QPaintEvent * /*event*/)
{
    const qreal side = std::min(width(), height());
    const qreal weight = side / 8;
    QRectF circle(0, 0, side - weight - 1, side - weight - 1);
    circle.moveCenter(QRectF(rect()).center());
    const QColor color = colorOf(m_tone, colorSchemeOf(palette()));
    QColor track = color;
    track.setAlphaF(color.alphaF() * 0.25F);
    const qint64 elapsed = m_sinceStart.isValid() ? m_sinceStart.elapsed() % turnDuration : 0;
    const int angle = top - static_cast<int>(elapsed * fullTurn / turnDuration);
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(track, weight));
    painter.drawEllipse(circle);
    painter.setPen(QPen(color, weight, Qt::SolidLine, Qt::RoundCap));
    painter.drawArc(circle, angle, -arcLength);
}

void ProgressIndicator::timerEvent(QTimerEvent *event)
{
    if (event->timerId() == m_timer.timerId())
        update();
    else
        QWidget::timerEvent(event);
}

void ProgressIndicator::showEvent(QShowEvent *event)
{
    QWidget::showEvent(event);
    turnOrRest();
}

void ProgressIndicator::hideEvent(QHideEvent *event)
{
    QWidget::hideEvent(event);
    turnOrRest();
}

void ProgressIndicator::changeEvent(QEvent *event)
{
    QWidget::changeEvent(event);
    if (event->type() == QEvent::StyleChange)
        turnOrRest();
    if (event->type() == QEvent::FontChange)
        updateGeometry();
    update();
}

} // namespace orbitledge::ui
