#pragma once

#include <QByteArray>
#include <QString>

#include <tl/expected.hpp>

#include <filesystem>

namespace orbitledge {

struct FileError {
    enum class Kind { NotFound, AccessDenied, NoSpace, TooLarge, Other };

    Kind kind = Kind::Other;
    /// The operating system's word for it, without a full stop: "Permission denied".
    QString errorDescription;

    friend bool operator==(const FileError &, const FileError &) = default;
};

/// Small private files. The calls block and are safe from any thread; never call them on the
/// user-interface thread.
class FileStore {
public:
    FileStore() = default;
    FileStore(const FileStore &) = delete;
    FileStore &operator=(const FileStore &) = delete;
    virtual ~FileStore() = default;

    /// More than this is not read, whatever the file.
    static constexpr qsizetype largestFile = qsizetype{1} << 30;

    /// The whole file. The array has room for 64 bytes behind its end, which parsers want.
    virtual tl::expected<QByteArray, FileError> read(const std::filesystem::path &path) = 0;

    /// Replaces the file, or creates it, readable by its owner alone, in a folder that is created the same
    /// way where it is missing. At every moment, a crash or loss of power included, the path leads to the
    /// whole old content or to the whole new one, and after success to the new one. Two processes that
    /// write at once do so one after the other.
    virtual tl::expected<void, FileError> replace(
        const std::filesystem::path &path, const QByteArray &content)
        = 0;

    /// Removes the file; a missing one is no error.
    virtual tl::expected<void, FileError> remove(const std::filesystem::path &path) = 0;
};

} // namespace orbitledge
