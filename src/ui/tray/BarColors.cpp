#include "ui/tray/BarColors.h"

#include <QByteArrayList>

#include <algorithm>

namespace orbitledge::ui {

ColorScheme barColorScheme(const QByteArray &desktops, ColorScheme windows)
{
    const QByteArrayList names = desktops.split(':');
    const bool goesWithWindows
        = std::ranges::any_of(names, [](const QByteArray &name) { return name == "KDE" || name == "LXQt"; });
    return goesWithWindows ? windows : ColorScheme::Dark;
}

} // namespace orbitledge::ui
