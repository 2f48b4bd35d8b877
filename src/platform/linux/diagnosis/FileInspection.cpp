#include "platform/linux/diagnosis/FileInspection.h"

#include "platform/linux/PosixFileStore.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

namespace orbitledge {

using findings::File;
using findings::Folder;

namespace {

constexpr mode_t permissionBits = 07777;

QString textOf(const std::filesystem::path &path)
{
    return QString::fromStdString(path.string());
}

/// A file without a name is the one sure sign: permissions do not tell of a file system that is read-only or
/// full, and do not bind root.
bool canHoldFiles(const std::filesystem::path &folder)
{
    constexpr mode_t privateFile = 0600;
    const int nameless = ::open(folder.c_str(), O_TMPFILE | O_WRONLY | O_CLOEXEC, privateFile);
    if (nameless >= 0) {
        ::close(nameless);
        return true;
    }
    const bool isTold = errno != EOPNOTSUPP && errno != EISDIR && errno != EINVAL && errno != ENOENT;
    return !isTold && ::access(folder.c_str(), W_OK | X_OK) == 0;
}

/// The one in which the first missing folder on the way to `path` would be made.
std::filesystem::path nearestThere(std::filesystem::path path)
{
    struct stat status{};
    while (::stat(path.c_str(), &status) != 0 && errno == ENOENT && path.has_relative_path())
        path = path.parent_path();
    return path;
}

} // namespace

Folder inspectFolder(const WatchedFolder &folder)
{
    Folder found;
    found.subject = folder.subject;
    found.state = Folder::State::Nowhere;
    if (!folder.path)
        return found;
    found.path = textOf(*folder.path);
    const std::filesystem::path there = nearestThere(*folder.path);
    struct stat status{};
    if (::stat(there.c_str(), &status) != 0) {
        // Where permissions keep us from looking, nothing can be made either.
        found.state = errno == EACCES ? Folder::State::NotMade : Folder::State::NotAFolder;
        return found;
    }
    if (!S_ISDIR(status.st_mode)) {
        found.state = Folder::State::NotAFolder;
        return found;
    }
    found.isWritable = canHoldFiles(there);
    found.state = there == *folder.path ? Folder::State::Made : Folder::State::NotMade;
    if (found.state == Folder::State::Made) {
        found.mode = static_cast<int>(status.st_mode & permissionBits);
        found.isOwn = status.st_uid == ::geteuid();
    }
    return found;
}

File inspectFile(const WatchedFile &file)
{
    File found;
    found.subject = file.subject;
    found.path = textOf(file.path);
    struct stat status{};
    if (::stat(file.path.c_str(), &status) != 0) {
        const bool isMissing = errno == ENOENT || errno == ENOTDIR;
        found.state = isMissing ? File::State::Missing : File::State::Unreadable;
        return found;
    }
    found.size = status.st_size;
    found.modified = Instant::fromSecondsSinceEpoch(status.st_mtim.tv_sec);
    found.mode = static_cast<int>(status.st_mode & permissionBits);
    found.isOwn = status.st_uid == ::geteuid();
    const auto content = PosixFileStore().read(file.path);
    if (!content)
        found.state = File::State::Unreadable;
    else
        found.state = file.isWhole(*content) ? File::State::Whole : File::State::Damaged;
    return found;
}

} // namespace orbitledge
