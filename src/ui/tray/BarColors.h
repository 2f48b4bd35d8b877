#pragma once

#include "ui/kit/Palette.h"

#include <QByteArray>

namespace orbitledge::ui {

/// What a desktop's bar most likely looks like, which no desktop tells. Bars are dark, but on the few
/// desktops where they go with the windows. `desktops` is XDG_CURRENT_DESKTOP, names with colons between them
/// (Desktop Entry Specification); `windows` is what the desktop prefers for windows.
ColorScheme barColorScheme(const QByteArray &desktops, ColorScheme windows);

} // namespace orbitledge::ui
