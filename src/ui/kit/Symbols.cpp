#include "ui/kit/Symbols.h"

#include "ui/kit/SymbolRecord.h"

#include <QColor>
#include <QFile>
#include <QIconEngine>
#include <QImage>
#include <QPainter>
#include <QPixmapCache>
#include <QTransform>

#include <algorithm>
#include <cmath>

namespace orbitledge::ui {

namespace {

using namespace Qt::StringLiterals;

bool pointsAlongText(Symbol symbol)
{
    return symbol == Symbol::TurnBack || symbol == Symbol::SignOut;
}

QImage tinted(QImage image, const QColor &color)
{
    QPainter painter(&image);
    painter.setCompositionMode(QPainter::CompositionMode_SourceIn);
    painter.fillRect(image.rect(), color);
    return image;
}

SymbolRecord recordOf(Symbol symbol)
{
    SymbolRecord record;
    QFile file(u":/symbols/%1.symbol"_s.arg(nameOf(symbol)));
    if (file.open(QFile::ReadOnly)) {
        QDataStream stream(&file);
        stream >> record;
    }
    return record;
}

/// The lines of a symbol, at a number of pixels.
QPixmap inPixels(Symbol symbol, int pixels, const QColor &color)
{
    const QString key = u"orbitledge/%1/%2/%3"_s.arg(nameOf(symbol)).arg(pixels).arg(color.rgba(), 0, 16);
    QPixmap pixmap;
    if (QPixmapCache::find(key, &pixmap))
        return pixmap;
    pixmap = QPixmap::fromImage(tinted(recordOf(symbol).drawn(pixels), color));
    QPixmapCache::insert(key, pixmap);
    return pixmap;
}

class SymbolIconEngine : public QIconEngine {
public:
    SymbolIconEngine(Symbol symbol, const QColor &color)
        : m_symbol(symbol)
        , m_color(color)
    {
    }

    void paint(QPainter *painter, const QRect &rect, QIcon::Mode mode, QIcon::State /*state*/) override
    {
        paintSymbol(*painter, m_symbol, rect, colorIn(mode));
    }

    QPixmap pixmap(const QSize &size, QIcon::Mode mode, QIcon::State /*state*/) override
    {
        const QSize asked = size.expandedTo(QSize(1, 1));
        QPixmap pixmap(asked);
        pixmap.fill(Qt::transparent);
        QPainter painter(&pixmap);
        paintSymbol(painter, m_symbol, QRectF(QPointF(0, 0), asked), colorIn(mode));
        return pixmap;
    }

    QIconEngine *clone() const override { return new SymbolIconEngine(m_symbol, m_color); }

private:
    QColor colorIn(QIcon::Mode mode) const
    {
        QColor color = m_color;
        if (mode == QIcon::Disabled)
            color.setAlphaF(color.alphaF() * 0.4F);
        return color;
    }

    Symbol m_symbol;
    QColor m_color;
};

} // namespace

QLatin1StringView nameOf(Symbol symbol)
{
    switch (symbol) {
    case Symbol::Mark:
        return "rectangle.3.group.bubble.left.fill"_L1;
    case Symbol::Refresh:
        return "arrow.triangle.2.circlepath"_L1;
    case Symbol::Offline:
        return "wifi.slash"_L1;
    case Symbol::Unreachable:
        return "wifi.exclamationmark"_L1;
    case Symbol::Warning:
        return "exclamationmark.triangle.fill"_L1;
    case Symbol::Calendar:
        return "calendar"_L1;
    case Symbol::CalendarPlus:
        return "calendar.badge.plus"_L1;
    case Symbol::Download:
        return "arrow.down.circle.fill"_L1;
    case Symbol::Close:
        return "xmark"_L1;
    case Symbol::CloseCircle:
        return "xmark.circle"_L1;
    case Symbol::Plus:
        return "plus"_L1;
    case Symbol::Gear:
        return "gearshape"_L1;
    case Symbol::OpenOutside:
        return "arrow.up.right.square"_L1;
    case Symbol::TurnBack:
        return "arrow.uturn.backward"_L1;
    case Symbol::Check:
        return "checkmark"_L1;
    case Symbol::CheckCircle:
        return "checkmark.circle"_L1;
    case Symbol::Bell:
        return "bell"_L1;
    case Symbol::BellSlash:
        return "bell.slash"_L1;
    case Symbol::Eye:
        return "eye"_L1;
    case Symbol::Person:
        return "person.crop.circle"_L1;
    case Symbol::Search:
        return "magnifyingglass"_L1;
    case Symbol::ChevronDown:
        return "chevron.down"_L1;
    case Symbol::ChevronUp:
        return "chevron.up"_L1;
    case Symbol::ChevronLeft:
        return "chevron.left"_L1;
    case Symbol::ChevronRight:
        return "chevron.right"_L1;
    case Symbol::SignOut:
        return "arrow.right.square"_L1;
    }
    Q_UNREACHABLE();
}

void paintSymbol(QPainter &painter, Symbol symbol, const QRectF &area, const QColor &color)
{
    const QTransform toDevice = painter.deviceTransform();
    const QRectF onDevice = toDevice.mapRect(area);
    const int pixels = std::max(1, qRound(std::min(onDevice.width(), onDevice.height())));
    QPixmap pixmap = inPixels(symbol, pixels, color);
    if (painter.layoutDirection() == Qt::RightToLeft && pointsAlongText(symbol))
        pixmap = pixmap.transformed(QTransform::fromScale(-1, 1));
    const QPointF corner = onDevice.center() - QPointF(pixels / 2.0, pixels / 2.0);
    painter.save();
    painter.resetTransform();
    // What is left is the device's ratio, which a painter on a widget or a pixmap brings along.
    const QTransform rest = painter.deviceTransform();
    pixmap.setDevicePixelRatio(1);
    painter.setWorldTransform(rest.inverted());
    painter.drawPixmap(QPointF(std::round(corner.x()), std::round(corner.y())), pixmap);
    painter.restore();
}

QPixmap symbolPixmap(Symbol symbol, int size, const QColor &color, qreal devicePixelRatio)
{
    QPixmap pixmap = inPixels(symbol, std::max(1, qRound(size * devicePixelRatio)), color);
    pixmap.setDevicePixelRatio(devicePixelRatio);
    return pixmap;
}

QIcon symbolIcon(Symbol symbol, const QColor &color)
{
    return QIcon(new SymbolIconEngine(symbol, color));
}

} // namespace orbitledge::ui
