#include "platform/linux/ProcessLock.h"

#include "platform/linux/PosixFileStore.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

namespace orbitledge {

tl::expected<std::optional<ProcessLock>, FileError> ProcessLock::take(const std::filesystem::path &file)
{
    if (auto made = PosixFileStore::createPrivateFolder(file.parent_path()); !made)
        return tl::make_unexpected(std::move(made.error()));
    constexpr mode_t privateFile = 0600;
    const int descriptor
        = ::open(file.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW | O_NOCTTY, privateFile);
    if (descriptor < 0)
        return tl::make_unexpected(PosixFileStore::errorOf(errno));
    if (::flock(descriptor, LOCK_EX | LOCK_NB) == 0)
        return ProcessLock(descriptor);
    const int reason = errno;
    ::close(descriptor);
    if (reason == EWOULDBLOCK)
        return std::nullopt;
    return tl::make_unexpected(PosixFileStore::errorOf(reason));
}

ProcessLock::ProcessLock(ProcessLock &&other) noexcept
    : m_descriptor(std::exchange(other.m_descriptor, -1))
{
}

ProcessLock &ProcessLock::operator=(ProcessLock &&other) noexcept
{
    std::swap(m_descriptor, other.m_descriptor);
    return *this;
}

ProcessLock::~ProcessLock()
{
    if (m_descriptor >= 0)
        ::close(m_descriptor);
}

} // namespace orbitledge
