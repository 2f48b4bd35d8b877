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

/// What comes back, which may be an error. The bus starts who is to answer, unless the message says that it
/// should not.
QCoro::Task<QDBusMessage> callSessionBus(QDBusMessage message, std::chrono::milliseconds limit);

/// The same without limit, for what may take a person's time: the bus tells of one who went away.
QCoro::Task<QDBusMessage> callSessionBusPatiently(QDBusMessage message);

/// Is what came back no error?
bool isAnswer(const QDBusMessage &message);

/// Does the error say no more than that no answer came?
bool isSilence(const QDBusMessage &error);

} // namespace orbitledge
