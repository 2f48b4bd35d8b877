#pragma once

#include "cli/Environment.h"

#include <span>

namespace orbitledge {

/// Turns into the program with windows: nothing, or "--background".
ExitCode runPanel(std::span<const QByteArray> words, const Environment &environment);

} // namespace orbitledge
