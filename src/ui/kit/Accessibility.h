#pragma once

#include <QAccessible>
#include <QString>
#include <QWidget>

namespace orbitledge::ui {

/// What a widget without a role of its own is for assistive technology. The toolkit makes it a filler, and
/// screen readers say nothing when one gets the keyboard. Once, and before it has an accessible name, which
/// is told at once, with the role.
void setAccessibleRole(QWidget &widget, QAccessible::Role role);

/// Has a text read out at once, wherever the keyboard is. Nothing where `from` is not to be seen.
///
/// The toolkit's alerts do not leave the program on this platform. What screen readers read out by themselves
/// are notifications that appear, so one appears in the window of `from`, too small to be seen, and goes
/// after a while.
void announce(QWidget &from, const QString &text);

} // namespace orbitledge::ui
