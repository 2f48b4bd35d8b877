#pragma once

#include "platform/FileStore.h"
#include "platform/SerialQueue.h"
#include "platform/UserDirectories.h"
#include "state/CacheSnapshot.h"

#include <filesystem>
#include <memory>
#include <optional>

namespace orbitledge {

/// Keeps the last good data in one file, so that there is something to show at once and while offline.
/// Operations run in the order in which they were called, one at a time, off the calling thread.
class SnapshotCache {
public:
    SnapshotCache(std::filesystem::path location, std::shared_ptr<FileStore> files);

    /// The person's own cache file: "subscription-snapshot-v1.json" in the application's folder of the data
    /// directory, or of the temporary directory where there is none.
    static std::filesystem::path defaultLocation(const UserDirectories &directories);

    /// What was saved last. A file that cannot be read, is damaged or of another version removes itself:
    /// it would fail every time, and costs no more than one fetch.
    [[nodiscard]] QCoro::Task<std::optional<CacheSnapshot>> load();

    /// Replaces the file as a whole. Where this fails the old one stays.
    [[nodiscard]] QCoro::Task<tl::expected<void, FileError>> save(CacheSnapshot snapshot);

    /// Removes the file; a missing one is no error.
    [[nodiscard]] QCoro::Task<tl::expected<void, FileError>> clear();

    /// Why the file is not as the last `save` or `clear` that has ended would have it; absent where it is.
    [[nodiscard]] const std::optional<FileError> &lastFailure() const { return *m_lastFailure; }

private:
    using Outcome = tl::expected<void, FileError>;
    static QCoro::Task<Outcome> noted(
        std::shared_ptr<std::optional<FileError>> lastFailure, QCoro::Task<Outcome> change);

    std::filesystem::path m_location;
    std::shared_ptr<FileStore> m_files;
    std::shared_ptr<std::optional<FileError>> m_lastFailure = std::make_shared<std::optional<FileError>>();
    SerialQueue m_queue;
};

} // namespace orbitledge
