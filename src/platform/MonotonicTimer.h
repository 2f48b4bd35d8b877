#pragma once

#include "platform/IntervalTimer.h"

#include <QTimer>

namespace orbitledge {

/// By the monotonic clock of the toolkit's event loop.
class MonotonicTimer final : public IntervalTimer {
public:
    enum class Precision {
        /// So that the machine wakes up together with others.
        Seconds,
        /// Where a person waits for it.
        Milliseconds,
    };

    explicit MonotonicTimer(Precision precision = Precision::Seconds);

    void start(std::chrono::milliseconds interval) override;
    void stop() override;

private:
    QTimer m_timer;
};

} // namespace orbitledge
