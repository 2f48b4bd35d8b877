#pragma once

#include <QList>
#include <QRect>

namespace orbitledge::ui {

/// Where the desktop's bars are, in pixels of the X server, at this moment; none without one. Waits for the
/// server, as asking for the pointer's place does.
QList<QRect> dockWindows();

} // namespace orbitledge::ui
