#include "platform/linux/notifications/DesktopNotificationDisplay.h"

#include "platform/SerialQueue.h"

#include <QCoroDBusPendingCall>
#include <QDBusConnection>
#include <QDBusError>
#include <QDBusMessage>
#include <QDBusPendingCall>
#include <QDBusServiceWatcher>

#include <limits>
#include <utility>

namespace orbitledge {

using namespace Qt::StringLiterals;
using std::chrono::milliseconds;

namespace {

const QString serviceName = u"org.freedesktop.Notifications"_s;
const QString objectPath = u"/org/freedesktop/Notifications"_s;

QDBusMessage method(const QString &name)
{
    return QDBusMessage::createMethodCall(serviceName, objectPath, serviceName, name);
}

QDBusMessage busMethod(const QString &name)
{
    return QDBusMessage::createMethodCall(
        u"org.freedesktop.DBus"_s, u"/org/freedesktop/DBus"_s, u"org.freedesktop.DBus"_s, name);
}

QDBusPendingCall call(const QDBusMessage &message, milliseconds limit)
{
    return QDBusConnection::sessionBus().asyncCall(message, static_cast<int>(limit.count()));
}

bool isAnswer(const QDBusMessage &message)
{
    return message.type() == QDBusMessage::ReplyMessage;
}

} // namespace

/// The daemon as it is seen over the bus, kept alive by the calls that wait for it.
class NotificationDaemon final : public QObject {
    Q_OBJECT

public:
    using Sender = DesktopNotificationDisplay::Sender;

    NotificationDaemon(Sender sender, milliseconds patience)
        : m_sender(std::move(sender))
        , m_patience(patience)
    {
    }

    // Free of the object that waits for it.
    static QCoro::Task<bool> awaken(std::shared_ptr<NotificationDaemon> daemon)
    {
        if (!daemon->m_isListening) {
            auto connect = [] { return QDBusConnection::sessionBus().isConnected(); };
            auto connecting = daemon->m_connecting.run(std::move(connect));
            const bool isConnected = co_await connecting;
            if (!isConnected)
                co_return false;
            daemon->listen();
        }
        // Asked anew each time: to a mute one nothing is sent, since it would show all of it when it comes to
        // life again. Starts one where the bus can.
        const QDBusPendingCall asking = call(method(u"GetServerInformation"_s), daemon->m_patience);
        const QDBusMessage answer = co_await asking;
        if (!isAnswer(answer))
            co_return false;
        if (answer.service() == daemon->m_owner)
            co_return true;

        const QDBusPendingCall askingSkills = call(method(u"GetCapabilities"_s), daemon->m_patience);
        const QDBusMessage skills = co_await askingSkills;
        const QDBusPendingCall askingBus = call(busMethod(u"GetId"_s), daemon->m_patience);
        const QDBusMessage busId = co_await askingBus;
        if (!isAnswer(skills) || !isAnswer(busId) || skills.service() != answer.service())
            co_return false;
        daemon->m_skills = skills.arguments().value(0).toStringList();
        daemon->m_owner = answer.service();
        daemon->m_name = busId.arguments().value(0).toString() + daemon->m_owner;
        co_return true;
    }

    static QCoro::Task<std::optional<quint32>> show(
        std::shared_ptr<NotificationDaemon> daemon, NotificationContent content, quint32 replaced)
    {
        QDBusMessage message = method(u"Notify"_s);
        message.setArguments(daemon->arguments(content, replaced));
        // Without limit: somebody who is slow shows it yet, and the bus tells of one who went away.
        const QDBusPendingCall showing
            = QDBusConnection::sessionBus().asyncCall(message, std::numeric_limits<int>::max());
        const QDBusMessage answer = co_await showing;
        const quint32 number = answer.arguments().value(0).toUInt();
        if (!isAnswer(answer) || number == 0)
            co_return std::nullopt;
        co_return number;
    }

    void close(quint32 number) const
    {
        if (m_owner.isEmpty())
            return;
        QDBusMessage message = QDBusMessage::createMethodCall(
            m_owner, objectPath, serviceName, u"CloseNotification"_s); // this very one, and no other
        message << number;
        message.setAutoStartService(false);
        (void)call(message, m_patience);
    }

