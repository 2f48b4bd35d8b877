#pragma once

#include <QCoroTask>
#include <QDBusMessage>
#include <QString>

#include <chrono>

namespace orbitledge {

/// Is there a session bus? The first connection of a process is made on another thread, since connecting
/// waits. Before anything else that uses the bus.
QCoro::Task<bool> reachSessionBus();

/// A call to the bus itself.
QDBusMessage busMethod(const QString &method);

/// What comes back, which may be an error. Nobody is started to answer unless the message says so.
QCoro::Task<QDBusMessage> callSessionBus(QDBusMessage message, std::chrono::milliseconds limit);

} // namespace orbitledge
