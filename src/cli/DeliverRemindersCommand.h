#pragma once

#include "cli/Environment.h"

#include <span>

namespace orbitledge {

/// Shows the reminders that are due, and ends.
ExitCode runDeliverReminders(std::span<const QByteArray> words, const Environment &environment);

} // namespace orbitledge
