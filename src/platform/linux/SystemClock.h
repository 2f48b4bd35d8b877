#pragma once

#include "platform/Clock.h"

namespace orbitledge {

/// The machine's real-time clock.
class SystemClock final : public Clock {
public:
    [[nodiscard]] Instant now() const override;
};

} // namespace orbitledge
