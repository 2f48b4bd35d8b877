#pragma once

#include "model/Instant.h"

namespace orbitledge {

/// Tells the time; given to whoever needs it, so that tests can move it.
class Clock {
public:
    Clock() = default;
    Clock(const Clock &) = delete;
    Clock &operator=(const Clock &) = delete;
    virtual ~Clock() = default;

    [[nodiscard]] virtual Instant now() const = 0;
};

} // namespace orbitledge
