#include "platform/linux/notifications/RetryTimer.h"

#include <algorithm>

namespace orbitledge {

RetryTimer::RetryTimer(std::chrono::milliseconds shortest)
    : m_shortest(shortest)
    , m_next(shortest)
{
    m_timer.setSingleShot(true);
    connect(&m_timer, &QTimer::timeout, this, &RetryTimer::rang);
}

void RetryTimer::start()
{
    constexpr std::chrono::milliseconds longest = std::chrono::hours(1);
    m_timer.start(m_next);
    m_next = std::min(2 * m_next, longest);
}

void RetryTimer::reset()
{
    stop();
    m_next = m_shortest;
}

} // namespace orbitledge
