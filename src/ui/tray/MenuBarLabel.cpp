#include "ui/tray/MenuBarLabel.h"

#include "ui/kit/Drawing.h"
#include "ui/kit/Symbols.h"

#include <QFontMetricsF>
#include <QGuiApplication>
#include <QIconEngine>
#include <QPainter>

#include <algorithm>
#include <cmath>
#include <utility>

namespace orbitledge::ui {

namespace {

/// Enough to be seen on a bar of the mark's colour, and too little to fill the mark's openings.
constexpr qreal haloOpacity = 0.8;

QPixmap transparentSquare(int side)
{
    QPixmap pixmap(side, side);
    pixmap.fill(Qt::transparent);
    return pixmap;
}

/// The mark, a little wider on all sides.
QPixmap haloOf(const QRectF &area, const QColor &color)
{
    const int side = qRound(area.width());
    const int reach = std::max(1, side / 24);
    QPixmap halo = transparentSquare(side);
    QPainter painter(&halo);
    for (const int y : {-reach, 0, reach}) {
        for (const int x : {-reach, 0, reach})
            paintSymbol(painter, Symbol::Mark, area.translated(x, y), color);
    }
    return halo;
}

void paintMark(QPainter &painter, int side, ColorScheme colorScheme)
{
    const QRectF area(0, 0, side, side);
    const ColorScheme opposite = isDark(colorScheme) ? ColorScheme::Light : ColorScheme::Dark;
    painter.setOpacity(haloOpacity);
    painter.drawPixmap(0, 0, haloOf(area, colorOf(Tone::BlackAndWhite, opposite)));
    painter.setOpacity(1);
    paintSymbol(painter, Symbol::Mark, area, colorOf(Tone::BlackAndWhite, colorScheme));
}

/// Longer texts are smaller, so that enough of the mark is left.
QFont badgeFont(int height, qsizetype length)
{
    QFont font = QGuiApplication::font();
    font.setBold(true);
    font.setPixelSize(std::max(7, qRound(height * (length > 1 ? 0.7 : 0.82))));
    // Colours at the edges of letters suit one order of the screen's pixels only; this goes to other
    // programs.
    font.setStyleStrategy(QFont::NoSubpixelAntialias);
    return font;
}

/// On whole pixels, so that its straight sides are sharp.
void paintBadge(QPainter &painter, int side, const QString &text)
{
    const int height = qRound(side * 0.6);
    const QFont font = badgeFont(height, text.size());
    const QFontMetricsF metrics(font);
    const QRectF ink = metrics.tightBoundingRect(text);
    const int wished = static_cast<int>(std::ceil(ink.width() + height * 0.4));
    const int width = std::clamp(wished, height, side);
    const QRectF capsule(side - width, 0, width, height);

    painter.setRenderHint(QPainter::Antialiasing);
    // A slit that keeps the badge apart from the mark.
    const qreal slit = std::max(1.0, side / 24.0);
    painter.setCompositionMode(QPainter::CompositionMode_DestinationOut);
    fillRounded(painter, capsule.adjusted(-slit, -slit, slit, slit), height / 2.0 + slit, Qt::black);
    painter.setCompositionMode(QPainter::CompositionMode_SourceOver);
    fillRounded(painter, capsule, height / 2.0, QColor::fromRgb(badgeRed));

    painter.setFont(font);
    painter.setPen(Qt::white);
    const QPointF start = capsule.center() - ink.center();
    painter.drawText(QPointF(start.x(), std::round(start.y())), text);
}

class LabelIconEngine : public QIconEngine {
public:
    explicit LabelIconEngine(MenuBarLabel label)
        : m_label(std::move(label))
    {
    }

    void paint(QPainter *painter, const QRect &rect, QIcon::Mode /*mode*/, QIcon::State /*state*/) override
    {
        const qreal ratio = painter->device()->devicePixelRatioF();
        const int side = std::min(rect.width(), rect.height());
        QPixmap pixmap = m_label.pixmap(qRound(side * ratio));
        pixmap.setDevicePixelRatio(ratio);
        painter->drawPixmap(
            rect.x() + (rect.width() - side) / 2, rect.y() + (rect.height() - side) / 2, pixmap);
    }

    QPixmap pixmap(const QSize &size, QIcon::Mode /*mode*/, QIcon::State /*state*/) override
    {
        return m_label.pixmap(std::min(size.width(), size.height()));
    }

    QList<QSize> availableSizes(QIcon::Mode /*mode*/, QIcon::State /*state*/) override
    {
        QList<QSize> all;
        for (const int side : MenuBarLabel::sizes)
            all.append(QSize(side, side));
        return all;
    }

    [[nodiscard]] QIconEngine *clone() const override { return new LabelIconEngine(m_label); }

private:
    MenuBarLabel m_label;
};

} // namespace

MenuBarLabel::MenuBarLabel(QString badge, ColorScheme colorScheme)
    : m_badge(std::move(badge))
    , m_colorScheme(colorScheme)
{
}

QPixmap MenuBarLabel::pixmap(int side) const
{
    QPixmap pixmap = transparentSquare(std::max(side, 1));
    QPainter painter(&pixmap);
    paintMark(painter, pixmap.width(), m_colorScheme);
    if (!m_badge.isEmpty())
        paintBadge(painter, pixmap.width(), m_badge);
    return pixmap;
}

QIcon MenuBarLabel::icon() const
{
    return QIcon(new LabelIconEngine(*this));
}

} // namespace orbitledge::ui
