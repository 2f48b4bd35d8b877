#pragma once

#include "platform/FileStore.h"

#include <filesystem>
#include <optional>

namespace orbitledge {

/// The right to be the one process that does something. It ends with the object, and with the process however
/// that ends.
class ProcessLock {
public:
    /// Absent where another process, or another object of this one, has it. Creates the file, which stays,
    /// and its folder. Does not wait.
    static tl::expected<std::optional<ProcessLock>, FileError> take(const std::filesystem::path &file);

    ProcessLock(ProcessLock &&other) noexcept;
    ProcessLock &operator=(ProcessLock &&other) noexcept;
    ProcessLock(const ProcessLock &) = delete;
    ProcessLock &operator=(const ProcessLock &) = delete;
    ~ProcessLock();

private:
    explicit ProcessLock(int descriptor)
        : m_descriptor(descriptor)
    {
    }

    int m_descriptor;
};

} // namespace orbitledge
