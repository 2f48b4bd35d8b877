#include "ui/panel/ScreenStack.h"

#include "ui/kit/Typography.h"

#include <QPainter>
#include <QStyle>

namespace orbitledge::ui {

namespace {

constexpr int motionDuration = 180; // milliseconds
/// From the panel's edge, in the design's pixels.
constexpr qreal way = 32;
constexpr auto entranceProperty = "entrance";

bool isMoving(const QWidget *screen)
{
    return screen != nullptr
        && screen->property(entranceProperty).toInt() == static_cast<int>(ScreenStack::Entrance::MoveAndFade);
}

} // namespace

/// What was there before, on its way out.
class ScreenStack::Veil : public QWidget {
public:
    explicit Veil(QWidget *parent)
        : QWidget(parent)
    {
        setAttribute(Qt::WA_TransparentForMouseEvents);
        hide();
    }

    void set(const QPixmap &picture, qreal opacity, int offset)
    {
        m_picture = picture;
        m_opacity = opacity;
        m_offset = offset;
        update();
    }
    [[nodiscard]] const QPixmap &picture() const { return m_picture; }

protected:
    void paintEvent(QPaintEvent * /*event*/) override
    {
        QPainter painter(this);
        painter.setOpacity(m_opacity);
        painter.drawPixmap(0, m_offset, m_picture);
    }

private:
    QPixmap m_picture;
    qreal m_opacity = 0;
    int m_offset = 0;
};

ScreenStack::ScreenStack(QWidget *parent)
    : QWidget(parent)
    , m_veil(new Veil(this))
{
    m_motion.setStartValue(0.0);
    m_motion.setEndValue(1.0);
    m_motion.setDuration(motionDuration);
    m_motion.setEasingCurve(QEasingCurve::OutQuad);
    connect(&m_motion, &QVariantAnimation::valueChanged, this,
        [this](const QVariant &value) { setProgress(value.toReal()); });
    connect(&m_motion, &QVariantAnimation::finished, this, &ScreenStack::finish);
}

void ScreenStack::add(QWidget *screen, Entrance entrance)
{
    screen->setParent(this);
    screen->setProperty(entranceProperty, static_cast<int>(entrance));
    screen->setGeometry(rect());
    screen->setVisible(!m_current);
    if (!m_current)
        m_current = screen;
    m_veil->raise();
}

void ScreenStack::show(QWidget *screen, Change change)
{
    if (screen == m_current)
        return;
    m_motion.stop();
    finish();
    const bool moves = change == Change::Animated && isVisible()
        && style()->styleHint(QStyle::SH_Widget_Animation_Duration, nullptr, this) > 0 && m_current;
    QWidget *const old = m_current;
    QPixmap picture;
    if (moves) {
        picture = QPixmap(size() * devicePixelRatioF());
        picture.setDevicePixelRatio(devicePixelRatioF());
        picture.fill(palette().color(QPalette::Window));
        old->render(&picture, QPoint(), QRegion(), QWidget::DrawChildren);
    }
    m_current = screen;
    screen->setGeometry(rect());
    screen->setVisible(true);
    if (old != nullptr)
        old->setVisible(false);
    if (!moves)
        return;
    m_moving = isMoving(screen) ? Moving::New : isMoving(old) ? Moving::Old : Moving::None;
    m_veil->setGeometry(rect());
    m_veil->set(picture, 1, 0);
    m_veil->raise();
    m_veil->show();
    m_motion.start();
}

void ScreenStack::setProgress(qreal progress)
{
    const int distance = scaled(*this, way);
    if (m_moving == Moving::New && m_current)
        m_current->move(0, qRound((1 - progress) * distance));
    m_veil->set(m_veil->picture(), 1 - progress, m_moving == Moving::Old ? qRound(progress * distance) : 0);
}

void ScreenStack::finish()
{
    m_veil->hide();
    m_veil->set(QPixmap(), 0, 0);
    m_moving = Moving::None;
    if (m_current)
        m_current->setGeometry(rect());
}

void ScreenStack::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    m_motion.stop();
    finish();
}

void ScreenStack::hideEvent(QHideEvent *event)
{
    QWidget::hideEvent(event);
    m_motion.stop();
    finish();
}

} // namespace orbitledge::ui
