#pragma once

#include "model/Instant.h"
#include "platform/FileStore.h"
#include "platform/UserDirectories.h"

#include <QByteArray>
#include <QUrl>

#include <filesystem>
#include <memory>
#include <optional>

namespace orbitledge {

/// Of a logo as it is sent.
inline constexpr qsizetype largestLogo = qsizetype{1} << 20;

/// A logo as it was sent, with what its server said of it.
struct KeptLogo {
    QByteArray content;
    /// From then on the server is asked whether there is another one.
    Instant freshUntil;
    /// Empty where the server sent none.
    QByteArray entityTag;
    QByteArray lastModified;

    friend bool operator==(const KeptLogo &, const KeptLogo &) = default;
};

/// Logos in a folder, one private file each, named after the digest of the address. The files' times tell
/// when each was used last, and which ones go where there is too much. The calls block; from one thread at a
/// time.
class LogoCache {
public:
    static constexpr qint64 usualCapacity = qint64{20} << 20;

    LogoCache(
        std::filesystem::path folder, std::shared_ptr<FileStore> files, qint64 capacity = usualCapacity);

    /// "logos" in the application's folder of the cache directory, or of the temporary one without that.
    static std::filesystem::path defaultLocation(const UserDirectories &directories);

    /// Counts as a use. A file that is damaged, or no file of ours, removes itself.
    std::optional<KeptLogo> find(const QUrl &address);

    /// Makes room by removing those that were not used for longest.
    tl::expected<void, FileError> keep(const QUrl &address, const KeptLogo &logo);

    void remove(const QUrl &address);

    /// Removes all of them, and the folder.
    void clear();

private:
    [[nodiscard]] std::filesystem::path pathOf(const QUrl &address) const;
    void makeRoom();

    std::filesystem::path m_folder;
    std::shared_ptr<FileStore> m_files;
    qint64 m_capacity;
    /// At most this many bytes are in the folder; unknown until it was looked at.
    std::optional<qint64> m_used;
};

} // namespace orbitledge
