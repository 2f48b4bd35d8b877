#pragma once

#include <QDBusArgument>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QMetaType>
#include <QObject>
#include <QString>

#include <functional>
#include <type_traits>
#include <utility>

namespace orbitledge {

/// Which signal of the session bus.
struct SessionBusSignal {
    /// A name as no other process ever has it, or empty for anybody. Of other names the toolkit asks the bus
    /// whose they are, and waits.
    QString sender;
    QString path;
    QString interface;
    QString name;
};

namespace detail {

/// Hands on the messages that have values of these types; all of them where `signature` is empty.
void relaySignal(const SessionBusSignal &signal, const QByteArray &signature, QObject *receiver,
    std::function<void(const QDBusMessage &)> handler);

template <typename Parameter> QByteArray signatureOf()
{
    if constexpr (std::is_same_v<Parameter, QDBusMessage>)
        return {};
    const char *const signature = QDBusMetaType::typeToSignature(QMetaType::fromType<Parameter>());
    Q_ASSERT_X(signature != nullptr, "hearSignal", "no such type passes over the bus");
    return signature;
}

template <typename Parameter> Parameter argumentOf(const QDBusMessage &message, qsizetype position)
{
    if constexpr (std::is_same_v<Parameter, QDBusMessage>)
        return message;
    else
        return qdbus_cast<Parameter>(message.arguments().at(position));
}

template <typename... Parameters, typename Receiver, typename Handler, std::size_t... Positions>
void callHandler(
    Receiver *receiver, Handler handler, const QDBusMessage &message, std::index_sequence<Positions...>)
{
    (receiver->*handler)(argumentOf<Parameters>(message, static_cast<qsizetype>(Positions))...);
}

} // namespace detail

/// Has `handler` called for each such signal, as long as there is `receiver`, on whose thread this is. It
/// takes the signal's values and, last, the message itself if it wants that.
///
/// A signal whose values have other types than the handler's is passed over: anybody on the bus may send what
/// they like, and the toolkit, left to compare them itself, ends the program. A handler without values is
/// called whatever comes along.
template <typename Receiver, typename... Parameters>
void hearSignal(const SessionBusSignal &signal, Receiver *receiver, void (Receiver::*handler)(Parameters...))
{
    detail::relaySignal(signal, (QByteArray() + ... + detail::signatureOf<std::decay_t<Parameters>>()),
        receiver, [receiver, handler](const QDBusMessage &message) {
            detail::callHandler<std::decay_t<Parameters>...>(
                receiver, handler, message, std::index_sequence_for<Parameters...>());
        });
}

} // namespace orbitledge
