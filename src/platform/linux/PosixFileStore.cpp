#include "platform/linux/PosixFileStore.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <system_error>
#include <utility>

namespace orbitledge {

using namespace Qt::StringLiterals;

namespace {

constexpr mode_t privateFile = 0600;
constexpr mode_t privateFolder = 0700;
constexpr qsizetype parserPadding = 64;

tl::unexpected<FileError> failure(int code)
{
    return tl::make_unexpected(PosixFileStore::errorOf(code));
}

/// Repeats a call that a signal interrupted.
template <typename Call> auto uninterrupted(Call call)
{
    auto result = call();
    while (result < 0 && errno == EINTR)
        result = call();
    return result;
}

class Descriptor {
public:
    explicit Descriptor(int descriptor)
        : m_descriptor(descriptor)
    {
    }
    Descriptor(const Descriptor &) = delete;
    Descriptor &operator=(const Descriptor &) = delete;
    ~Descriptor()
    {
        if (m_descriptor >= 0)
            ::close(m_descriptor);
    }

    explicit operator bool() const { return m_descriptor >= 0; }
    [[nodiscard]] int get() const { return m_descriptor; }

    /// False with errno set; some file systems report a failed write only here.
    bool close() { return ::close(std::exchange(m_descriptor, -1)) == 0; }

private:
    int m_descriptor;
};

/// mkdir -p with folders that only their owner may enter; those that exist stay as they are.
bool createFolders(const std::filesystem::path &folder)
{
    std::filesystem::path reached;
    for (const auto &part : folder) {
        reached /= part;
        if (::mkdir(reached.c_str(), privateFolder) == 0 || errno == EEXIST)
            continue;
        // On the way to a folder of ours there may be some that we must not write to, or cannot.
        struct stat status{};
        const int reason = errno;
        if (::stat(reached.c_str(), &status) != 0 || !S_ISDIR(status.st_mode)) {
            errno = reason;
            return false;
        }
    }
    return true;
}

} // namespace

FileError PosixFileStore::errorOf(int code)
{
    FileError error{.kind = FileError::Kind::Other,
        .errorDescription = QString::fromStdString(std::generic_category().message(code))};
    switch (code) {
    case ENOENT:
        error.kind = FileError::Kind::NotFound;
        break;
    case EACCES:
    case EPERM:
    case EROFS:
        error.kind = FileError::Kind::AccessDenied;
        break;
    case ENOSPC:
    case EDQUOT:
        error.kind = FileError::Kind::NoSpace;
        break;
    default:
        break;
    }
    return error;
}

tl::expected<void, FileError> PosixFileStore::createPrivateFolder(const std::filesystem::path &folder)
{
    if (!createFolders(folder.empty() ? "." : folder))
        return failure(errno);
    return {};
}

bool PosixFileStore::writeDescriptor(int descriptor, const QByteArray &content)
{
    qsizetype written = 0;
    while (written < content.size()) {
        const auto count = uninterrupted([&] {
            return ::write(descriptor, content.constData() + written,
                static_cast<std::size_t>(content.size() - written));
        });
        if (count < 0)
            return false;
        written += count;
    }
    return true;
}

tl::expected<QByteArray, FileError> PosixFileStore::readDescriptor(int descriptor)
{
    struct stat status{};
    if (::fstat(descriptor, &status) != 0)
        return failure(errno);
    const auto tooLarge = [] {
        return tl::make_unexpected(FileError{
            .kind = FileError::Kind::TooLarge, .errorDescription = u"The file is larger than 1 GiB"_s});
    };
    if (status.st_size > largestFile)
        return tooLarge();

    // A pipe has no size, and a file may grow: the size is only where to start.
    constexpr qsizetype smallestChunk = 65536;
    QByteArray content;
    content.reserve(std::max<qsizetype>(status.st_size + 1, smallestChunk) + parserPadding);
    qsizetype size = 0;
    while (true) {
        if (content.capacity() - size <= parserPadding)
            content.reserve(content.capacity() * 2);
        const qsizetype room = content.capacity() - size - parserPadding;
        content.resize(size + room);
        const auto count = uninterrupted(
            [&] { return ::read(descriptor, content.data() + size, static_cast<std::size_t>(room)); });
        if (count < 0)
            return failure(errno);
        size += count;
        content.resize(size);
        if (count == 0)
            return content;
        if (size > largestFile)
            return tooLarge();
    }
}

tl::expected<QByteArray, FileError> PosixFileStore::read(const std::filesystem::path &path)
{
    const Descriptor file(
        uninterrupted([&] { return ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY); }));
    if (!file)
        return failure(errno);
    return readDescriptor(file.get());
}

tl::expected<void, FileError> PosixFileStore::replace(
    const std::filesystem::path &path, const QByteArray &content)
{
    const std::filesystem::path folder = path.parent_path().empty() ? "." : path.parent_path();
    if (auto made = createPrivateFolder(folder); !made)
        return made;
    Descriptor directory(
        uninterrupted([&] { return ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC); }));
    if (!directory)
        return failure(errno);
    // Held until the descriptor is closed. Where a file system has no locks, the rename still keeps each
    // content whole.
    uninterrupted([&] { return ::flock(directory.get(), LOCK_EX); });

    // Always the same name, so that nothing piles up, and removed first, so that what is written is a new
    // file of ours and neither a link nor one with other permissions.
    const std::filesystem::path target = path.filename();
    const std::filesystem::path fresh = std::filesystem::path(".") += target.native() + ".new";
    ::unlinkat(directory.get(), fresh.c_str(), 0);
    const auto fail = [&] {
        const int reason = errno;
        ::unlinkat(directory.get(), fresh.c_str(), 0);
        return failure(reason);
    };
    Descriptor file(uninterrupted([&] {
        return ::openat(directory.get(), fresh.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW,
            privateFile);
    }));
    if (!file)
        return failure(errno);
    if (!writeDescriptor(file.get(), content) || ::fsync(file.get()) != 0 || !file.close())
        return fail();
    if (::renameat(directory.get(), fresh.c_str(), directory.get(), target.c_str()) != 0)
        return fail();
    // Some file systems have no way to flush a folder, and no need to.
    if (::fsync(directory.get()) != 0 && errno != EINVAL && errno != ENOTSUP)
        return failure(errno);
    return {};
}

tl::expected<void, FileError> PosixFileStore::remove(const std::filesystem::path &path)
{
    if (::unlink(path.c_str()) != 0 && errno != ENOENT && errno != ENOTDIR)
        return failure(errno);
    return {};
}

} // namespace orbitledge
