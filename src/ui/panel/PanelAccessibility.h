#pragma once

namespace orbitledge::ui {

/// Tells assistive technology what the panel's own components are. Any number of times.
void installPanelAccessibility();

} // namespace orbitledge::ui
