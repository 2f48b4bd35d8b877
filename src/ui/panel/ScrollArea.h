#pragma once

class QScrollArea;
class QWidget;

namespace orbitledge::ui {

/// Has its content scroll, up and down only, where there is not room for it; without a frame and a bar, and
/// with nothing behind it.
QScrollArea *makeScrollArea(QWidget *content);

} // namespace orbitledge::ui
