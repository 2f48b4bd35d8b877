#pragma once

#include "cli/Environment.h"

#include <span>

namespace orbitledge {

/// Prints the timeline of a snapshot. Changes nothing, damaged files included.
ExitCode runTimeline(std::span<const QByteArray> words, const Environment &environment);

} // namespace orbitledge
