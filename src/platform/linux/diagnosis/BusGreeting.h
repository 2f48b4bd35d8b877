#pragma once

#include "platform/Diagnosis.h"

#include <QByteArray>

#include <chrono>
#include <functional>

namespace orbitledge {

/// Whether somebody at the session bus's address answers as a bus does (D-Bus Specification, "Authentication
/// Protocol"). The library that makes connections waits much longer for one that does not, and would start a
/// bus of its own where the environment names none. An address that is no socket of this machine counts as
/// reached: only a connection can tell. Blocks, `limit` at most.
findings::Bus greetSessionBus(
    const std::function<QByteArray(const char *)> &variable, std::chrono::milliseconds limit);

} // namespace orbitledge
