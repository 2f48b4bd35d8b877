#pragma once

#include <QtGlobal>

/// The measures of a row, in the design's pixels, from its leading edge.
namespace orbitledge::ui::row {

inline constexpr qreal height = 44;
/// Of a section's title above its rows.
inline constexpr qreal headerHeight = 30;
inline constexpr qreal barWidth = 3;
inline constexpr qreal barHeight = 28;
inline constexpr qreal logoLeft = 16;
inline constexpr qreal logoSide = 26;
inline constexpr qreal textLeft = 52;
inline constexpr qreal nameSize = 13;
inline constexpr qreal subtitleSize = 10.5;
inline constexpr qreal costSize = 12;
/// Of the cost, or the buttons, unless the cost needs more.
inline constexpr qreal trailingWidth = 44;
inline constexpr qreal trailingInset = 12;
inline constexpr qreal gap = 8;

} // namespace orbitledge::ui::row
