#pragma once

#include "cli/Environment.h"

#include <span>

namespace orbitledge {

/// Prints in one line what is due next and what is left this month, for status bars. Changes nothing, damaged
/// files included, and where nothing is saved says that.
ExitCode runStatus(std::span<const QByteArray> words, const Environment &environment);

} // namespace orbitledge
