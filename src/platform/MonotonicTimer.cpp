#include "platform/MonotonicTimer.h"

namespace orbitledge {

MonotonicTimer::MonotonicTimer(Precision precision)
{
    m_timer.setSingleShot(true);
    m_timer.setTimerType(precision == Precision::Seconds ? Qt::VeryCoarseTimer : Qt::PreciseTimer);
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
