#pragma once

#include "platform/WallClockAlarm.h"
#include "support/StoppedClock.h"

#include <memory>

namespace orbitledge::testing {

/// Rings when the test moves the clock, through `moveTo`.
class FakeWallClockAlarm final : public WallClockAlarm {
public:
    explicit FakeWallClockAlarm(std::shared_ptr<StoppedClock> clock)
        : m_clock(std::move(clock))
    {
    }

    void set(std::optional<Instant> instant) override { target = instant; }

    /// As if time had passed, or the clock was set: `Set` is a step, of which the machine tells.
    enum class Move { Passed, Set };
    void moveTo(Instant instant, Move how = Move::Passed)
    {
        m_clock->set(instant);
        if (how == Move::Set)
            Q_EMIT clockChanged();
        if (target && *target <= instant) {
            target.reset();
            Q_EMIT rang();
        }
    }

    std::optional<Instant> target;

private:
    std::shared_ptr<StoppedClock> m_clock;
};

} // namespace orbitledge::testing
