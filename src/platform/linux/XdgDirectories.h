#pragma once

#include "platform/UserDirectories.h"

#include <QByteArray>

#include <functional>

namespace orbitledge {

/// The places of the XDG Base Directory Specification. A variable that is not an absolute path counts as
/// not set, as that specification asks; the home folder is $HOME, or else the one of the user database.
class XdgDirectories final : public UserDirectories {
public:
    explicit XdgDirectories(std::function<QByteArray(const char *)> variable);

    [[nodiscard]] std::optional<std::filesystem::path> data() const override;
    [[nodiscard]] std::optional<std::filesystem::path> configuration() const override;
    [[nodiscard]] std::optional<std::filesystem::path> state() const override;
    [[nodiscard]] std::optional<std::filesystem::path> cache() const override;
    [[nodiscard]] std::filesystem::path temporary() const override;

    /// Of this login; it is gone with the last one. There is no usual place where the variable is not set.
    [[nodiscard]] std::optional<std::filesystem::path> runtime() const;

private:
    [[nodiscard]] std::optional<std::filesystem::path> absolutePath(const char *name) const;
    [[nodiscard]] std::optional<std::filesystem::path> home() const;
    /// The variable's, or the usual place below the home folder where that is not set.
    [[nodiscard]] std::optional<std::filesystem::path> place(
        const char *variable, const std::filesystem::path &belowHome) const;

    std::function<QByteArray(const char *)> m_variable;
};

} // namespace orbitledge
