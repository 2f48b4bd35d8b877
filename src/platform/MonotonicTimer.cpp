#include "platform/MonotonicTimer.h"

namespace orbitledge {

MonotonicTimer::MonotonicTimer()
{
    m_timer.setSingleShot(true);
    m_timer.setTimerType(Qt::VeryCoarseTimer);
    connect(&m_timer, &QTimer::timeout, this, &IntervalTimer::elapsed);
}

void MonotonicTimer::start(std::chrono::milliseconds interval)
{
    m_timer.start(interval);
}

void MonotonicTimer::stop()
{
    m_timer.stop();
}

} // namespace orbitledge
