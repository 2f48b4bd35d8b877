#pragma once

#include "cli/DoctorChecks.h"

namespace orbitledge {

// What lies on the disk.

Check autostartCheck(const findings::Autostart &entry);
Check folderCheck(const findings::Folder &folder);
Check fileCheck(const findings::File &file, Instant now);

} // namespace orbitledge
