#include "platform/linux/notifications/UnattendedTimes.h"

#include <algorithm>

namespace orbitledge {

std::optional<Instant> UnattendedTimes::next(const NotificationQueue &queue, Instant now)
{
    const std::optional<Instant> next = queue.nextDue(now);
    if (!queue.hasDue(now)) {
        m_secondAttempt.reset();
        return next;
    }
    constexpr qint64 tenMinutes = 600'000;
    const Instant latest = Instant::fromMillisecondsSinceEpoch(now.millisecondsSinceEpoch() + tenMinutes);
    if (!m_secondAttempt || *m_secondAttempt <= now || *m_secondAttempt > latest)
        m_secondAttempt = latest;
    return std::min(next.value_or(*m_secondAttempt), *m_secondAttempt);
}

} // namespace orbitledge
