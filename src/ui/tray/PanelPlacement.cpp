#include "ui/tray/PanelPlacement.h"

#include <algorithm>
#include <array>

namespace orbitledge::ui {

namespace {

// A rectangle's right() and bottom() lie within it; places are computed with what lies beyond.
int rightOf(const QRect &rect)
{
    return rect.x() + rect.width();
}

int bottomOf(const QRect &rect)
{
    return rect.y() + rect.height();
}

/// Squared; 0 within.
qint64 distanceTo(const QRect &rect, QPoint point)
{
    const auto beyond = [](int value, int low, int high) {
        return static_cast<qint64>(std::max({low - value, value - high, 0}));
    };
    const qint64 x = beyond(point.x(), rect.left(), rect.right());
    const qint64 y = beyond(point.y(), rect.top(), rect.bottom());
    return x * x + y * y;
}

/// At other scales than 1 there may be room between screens that belongs to none.
const ScreenArea &screenAt(const QList<ScreenArea> &screens, QPoint point)
{
    return *std::ranges::min_element(
        screens, {}, [point](const ScreenArea &screen) { return distanceTo(screen.geometry, point); });
}

enum class Edge { Top, Bottom, Left, Right };

/// The edge whose bar the point is in. A bar that keeps no room for itself is known by the edge that is
/// nearest.
Edge edgeAt(const ScreenArea &screen, QPoint point)
{
    struct Candidate {
        Edge edge;
        /// How far the point is beyond what is available.
        int beyond;
        int distance;
    };
    const QRect &inner = screen.available;
    const QRect &outer = screen.geometry;
    const std::array candidates{
        Candidate{Edge::Top, inner.top() - point.y(), point.y() - outer.top()},
        Candidate{Edge::Bottom, point.y() - inner.bottom(), outer.bottom() - point.y()},
        Candidate{Edge::Left, inner.left() - point.x(), point.x() - outer.left()},
        Candidate{Edge::Right, point.x() - inner.right(), outer.right() - point.x()},
    };
    const auto isNearer = [](const Candidate &one, const Candidate &other) {
        const int oneBeyond = std::max(one.beyond, 0);
        const int otherBeyond = std::max(other.beyond, 0);
        return oneBeyond != otherBeyond ? oneBeyond > otherBeyond : one.distance < other.distance;
    };
    return std::ranges::min_element(candidates, isNearer)->edge;
}

/// The start of a length that is to lie within another, at its start where it is too long.
int clamped(int start, int length, int areaStart, int areaEnd)
{
    const int gap = areaEnd - areaStart >= length + 2 * panelGap ? panelGap : 0;
    return std::max(std::min(start, areaEnd - gap - length), areaStart + gap);
}

} // namespace

QRect spotOf(const PanelAnchor &anchor)
{
    return anchor.icon.value_or(QRect(anchor.pointer, QSize(1, 1)));
}

QRect beside(const QRect &bar, const QRect &area)
{
    QRect below = area;
    below.setTop(bottomOf(bar));
    QRect above = area;
    above.setBottom(bar.top() - 1);
    QRect rightwards = area;
    rightwards.setLeft(rightOf(bar));
    QRect leftwards = area;
    leftwards.setRight(bar.left() - 1);
    const auto surface
        = [&area](const QRect &part) { return (part & area).width() * (part & area).height(); };
    return std::ranges::max({below, above, rightwards, leftwards}, {}, surface) & area;
}

QPoint placePanel(const PanelAnchor &anchor, const QList<ScreenArea> &screens, QSize panel)
{
    if (screens.isEmpty())
        return {};
    const QRect spot = spotOf(anchor);
    const ScreenArea &screen = screenAt(screens, spot.center());
    const QRect &area = screen.available;

    QPoint corner(spot.center().x() - panel.width() / 2, spot.center().y() - panel.height() / 2);
    switch (edgeAt(screen, spot.center())) {
    case Edge::Top:
        corner.setY(std::max(bottomOf(spot), area.top()) + panelGap);
        break;
    case Edge::Bottom:
        corner.setY(std::min(spot.top(), bottomOf(area)) - panelGap - panel.height());
        break;
    case Edge::Left:
        corner.setX(std::max(rightOf(spot), area.left()) + panelGap);
        break;
    case Edge::Right:
        corner.setX(std::min(spot.left(), rightOf(area)) - panelGap - panel.width());
        break;
    }
    return {clamped(corner.x(), panel.width(), area.left(), rightOf(area)),
        clamped(corner.y(), panel.height(), area.top(), bottomOf(area))};
}

} // namespace orbitledge::ui
