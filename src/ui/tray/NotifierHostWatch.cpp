#include "ui/tray/NotifierHostWatch.h"

#include "platform/linux/bus/SessionBusCall.h"
#include "platform/linux/bus/SessionBusSignal.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVariant>
#include <QPointer>

#include <chrono>
#include <utility>

namespace orbitledge::ui {

using namespace Qt::StringLiterals;

namespace {

constexpr auto serviceName = "org.kde.StatusNotifierWatcher"_L1;
constexpr auto objectPath = "/StatusNotifierWatcher"_L1;

constexpr auto patience = std::chrono::seconds(5);

QDBusMessage question()
{
    QDBusMessage message = QDBusMessage::createMethodCall(
        serviceName, objectPath, u"org.freedesktop.DBus.Properties"_s, u"Get"_s);
    message << QString(serviceName) << u"IsStatusNotifierHostRegistered"_s;
    // Whoever wants a tray brings one; nobody is started for us.
    message.setAutoStartService(false);
    return message;
}

} // namespace

NotifierHostWatch::NotifierHostWatch(QObject *parent)
    : QObject(parent)
{
}

QCoro::Task<> NotifierHostWatch::start()
{
    const QPointer<NotifierHostWatch> self(this);
    const bool hasBus = co_await reachSessionBus();
    if (!self || !hasBus)
        co_return;
    self->follow();
    auto asking = self->askOnce();
    co_await asking;
}

void NotifierHostWatch::follow()
{
    // From anybody: what is said is not believed anyway, but asked for.
    for (const auto &name : {u"StatusNotifierHostRegistered"_s, u"StatusNotifierHostUnregistered"_s}) {
        hearSignal({.sender = {}, .path = objectPath, .interface = serviceName, .name = name}, this,
            &NotifierHostWatch::ask);
    }
    connect(&m_watcher, &QDBusServiceWatcher::serviceOwnerChanged, this,
        [this](const QString &, const QString &, const QString &newOwner) {
            // The next one begins without a host.
            setHasHost(false);
            if (!newOwner.isEmpty())
                ask();
            else
                ++m_question;
        });
    m_watcher.setWatchMode(QDBusServiceWatcher::WatchForOwnerChange);
    m_watcher.setConnection(QDBusConnection::sessionBus());
    m_watcher.addWatchedService(serviceName);
}

void NotifierHostWatch::ask()
{
    askOnce();
}

QCoro::Task<> NotifierHostWatch::askOnce()
{
    const QPointer<NotifierHostWatch> self(this);
    const int number = ++m_question;
    const QDBusMessage answer = co_await callSessionBus(question(), patience);
    if (!self || self->m_question != number)
        co_return;
    const auto value = answer.arguments().value(0).value<QDBusVariant>();
    self->setHasHost(isAnswer(answer) && value.variant().toBool());
}

void NotifierHostWatch::setHasHost(bool hasHost)
{
    if (std::exchange(m_hasHost, hasHost) != hasHost)
        Q_EMIT changed();
}

} // namespace orbitledge::ui
