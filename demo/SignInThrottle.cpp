#include "demo/SignInThrottle.h"

namespace orbitledge::demo {

std::optional<std::chrono::seconds> SignInThrottle::waitFor(const QString &emailKey, Time now)
{
    const QMutexLocker lock(&m_mutex);
    const auto found = m_failures.constFind(emailKey);
    if (found == m_failures.constEnd() || found->size() < failuresAllowed)
        return std::nullopt;
    const Time free = found->at(found->size() - failuresAllowed) + window;
    if (free <= now)
        return std::nullopt;
    return std::chrono::ceil<std::chrono::seconds>(free - now);
}

void SignInThrottle::recordFailure(const QString &emailKey, Time now)
{
    const QMutexLocker lock(&m_mutex);
    forgetOld(now);
    QList<Time> &failures = m_failures[emailKey];
    failures.append(now);
    if (failures.size() > failuresAllowed)
        failures.removeFirst();
}

void SignInThrottle::forgetOld(Time now)
{
    // Guesses at ever other e-mails must not fill the memory, nor cost a walk each.
    if (now - m_lastSweep < window)
        return;
    m_lastSweep = now;
    m_failures.removeIf([now](const auto &entry) { return entry.value().last() + window <= now; });
}

} // namespace orbitledge::demo
