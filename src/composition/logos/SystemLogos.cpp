#include "composition/logos/SystemLogos.h"

#include "BuildInfo.h"
#include "platform/curl/CurlHttpSession.h"
#include "platform/linux/PosixFileStore.h"
#include "platform/linux/SystemClock.h"
#include "platform/linux/XdgDirectories.h"

namespace orbitledge {

std::shared_ptr<LogoLoader> makeLogos()
{
    const XdgDirectories directories([](const char *name) { return qgetenv(name); });
    return std::make_shared<LogoLoader>(LogoLoader::Parts{
        .http = std::make_shared<CurlHttpSession>(
            QByteArray("Orbitledge/") + build::version, LogoLoader::sessionConfiguration()),
        .cache = std::make_shared<LogoCache>(
            LogoCache::defaultLocation(directories), std::make_shared<PosixFileStore>()),
        .clock = std::make_shared<SystemClock>(),
    });
}

} // namespace orbitledge
