#pragma once

#include "cli/Environment.h"

#include <span>

namespace orbitledge {

/// Is it an option of the program with windows, like "--background"?
bool isPanelOption(const QByteArray &word);

/// Turns into the program with windows: nothing, or one of its options.
ExitCode runPanel(std::span<const QByteArray> words, const Environment &environment);

} // namespace orbitledge
