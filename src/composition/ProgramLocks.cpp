#include "composition/ProgramLocks.h"

#include "BuildInfo.h"
#include "platform/Pause.h"
#include "platform/linux/XdgDirectories.h"
#include "state/SnapshotCache.h"

#include <algorithm>

namespace orbitledge {

namespace {

constexpr const char *instanceLock = "instance.lock";
constexpr const char *sessionLock = "session.lock";

} // namespace

QCoro::Task<ProgramLocks::Attempt> ProgramLocks::takeInstance(QDeadlineTimer deadline)
{
    return take(instanceLock, deadline);
}

ProgramLocks::Attempt ProgramLocks::takeSession()
{
    return take(sessionLock);
}

QCoro::Task<ProgramLocks::Attempt> ProgramLocks::awaitSession()
{
    return take(sessionLock, QDeadlineTimer(QDeadlineTimer::Forever));
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

QCoro::Task<ProgramLocks::Attempt> ProgramLocks::take(const char *name, QDeadlineTimer deadline)
{
    // Who is just about to end is gone soon; another one may be waiting for a person.
    constexpr int quickTries = 60;
    constexpr std::chrono::milliseconds longPause{1000};
    for (int tries = 1;; ++tries) {
        Attempt attempt = take(name);
        if (!attempt || *attempt || deadline.hasExpired())
            co_return attempt;
        const std::chrono::milliseconds wanted = tries < quickTries ? pause : longPause;
        const std::chrono::milliseconds left(deadline.remainingTime());
        co_await pauseFor(deadline.isForever() ? wanted : std::min(wanted, left));
    }
}

} // namespace orbitledge
