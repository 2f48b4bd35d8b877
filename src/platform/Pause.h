#pragma once

#include "platform/OneShot.h"

#include <QCoroTask>

#include <chrono>
#include <variant>

namespace orbitledge {

/// Ends when `duration` has passed, for a loop that tries again.
inline QCoro::Task<void> pauseFor(std::chrono::milliseconds duration)
{
    OneShot<std::monostate> never;
    (void)co_await never.settledWithin(duration);
}

} // namespace orbitledge
