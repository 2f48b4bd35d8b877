#pragma once

#include "cli/Environment.h"

#include <span>

namespace orbitledge {

/// Runs what the words after the program's name ask for.
ExitCode runCommandLine(std::span<const QByteArray> words, const Environment &environment);

} // namespace orbitledge
