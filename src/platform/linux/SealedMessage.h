#pragma once

#include <QByteArray>

#include <optional>
#include <utility>

namespace orbitledge {

/// A descriptor that is closed with the object.
class OwnedDescriptor {
public:
    explicit OwnedDescriptor(int descriptor)
        : m_descriptor(descriptor)
    {
    }
    OwnedDescriptor(OwnedDescriptor &&other) noexcept
        : m_descriptor(std::exchange(other.m_descriptor, -1))
    {
    }
    OwnedDescriptor &operator=(OwnedDescriptor &&other) noexcept
    {
        std::swap(m_descriptor, other.m_descriptor);
        return *this;
    }
    OwnedDescriptor(const OwnedDescriptor &) = delete;
    OwnedDescriptor &operator=(const OwnedDescriptor &) = delete;
    ~OwnedDescriptor();

    [[nodiscard]] int get() const { return m_descriptor; }

private:
    int m_descriptor;
};

/// Secrets for another process, in memory that has no name and that nobody can change any more: messages of a
/// bus can be read by whoever monitors it, what their descriptors lead to cannot.
class SealedMessage {
public:
    /// Larger ones are refused on both sides.
    static constexpr qsizetype largest = 65536;

    /// Absent where the system does not let us.
    static std::optional<OwnedDescriptor> write(const QByteArray &content);

    /// Absent where it is anything but such a message of this user: a file, a pipe that would keep the reader
    /// waiting, memory that may change while it is read.
    static std::optional<QByteArray> read(int descriptor);
};

} // namespace orbitledge
