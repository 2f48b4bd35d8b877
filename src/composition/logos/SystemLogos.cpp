#include "composition/logos/SystemLogos.h"

#include "platform/linux/PosixFileStore.h"
#include "platform/linux/SystemClock.h"
#include "platform/linux/XdgDirectories.h"

namespace orbitledge {

std::shared_ptr<LogoLoader> makeLogos(std::shared_ptr<HttpSession> http)
{
    const XdgDirectories directories([](const char *name) { return qgetenv(name); });
    return std::make_shared<LogoLoader>(LogoLoader::Parts{
        .http = std::move(http),
        .cache = std::make_shared<LogoCache>(
            LogoCache::defaultLocation(directories), std::make_shared<PosixFileStore>()),
        .clock = std::make_shared<SystemClock>(),
    });
}

} // namespace orbitledge