    [[nodiscard]] const QString &name() const { return m_name; }

Q_SIGNALS:
    void appeared();
    void chosen(quint32 number, const QString &activationToken);
    void closed(quint32 number);

private:
    void listen()
    {
        m_isListening = true;
        QDBusConnection bus = QDBusConnection::sessionBus();
        // From anybody; who sent it is looked at when it comes. The toolkit would ask the bus, and wait.
        const auto listenTo = [&](const QString &name, const char *slot) {
            bus.connect(QString(), objectPath, serviceName, name, this, slot);
        };
        listenTo(u"ActionInvoked"_s, SLOT(actionInvoked(uint, QString, QDBusMessage)));
        listenTo(u"ActivationToken"_s, SLOT(activationToken(uint, QString, QDBusMessage)));
        listenTo(u"NotificationClosed"_s, SLOT(notificationClosed(uint, uint, QDBusMessage)));
        m_watcher.setConnection(bus);
        m_watcher.setWatchMode(QDBusServiceWatcher::WatchForOwnerChange);
        m_watcher.addWatchedService(serviceName);
        connect(&m_watcher, &QDBusServiceWatcher::serviceOwnerChanged, this,
            [this](const QString &, const QString &, const QString &newOwner) {
                m_owner.clear();
                m_name.clear();
                if (!newOwner.isEmpty())
                    Q_EMIT appeared();
            });
    }

    [[nodiscard]] QList<QVariant> arguments(const NotificationContent &content, quint32 replaced) const
    {
        const bool hasSound = content.sound == NotificationSound::Default && replaced == 0;
        QVariantMap hints{{u"desktop-entry"_s, m_sender.applicationId}};
        if (hasSound)
            hints.insert(u"sound-name"_s, u"message-new-instant"_s); // Sound Naming Specification
        else
            hints.insert(u"suppress-sound"_s, true);
        QStringList actions;
        if (m_skills.contains(u"actions"_s))
            actions = {u"default"_s, u"Open"_s};
        const QString body
            = m_skills.contains(u"body-markup"_s) ? content.body.toHtmlEscaped() : content.body;
        constexpr int asLongAsUsual = -1;
        return {m_sender.name, replaced, m_sender.applicationId, content.title, body, actions, hints,
            asLongAsUsual};
    }

    [[nodiscard]] bool isFromDisplay(const QDBusMessage &message) const
    {
        return !m_owner.isEmpty() && message.service() == m_owner;
    }

    Q_SLOT void actionInvoked(uint number, const QString &action, const QDBusMessage &message)
    {
        if (!isFromDisplay(message) || action != u"default")
            return;
        const QString token = number == m_tokenNumber ? std::exchange(m_token, {}) : QString();
        Q_EMIT chosen(number, token);
    }

    Q_SLOT void activationToken(uint number, const QString &token, const QDBusMessage &message)
    {
        if (!isFromDisplay(message))
            return;
        m_tokenNumber = number;
        m_token = token;
    }

    Q_SLOT void notificationClosed(uint number, uint /*reason*/, const QDBusMessage &message)
    {
        if (isFromDisplay(message))
            Q_EMIT closed(number);
    }

    Sender m_sender;
    milliseconds m_patience;
    SerialQueue m_connecting;
    QDBusServiceWatcher m_watcher;
    bool m_isListening = false;
    /// Of whom was awakened last; its unique name on the bus.
    QString m_owner;
    QString m_name;
    QStringList m_skills;
    quint32 m_tokenNumber = 0;
    QString m_token;
};

DesktopNotificationDisplay::DesktopNotificationDisplay(Sender sender, milliseconds patience)
    : m_daemon(std::make_shared<NotificationDaemon>(std::move(sender), patience))
{
    connect(m_daemon.get(), &NotificationDaemon::appeared, this, &NotificationDisplay::appeared);
    connect(m_daemon.get(), &NotificationDaemon::chosen, this, &NotificationDisplay::chosen);
    connect(m_daemon.get(), &NotificationDaemon::closed, this, &NotificationDisplay::closed);
}

DesktopNotificationDisplay::~DesktopNotificationDisplay() = default;

QCoro::Task<bool> DesktopNotificationDisplay::awaken()
{
    return NotificationDaemon::awaken(m_daemon);
}

QString DesktopNotificationDisplay::name() const
{
    return m_daemon->name();
}

QCoro::Task<std::optional<quint32>> DesktopNotificationDisplay::show(
    NotificationContent content, quint32 replaced)
{
    return NotificationDaemon::show(m_daemon, std::move(content), replaced);
}

void DesktopNotificationDisplay::close(quint32 number)
{
    m_daemon->close(number);
}

} // namespace orbitledge

#include "DesktopNotificationDisplay.moc"
