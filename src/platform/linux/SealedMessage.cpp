#include "platform/linux/SealedMessage.h"

#include "platform/linux/PosixFileStore.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

namespace orbitledge {

namespace {

constexpr int seals = F_SEAL_SEAL | F_SEAL_SHRINK | F_SEAL_GROW | F_SEAL_WRITE;

/// Not what is executable: some systems insist on that, and older ones do not know it.
int createMemory()
{
    constexpr unsigned notExecutable = 8; // MFD_NOEXEC_SEAL of Linux 6.3
    const int memory = ::memfd_create("orbitledge", MFD_CLOEXEC | MFD_ALLOW_SEALING | notExecutable);
    if (memory >= 0 || errno != EINVAL)
        return memory;
    return ::memfd_create("orbitledge", MFD_CLOEXEC | MFD_ALLOW_SEALING);
}

bool isSealed(int descriptor)
{
    const int present
        = ::fcntl(descriptor, F_GET_SEALS); // NOLINT(cppcoreguidelines-pro-type-vararg,hicpp-vararg)
    return present >= 0 && (present & seals) == seals;
}

bool seal(int descriptor)
{
    return ::fcntl(descriptor, F_ADD_SEALS, seals)
        == 0; // NOLINT(cppcoreguidelines-pro-type-vararg,hicpp-vararg)
}

} // namespace

OwnedDescriptor::~OwnedDescriptor()
{
    if (m_descriptor >= 0)
        ::close(m_descriptor);
}

std::optional<OwnedDescriptor> SealedMessage::write(const QByteArray &content)
{
    if (content.size() > largest)
        return std::nullopt;
    OwnedDescriptor memory(createMemory());
    if (memory.get() < 0 || !PosixFileStore::writeDescriptor(memory.get(), content) || !seal(memory.get()))
        return std::nullopt;
    return memory;
}

std::optional<QByteArray> SealedMessage::read(int descriptor)
{
    struct stat status{};
    if (!isSealed(descriptor) || ::fstat(descriptor, &status) != 0)
        return std::nullopt;
    if (status.st_uid != ::geteuid() || status.st_size > largest)
        return std::nullopt;
    QByteArray content(status.st_size, Qt::Uninitialized);
    qsizetype done = 0;
    while (done < content.size()) {
        // From its start, wherever the writer's end left the place that both share.
        const auto size = ::pread(
            descriptor, content.data() + done, static_cast<std::size_t>(content.size() - done), done);
        if (size < 0 && errno == EINTR)
            continue;
        if (size <= 0)
            return std::nullopt;
        done += size;
    }
    return content;
}

} // namespace orbitledge
