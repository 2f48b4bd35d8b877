#include "state/SnapshotCache.h"

#include "BuildInfo.h"

namespace orbitledge {

SnapshotCache::SnapshotCache(std::filesystem::path location, std::shared_ptr<FileStore> files)
    : m_location(std::move(location))
    , m_files(std::move(files))
{
}

std::filesystem::path SnapshotCache::defaultLocation(const UserDirectories &directories)
{
    return directories.data().value_or(directories.temporary()) / build::applicationId
        / "subscription-snapshot-v1.json";
}

QCoro::Task<std::optional<CacheSnapshot>> SnapshotCache::load()
{
    return m_queue.run([files = m_files, location = m_location]() -> std::optional<CacheSnapshot> {
        auto content = files->read(location);
        if (!content && content.error().kind == FileError::Kind::NotFound)
            return std::nullopt;
        if (content) {
            if (auto snapshot = decodeCacheSnapshot(*std::move(content)))
                return *std::move(snapshot);
        }
        (void)files->remove(location); // a clean-up: there is nobody who could do anything about a failure
        return std::nullopt;
    });
}

QCoro::Task<tl::expected<void, FileError>> SnapshotCache::save(CacheSnapshot snapshot)
{
    return noted(
        m_lastFailure, m_queue.run([files = m_files, location = m_location, snapshot = std::move(snapshot)] {
            return files->replace(location, encodeCacheSnapshot(snapshot));
        }));
}

QCoro::Task<tl::expected<void, FileError>> SnapshotCache::clear()
{
    return noted(m_lastFailure,
        m_queue.run([files = m_files, location = m_location] { return files->remove(location); }));
}

QCoro::Task<SnapshotCache::Outcome> SnapshotCache::noted(
    std::shared_ptr<std::optional<FileError>> lastFailure, QCoro::Task<Outcome> change)
{
    auto outcome = co_await change;
    *lastFailure = outcome ? std::nullopt : std::optional(outcome.error());
    co_return outcome;
}

} // namespace orbitledge
