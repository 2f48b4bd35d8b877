#include "composition/ProgramLocks.h"

#include "BuildInfo.h"
#include "platform/linux/XdgDirectories.h"
#include "state/SnapshotCache.h"

#include <QtGlobal>

namespace orbitledge {

ProgramLocks::Attempt ProgramLocks::takeInstance()
{
    return take("instance.lock");
}

ProgramLocks::Attempt ProgramLocks::takeSession()
{
    return take("session.lock");
}

ProgramLocks::Attempt ProgramLocks::take(const char *name)
{
    const XdgDirectories directories([](const char *variable) { return qgetenv(variable); });
    if (const auto runtime = directories.runtime()) {
        // Of this part of it a program in a sandbox sees the same as one outside.
        auto attempt = ProcessLock::take(*runtime / "app" / build::applicationId / name);
        if (attempt)
            return attempt;
    }
    return ProcessLock::take(SnapshotCache::defaultLocation(directories).parent_path() / name);
}

} // namespace orbitledge
