#pragma once

#include "platform/FileStore.h"

namespace orbitledge {

/// Files of a POSIX system. Content is written to a file beside the target, flushed to the disk, and renamed
/// over it; the folder is flushed too, so that the new name survives a loss of power. What an interrupted
/// writing left behind is taken over by the next one.
class PosixFileStore final : public FileStore {
public:
    tl::expected<QByteArray, FileError> read(const std::filesystem::path &path) override;
    tl::expected<void, FileError> replace(
        const std::filesystem::path &path, const QByteArray &content) override;
    tl::expected<void, FileError> remove(const std::filesystem::path &path) override;

    /// Like mkdir -p, with folders that their owner alone may enter; those that exist stay as they are.
    static tl::expected<void, FileError> createPrivateFolder(const std::filesystem::path &folder);

    /// What a value of errno means.
    static FileError errorOf(int code);

    /// Everything up to the end of what is already open, within the same bounds as `read`.
    static tl::expected<QByteArray, FileError> readDescriptor(int descriptor);

    /// Writes all of it to what is already open; false with errno set where that fails.
    static bool writeDescriptor(int descriptor, const QByteArray &content);
};

} // namespace orbitledge
