#pragma once

#include "platform/Diagnosis.h"

#include <filesystem>

namespace orbitledge {

/// The entry in the person's autostart folder, and whether it starts `program`. Reads a small file.
findings::Autostart inspectAutostart(const std::filesystem::path &file, const std::filesystem::path &program);

} // namespace orbitledge
