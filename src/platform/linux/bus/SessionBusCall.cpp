#include "platform/linux/bus/SessionBusCall.h"

#include "platform/SerialQueue.h"

#include <QCoroDBusPendingCall>
#include <QDBusConnection>
#include <QDBusError>
#include <QDBusPendingCall>

#include <algorithm>
#include <limits>

namespace orbitledge {

using namespace Qt::StringLiterals;

QDBusMessage busMethod(const QString &method)
{
    return QDBusMessage::createMethodCall(
        u"org.freedesktop.DBus"_s, u"/org/freedesktop/DBus"_s, u"org.freedesktop.DBus"_s, method);
}

QCoro::Task<bool> reachSessionBus()
{
    SerialQueue background;
    const auto connect = [] { return QDBusConnection::sessionBus().isConnected(); };
    auto connecting = background.run(connect);
    const bool isConnected = co_await connecting;
    co_return isConnected;
}

QCoro::Task<QDBusMessage> callSessionBus(QDBusMessage message, std::chrono::milliseconds limit)
{
    // The bus knows two more limits: a negative one stands for its own, the greatest for none.
    const int timeout = static_cast<int>(
        std::clamp<std::chrono::milliseconds::rep>(limit.count(), 1, std::numeric_limits<int>::max() - 1));
    const QDBusPendingCall pending = QDBusConnection::sessionBus().asyncCall(message, timeout);
    QDBusMessage reply = co_await pending;
    co_return reply;
}

QCoro::Task<QDBusMessage> callSessionBusPatiently(QDBusMessage message)
{
    const QDBusPendingCall pending
        = QDBusConnection::sessionBus().asyncCall(message, std::numeric_limits<int>::max());
    QDBusMessage reply = co_await pending;
    co_return reply;
}

bool isAnswer(const QDBusMessage &message)
{
    return message.type() == QDBusMessage::ReplyMessage;
}

bool isSilence(const QDBusMessage &error)
{
    switch (QDBusError(error).type()) {
    case QDBusError::NoReply:
    case QDBusError::Timeout:
    case QDBusError::TimedOut:
        return true;
    default:
        return false;
    }
}

} // namespace orbitledge
