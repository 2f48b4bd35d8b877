#pragma once

#include "cli/Environment.h"

#include <span>

namespace orbitledge {

/// Prints which reminders are planned. Changes nothing.
ExitCode runReminders(std::span<const QByteArray> words, const Environment &environment);

} // namespace orbitledge
