#pragma once

namespace orbitledge::ui {

/// Whether windows may be translucent: on X11, where a compositing manager runs. Asks the X server.
bool isComposited();

} // namespace orbitledge::ui
