#pragma once

#include "cli/DoctorChecks.h"

namespace orbitledge {

// The program itself, and the machine that it runs on.

Check librariesCheck(const findings::Versions &versions, const OwnFacts &own);
Check systemCheck(const findings::Versions &versions);
Check desktopCheck(const findings::Session &session);
Check regionCheck(const OwnFacts &own);
Check runningCheck(findings::Running running);
Check windowsProgramCheck(findings::WindowsProgram program);

} // namespace orbitledge
