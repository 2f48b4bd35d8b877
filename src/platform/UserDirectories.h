#pragma once

#include <filesystem>
#include <optional>

namespace orbitledge {

/// Where the desktop keeps what belongs to a person. Absent where the machine names no such place.
class UserDirectories {
public:
    UserDirectories() = default;
    UserDirectories(const UserDirectories &) = delete;
    UserDirectories &operator=(const UserDirectories &) = delete;
    virtual ~UserDirectories() = default;

    /// For data that should be kept.
    [[nodiscard]] virtual std::optional<std::filesystem::path> data() const = 0;
    /// For what people choose.
    [[nodiscard]] virtual std::optional<std::filesystem::path> configuration() const = 0;
    /// For what a program remembers by itself between its runs.
    [[nodiscard]] virtual std::optional<std::filesystem::path> state() const = 0;
    /// For what can be made again.
    [[nodiscard]] virtual std::optional<std::filesystem::path> cache() const = 0;
    /// For what need not outlive a restart of the machine; there is always one.
    [[nodiscard]] virtual std::filesystem::path temporary() const = 0;
};

} // namespace orbitledge
