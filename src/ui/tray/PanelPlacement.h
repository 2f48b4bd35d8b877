#pragma once

#include <QList>
#include <QPoint>
#include <QRect>
#include <QSize>

#include <optional>

namespace orbitledge::ui {

/// Where somebody asked for the panel, in the desktop's coordinates, independent of the device.
struct PanelAnchor {
    /// The icon's place, where the desktop tells it.
    std::optional<QRect> icon;
    QPoint pointer;
};

/// The icon, or the pointer where that is not known.
QRect spotOf(const PanelAnchor &anchor);

struct ScreenArea {
    QRect geometry;
    /// Without what the desktop keeps for its own bars.
    QRect available;
};

/// What is left of an area beside a bar that lies in it, on the bar's one side that leaves most of it.
QRect beside(const QRect &bar, const QRect &area);

inline constexpr int panelGap = 4;

/// The top left corner for a panel of that size: beside the bar that the icon is in, with a gap, on the
/// icon's screen and within what is available there. A panel that is too large for that begins where the area
/// begins.
QPoint placePanel(const PanelAnchor &anchor, const QList<ScreenArea> &screens, QSize panel);

} // namespace orbitledge::ui
