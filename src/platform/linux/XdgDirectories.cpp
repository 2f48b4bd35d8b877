#include "platform/linux/XdgDirectories.h"

#include <pwd.h>
#include <unistd.h>

#include <vector>

namespace orbitledge {

XdgDirectories::XdgDirectories(std::function<QByteArray(const char *)> variable)
    : m_variable(std::move(variable))
{
}

std::optional<std::filesystem::path> XdgDirectories::absolutePath(const char *name) const
{
    std::filesystem::path path(m_variable(name).toStdString());
    if (!path.is_absolute())
        return std::nullopt;
    return path;
}

std::optional<std::filesystem::path> XdgDirectories::home() const
{
    if (auto fromVariable = absolutePath("HOME"))
        return fromVariable;
    constexpr std::size_t bufferSize = 16384;
    std::vector<char> buffer(bufferSize);
    passwd entry{};
    passwd *found = nullptr;
    if (getpwuid_r(geteuid(), &entry, buffer.data(), buffer.size(), &found) != 0 || found == nullptr)
        return std::nullopt;
    std::filesystem::path path(found->pw_dir);
    if (!path.is_absolute())
        return std::nullopt;
    return path;
}

std::optional<std::filesystem::path> XdgDirectories::place(
    const char *variable, const std::filesystem::path &belowHome) const
{
    if (auto fromVariable = absolutePath(variable))
        return fromVariable;
    const auto folder = home();
    if (!folder)
        return std::nullopt;
    return *folder / belowHome;
}

std::optional<std::filesystem::path> XdgDirectories::data() const
{
    return place("XDG_DATA_HOME", std::filesystem::path(".local") / "share");
}

std::optional<std::filesystem::path> XdgDirectories::configuration() const
{
    return place("XDG_CONFIG_HOME", ".config");
}

std::optional<std::filesystem::path> XdgDirectories::state() const
{
    return place("XDG_STATE_HOME", std::filesystem::path(".local") / "state");
}

std::optional<std::filesystem::path> XdgDirectories::cache() const
{
    return place("XDG_CACHE_HOME", ".cache");
}

std::filesystem::path XdgDirectories::temporary() const
{
    return absolutePath("TMPDIR").value_or("/tmp");
}

std::optional<std::filesystem::path> XdgDirectories::runtime() const
{
    return absolutePath("XDG_RUNTIME_DIR");
}

} // namespace orbitledge
