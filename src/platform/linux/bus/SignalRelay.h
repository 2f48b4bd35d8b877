#pragma once

#include <QDBusMessage>
#include <QObject>

#include <functional>

namespace orbitledge {

/// What the toolkit calls for a signal. Since its slot takes the message alone, there are no values that the
/// toolkit could find to be of the wrong type.
class SignalRelay final : public QObject {
    Q_OBJECT

public:
    using Handler = std::function<void(const QDBusMessage &)>;

    SignalRelay(QString signature, Handler handler, QObject *receiver);

    Q_SLOT void take(const QDBusMessage &message);

private:
    QString m_signature;
    Handler m_handler;
};

} // namespace orbitledge
