#pragma once

#include "platform/IntervalTimer.h"

#include <QTimer>

namespace orbitledge {

/// By the monotonic clock of the toolkit's event loop, to the second, so that the machine wakes up with
/// others.
class MonotonicTimer final : public IntervalTimer {
public:
    MonotonicTimer();

    void start(std::chrono::milliseconds interval) override;
    void stop() override;

private:
    QTimer m_timer;
};

} // namespace orbitledge
