#pragma once

#include <QString>

class QWidget;

namespace orbitledge::ui {

/// Brings a window that is shown to the front and gives it the keyboard. `activationToken` is the desktop's
/// word that a person asked for it, without which it may refuse; empty where there is none.
void bringForward(QWidget &window, const QString &activationToken);

/// When the click happened that an identifier of X11 stands for, in the time of the X server; 0 where it does
/// not say (Startup Notification Specification, "_TIME").
quint32 timeOfStartupId(const QString &startupId);

} // namespace orbitledge::ui
