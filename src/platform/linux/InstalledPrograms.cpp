#include "platform/linux/InstalledPrograms.h"

#include <system_error>

namespace orbitledge {

namespace {

constexpr auto startedName = "orbitledge";
constexpr auto desktopName = "orbitledge-desktop";
constexpr auto httpName = "orbitledge-http";

std::filesystem::path firstThere(const std::filesystem::path &beside, const std::filesystem::path &installed)
{
    std::error_code error;
    return std::filesystem::exists(beside, error) ? beside : installed.lexically_normal();
}

} // namespace

InstalledPrograms InstalledPrograms::besides(const std::filesystem::path &self)
{
    const std::filesystem::path folder = self.parent_path();
    return {.started = firstThere(folder / startedName, folder / "../../bin" / startedName),
        .desktop = folder / desktopName,
        .http = folder / httpName};
}

} // namespace orbitledge
