#include "platform/linux/SystemClock.h"

#include <chrono>

namespace orbitledge {

Instant SystemClock::now() const
{
    const auto sinceEpoch = std::chrono::system_clock::now().time_since_epoch();
    return Instant::fromMillisecondsSinceEpoch(
        std::chrono::floor<std::chrono::milliseconds>(sinceEpoch).count());
}

} // namespace orbitledge
