#include "platform/linux/bus/SessionBusSignal.h"

#include "platform/linux/bus/SignalRelay.h"

#include <QDBusConnection>

namespace orbitledge::detail {

void relaySignal(const SessionBusSignal &signal, const QByteArray &signature, QObject *receiver,
    std::function<void(const QDBusMessage &)> handler)
{
    // A child of the receiver, with which it goes.
    auto *const relay = new SignalRelay(QString::fromLatin1(signature), std::move(handler), receiver);
    QDBusConnection::sessionBus().connect(
        signal.sender, signal.path, signal.interface, signal.name, relay, SLOT(take(QDBusMessage)));
}

} // namespace orbitledge::detail
