#include "ui/panel/LogoTile.h"

#include "ui/kit/Drawing.h"
#include "ui/kit/Palette.h"
#include "ui/kit/Typography.h"

#include <QEvent>
#include <QPainter>
#include <QPainterPath>

namespace orbitledge::ui {

LogoTile::LogoTile(const Measures &measures, LogoImages *images, QWidget *parent)
    : QWidget(parent)
    , m_measures(measures)
    , m_images(images)
{
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    setAttribute(Qt::WA_TransparentForMouseEvents);
    if (images != nullptr) {
        connect(images, &LogoImages::arrived, this, [this](const QUrl &url) {
            if (m_content.image == url)
                update();
        });
    }
}

void LogoTile::setContent(const LogoContent &content)
{
    m_content = content;
    update();
}

QSize LogoTile::sizeHint() const
{
    return {scaled(*this, m_measures.side), scaled(*this, m_measures.side)};
}

void LogoTile::paintEvent(QPaintEvent * /*event*/)
{
    QPainter painter(this);
    const QImage image = m_images && m_content.image ? m_images->image(*m_content.image) : QImage();
    if (image.isNull())
        paintInitials(painter);
    else
        paintImage(painter, image);
}

/// Painting would look at four pixels of it for each, and lose what lies between them.
const QImage &LogoTile::scaledTo(QSize pixels, const QImage &image)
{
    if (m_scaledKey != image.cacheKey() || m_scaled.size() != pixels) {
        m_scaled = image.scaled(pixels, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
        m_scaledKey = image.cacheKey();
    }
    return m_scaled;
}

void LogoTile::paintImage(QPainter &painter, const QImage &image)
{
    const qreal radius = scaled(*this, m_measures.radius);
    const qreal inset = scaled(*this, m_measures.imageInset);
    const QRectF room = QRectF(rect()).adjusted(inset, inset, -inset, -inset);
    QPainterPath corners;
    corners.addRoundedRect(room, radius - inset, radius - inset);
    painter.setRenderHints(QPainter::Antialiasing | QPainter::SmoothPixmapTransform);
    painter.save();
    painter.setClipPath(corners);
    QRectF place(QPointF(), QSizeF(image.size()).scaled(room.size(), Qt::KeepAspectRatio));
    place.moveCenter(room.center());
    const QSizeF pixels = place.size() * painter.device()->devicePixelRatioF();
    painter.drawImage(place, scaledTo(pixels.toSize().expandedTo(QSize(1, 1)), image));
    painter.restore();
    paintFrame(painter, rect(), radius, colorOf(Tone::Stroke, colorSchemeOf(palette())), 1);
}

void LogoTile::paintInitials(QPainter &painter) const
{
    const ColorScheme colorScheme = colorSchemeOf(palette());
    const QColor tint
        = colorOfText(QString(isDark(colorScheme) ? m_content.tint.dark : m_content.tint.light), colorScheme);
    const qreal radius = scaled(*this, m_measures.radius);
    QColor ground = tint;
    ground.setAlphaF(static_cast<float>(m_measures.groundOpacity));
    fillRounded(painter, rect(), radius, ground);
    paintFrame(
        painter, rect(), radius, m_measures.hasTintedLine ? tint : colorOf(Tone::Stroke, colorScheme), 1);
    painter.setPen(tint);
    painter.setFont(fontOf(*this, m_measures.initialsSize, QFont::Bold));
    painter.drawText(rect(), Qt::AlignCenter, m_content.initials);
}

void LogoTile::changeEvent(QEvent *event)
{
    QWidget::changeEvent(event);
    if (event->type() == QEvent::FontChange)
        updateGeometry();
    update();
}

} // namespace orbitledge::ui
