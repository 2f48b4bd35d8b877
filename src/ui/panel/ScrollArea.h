#pragma once

class QScrollArea;
class QWidget;

namespace orbitledge::ui {

/// Has its content scroll, up and down only, where there is not room for it; without a frame and a bar, and
/// with nothing behind it.
QScrollArea *makeScrollArea(QWidget *content);

/// Scrolls to a widget in such content, as soon as what changed is laid out.
void reveal(QWidget *widget);

} // namespace orbitledge::ui
