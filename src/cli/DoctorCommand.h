#pragma once

#include "cli/Environment.h"

#include <span>

namespace orbitledge {

/// Prints what was found of what the program works with.
ExitCode runDoctor(std::span<const QByteArray> words, const Environment &environment);

} // namespace orbitledge
