#pragma once

#include "platform/UserDirectories.h"

#include <QString>

#include <filesystem>

namespace orbitledge::own {

// What belongs to this program, and where, in one place for all who look there. What has no other place lies
// in the temporary folder.

std::filesystem::path settingsFile(const UserDirectories &directories);
std::filesystem::path remindersFile(const UserDirectories &directories);

/// Under which the keyring keeps the session, beside the application's identifier.
QString keyringAccount();

} // namespace orbitledge::own
