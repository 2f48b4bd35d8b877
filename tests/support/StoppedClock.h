#pragma once

#include "platform/Clock.h"

namespace orbitledge::testing {

/// A clock that stands still until a test moves it.
class StoppedClock final : public Clock {
public:
    explicit StoppedClock(Instant now = *Instant::fromText("2026-03-18T12:00:00Z"))
        : m_now(now)
    {
    }

    [[nodiscard]] Instant now() const override { return m_now; }
    void set(Instant now) { m_now = now; }

private:
    Instant m_now;
};

} // namespace orbitledge::testing
