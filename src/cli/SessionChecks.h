#pragma once

#include "cli/DoctorChecks.h"

namespace orbitledge {

// What the desktop session does for the program.

Check busCheck(findings::Bus bus);
Check trayCheck(const Findings &found);
Check notificationsCheck(const findings::Notifications &found);
Check portalCheck(const findings::Portal &portal);
Check timerCheck(const findings::Delivery &delivery);

} // namespace orbitledge
