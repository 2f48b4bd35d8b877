#pragma once

#include "cli/DoctorChecks.h"

namespace orbitledge {

Check keyringCheck(const findings::Keyring &keyring);

} // namespace orbitledge
