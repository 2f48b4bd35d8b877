#pragma once

#include "cli/Environment.h"

#include <span>

namespace orbitledge {

/// Opens a session for the e-mail address among the words, and saves the account's data.
ExitCode runSignIn(std::span<const QByteArray> words, const Environment &environment);

/// Fetches the account's data and saves them.
ExitCode runRefresh(std::span<const QByteArray> words, const Environment &environment);

/// Ends the session and removes what was saved.
ExitCode runSignOut(std::span<const QByteArray> words, const Environment &environment);

} // namespace orbitledge
