#include "platform/linux/notifications/NotificationDaemon.h"

#include "platform/linux/bus/NameOwner.h"
#include "platform/linux/bus/SessionBusCall.h"
#include "platform/linux/bus/SessionBusSignal.h"

#include <QDBusConnection>

#include <utility>

namespace orbitledge {

using namespace Qt::StringLiterals;
using std::chrono::milliseconds;

namespace {

constexpr auto serviceName = "org.freedesktop.Notifications"_L1;
constexpr auto objectPath = "/org/freedesktop/Notifications"_L1;

QDBusMessage methodOf(const QString &daemon, const QString &method)
{
    return QDBusMessage::createMethodCall(daemon, objectPath, serviceName, method);
}

} // namespace

NotificationDaemon::NotificationDaemon(NotificationSender sender, milliseconds patience)
    : m_sender(std::move(sender))
    , m_patience(patience)
{
}

QCoro::Task<bool> NotificationDaemon::awaken(std::shared_ptr<NotificationDaemon> daemon)
{
    ++daemon->m_finding;
    auto finding = find(daemon);
    const bool isFound = co_await finding;
    --daemon->m_finding;
    daemon->hearEarlyOnes();
    co_return isFound;
}

QCoro::Task<bool> NotificationDaemon::find(std::shared_ptr<NotificationDaemon> daemon)
{
    if (!daemon->m_isListening) {
        const bool hasBus = co_await reachSessionBus();
        if (!hasBus)
            co_return false;
        daemon->listen();
    }
    // Asked anew each time: to a mute one nothing is sent, since it would show all of it when it comes to
    // life again. Starts one where the bus can.
    const QDBusMessage answer
        = co_await callSessionBus(methodOf(serviceName, u"GetServerInformation"_s), daemon->m_patience);
    if (!isAnswer(answer))
        co_return false;
    if (answer.service() == daemon->m_owner)
        co_return true;

    const QDBusMessage skills
        = co_await callSessionBus(methodOf(answer.service(), u"GetCapabilities"_s), daemon->m_patience);
    const QDBusMessage bus = co_await callSessionBus(busMethod(u"GetId"_s), daemon->m_patience);
    if (!isAnswer(skills) || !isAnswer(bus))
        co_return false;
    daemon->m_isGnomeShell = answer.arguments().value(0).toString() == u"gnome-shell";
    daemon->m_skills = skills.arguments().value(0).toStringList();
    daemon->m_owner = answer.service();
    daemon->m_name = bus.arguments().value(0).toString() + daemon->m_owner;
    co_return true;
}

QCoro::Task<std::optional<quint32>> NotificationDaemon::show(
    std::shared_ptr<NotificationDaemon> daemon, NotificationContent content, quint32 replaced)
{
    if (daemon->m_owner.isEmpty())
        co_return std::nullopt;
    // That very one, since another one may not have the skills, nor what is to be replaced.
    QDBusMessage message = methodOf(daemon->m_owner, u"Notify"_s);
    message.setArguments(daemon->arguments(content, replaced));
    // Without limit: somebody who is slow shows it yet, and the bus tells of one who went away.
    const QDBusMessage answer = co_await callSessionBusPatiently(message);
    const quint32 number = answer.arguments().value(0).toUInt();
    if (!isAnswer(answer) || number == 0)
        co_return std::nullopt;
    co_return number;
}

QString NotificationDaemon::sender() const
{
    return m_isListening ? QDBusConnection::sessionBus().baseService() : QString();
}

QCoro::Task<bool> NotificationDaemon::isSenderThere(
    std::shared_ptr<NotificationDaemon> daemon, QString sender)
{
    const auto isThere = co_await hasNameOwner(sender, daemon->m_patience);
    co_return isThere.value_or(true); // a click has one effect, or none
}

void NotificationDaemon::close(quint32 number) const
{
    if (m_owner.isEmpty())
        return;
    QDBusMessage message = methodOf(m_owner, u"CloseNotification"_s);
    message << number;
    QDBusConnection::sessionBus().send(message);
}

void NotificationDaemon::listen()
{
    if (std::exchange(m_isListening, true))
        return; // another call was first
    // From anybody; who sent it is looked at when it comes.
    const auto signal = [](const QString &name) {
        return SessionBusSignal{.sender = {}, .path = objectPath, .interface = serviceName, .name = name};
    };
    hearSignal(signal(u"ActionInvoked"_s), this, &NotificationDaemon::actionInvoked);
    hearSignal(signal(u"ActivationToken"_s), this, &NotificationDaemon::activationToken);
    hearSignal(signal(u"NotificationClosed"_s), this, &NotificationDaemon::notificationClosed);
    hearSignal({.sender = {},
                   .path = u"/org/freedesktop/DBus/Local"_s,
                   .interface = u"org.freedesktop.DBus.Local"_s,
                   .name = u"Disconnected"_s},
        this, &NotificationDaemon::ownerLost);
    connect(&m_watcher, &QDBusServiceWatcher::serviceOwnerChanged, this, &NotificationDaemon::followOwner);
    m_watcher.setWatchMode(QDBusServiceWatcher::WatchForOwnerChange);
    m_watcher.setConnection(QDBusConnection::sessionBus());
    m_watcher.addWatchedService(serviceName);
}

void NotificationDaemon::followOwner(
    const QString & /*service*/, const QString & /*oldOwner*/, const QString &newOwner)
{
    ownerLost();
    if (!newOwner.isEmpty())
        Q_EMIT appeared();
}

void NotificationDaemon::ownerLost()
{
    const bool hadOne = !m_owner.isEmpty();
    m_owner.clear();
    m_name.clear();
    if (hadOne)
        Q_EMIT gone();
}

QList<QVariant> NotificationDaemon::arguments(const NotificationContent &content, quint32 replaced) const
{
    QVariantMap hints;
    // GNOME Shell takes back what belongs to an application as soon as its sender leaves the bus; what
    // belongs to none stays.
    if (!m_sender.isShortLived || !m_isGnomeShell)
        hints.insert(u"desktop-entry"_s, m_sender.applicationId);
    if (content.sound == NotificationSound::Default && replaced == 0)
        hints.insert(u"sound-name"_s, u"message-new-instant"_s); // of the Sound Naming Specification
    else
        hints.insert(u"suppress-sound"_s, true);
    QStringList actions;
    if (m_skills.contains(u"actions"_s))
        actions = {u"default"_s, u"Open"_s};
    const bool hasMarkup = m_skills.contains(u"body-markup"_s);
    constexpr int asLongAsUsual = -1;
    return {m_sender.name, replaced, m_sender.applicationId, content.title,
        hasMarkup ? content.body.toHtmlEscaped() : content.body, actions, hints, asLongAsUsual};
}

/// Somebody may click on what an earlier run has shown while this one is only just starting.
bool NotificationDaemon::comesEarly(std::function<void()> again)
{
    constexpr std::size_t most = 100; // anybody on the bus may send as many as they like
    if (!m_owner.isEmpty() || m_finding == 0 || m_early.size() >= most)
        return false;
    m_early.push_back(std::move(again));
    return true;
}

void NotificationDaemon::hearEarlyOnes()
{
    if (m_finding > 0)
        return;
    for (const std::function<void()> &again : std::exchange(m_early, {}))
        again();
}

bool NotificationDaemon::isFromDaemon(const QDBusMessage &message) const
{
    return !m_owner.isEmpty() && message.service() == m_owner;
}

void NotificationDaemon::actionInvoked(uint number, const QString &action, const QDBusMessage &message)
{
    if (comesEarly([this, number, action, message] { actionInvoked(number, action, message); }))
        return;
    if (!isFromDaemon(message) || action != u"default")
        return;
    const QString token = number == m_tokenNumber ? std::exchange(m_token, {}) : QString();
    Q_EMIT chosen(number, token);
}

void NotificationDaemon::activationToken(uint number, const QString &token, const QDBusMessage &message)
{
    if (comesEarly([this, number, token, message] { activationToken(number, token, message); }))
        return;
    if (!isFromDaemon(message))
        return;
    m_tokenNumber = number;
    m_token = token;
}

void NotificationDaemon::notificationClosed(uint number, uint reason, const QDBusMessage &message)
{
    if (comesEarly([this, number, reason, message] { notificationClosed(number, reason, message); }))
        return;
    if (isFromDaemon(message))
        Q_EMIT closed(number);
}

} // namespace orbitledge
