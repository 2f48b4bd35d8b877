#include "platform/linux/bus/SignalRelay.h"

#include <utility>

namespace orbitledge {

SignalRelay::SignalRelay(QString signature, Handler handler, QObject *receiver)
    : QObject(receiver)
    , m_signature(std::move(signature))
    , m_handler(std::move(handler))
{
}

void SignalRelay::take(const QDBusMessage &message)
{
    if (!m_signature.isEmpty() && message.signature() != m_signature)
        return;
    const Handler handler = m_handler; // who is called may do away with the receiver, and with this
    handler(message);
}

} // namespace orbitledge
