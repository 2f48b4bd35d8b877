#pragma once

#include "platform/Diagnosis.h"

#include <QByteArray>

#include <filesystem>
#include <functional>
#include <optional>

namespace orbitledge {

/// A folder of the program's own; absent where the machine names no place for it.
struct WatchedFolder {
    /// "configuration"
    QByteArray subject;
    std::optional<std::filesystem::path> path;
};

struct WatchedFile {
    /// "cache"
    QByteArray subject;
    std::filesystem::path path;
    /// Whether its content is what the program would take.
    std::function<bool(const QByteArray &)> isWhole;
};

// These block, and leave no trace.

findings::Folder inspectFolder(const WatchedFolder &folder);
findings::File inspectFile(const WatchedFile &file);

} // namespace orbitledge
