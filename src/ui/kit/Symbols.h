#pragma once

#include <QIcon>
#include <QLatin1StringView>
#include <QPixmap>
#include <QRectF>

#include <array>

class QColor;
class QPainter;

namespace orbitledge::ui {

/// Line drawings on a grid of 24, with one weight of line. Their files are in data/symbols.
enum class Symbol {
    Mark,
    Refresh,
    Offline,
    Unreachable,
    Warning,
    Calendar,
    CalendarPlus,
    Download,
    Close,
    CloseCircle,
    Plus,
    Gear,
    OpenOutside,
    TurnBack,
    Check,
    CheckCircle,
    Bell,
    BellSlash,
    Eye,
    Person,
    Search,
    ChevronDown,
    ChevronUp,
    ChevronLeft,
    ChevronRight,
    SignOut,
};

inline constexpr std::array<Symbol, 26> allSymbols{Symbol::Mark, Symbol::Refresh, Symbol::Offline,
    Symbol::Unreachable, Symbol::Warning, Symbol::Calendar, Symbol::CalendarPlus, Symbol::Download,
    Symbol::Close, Symbol::CloseCircle, Symbol::Plus, Symbol::Gear, Symbol::OpenOutside, Symbol::TurnBack,
    Symbol::Check, Symbol::CheckCircle, Symbol::Bell, Symbol::BellSlash, Symbol::Eye, Symbol::Person,
    Symbol::Search, Symbol::ChevronDown, Symbol::ChevronUp, Symbol::ChevronLeft, Symbol::ChevronRight,
    Symbol::SignOut};

/// What a symbol's file is called, without its folder and extension.
QLatin1StringView nameOf(Symbol symbol);

/// Draws a symbol into the largest square in the middle of `area`, on whole pixels of the device, and moved
/// by less than one so that its straight lines fall on pixels. Those that point along the text are turned
/// round where the painter's text runs from right to left.
void paintSymbol(QPainter &painter, Symbol symbol, const QRectF &area, const QColor &color);

/// A square picture of `size` device-independent pixels. Pictures are kept, by size, ratio and colour.
QPixmap symbolPixmap(Symbol symbol, int size, const QColor &color, qreal devicePixelRatio);

/// Draws itself anew at each size and ratio; grey where it is disabled.
QIcon symbolIcon(Symbol symbol, const QColor &color);

} // namespace orbitledge::ui
