#pragma once

#include "platform/IntervalTimer.h"

#include <optional>

namespace orbitledge::testing {

/// Elapses when the test says so.
class FakeIntervalTimer final : public IntervalTimer {
public:
    /// What it waits for; absent where it does not.
    std::optional<std::chrono::milliseconds> running;

    void start(std::chrono::milliseconds interval) override { running = interval; }
    void stop() override { running.reset(); }

    void elapse()
    {
        if (std::exchange(running, std::nullopt))
            Q_EMIT elapsed();
    }
};

} // namespace orbitledge::testing
