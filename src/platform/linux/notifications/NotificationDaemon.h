#pragma once

#include "platform/UserNotificationCenter.h"
#include "platform/linux/notifications/NotificationSender.h"

#include <QCoroTask>
#include <QDBusMessage>
#include <QDBusServiceWatcher>
#include <QObject>

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace orbitledge {

/// The daemon of the Desktop Notifications Specification, as it is seen over the session bus. Kept alive by
/// the calls that wait for it.
class NotificationDaemon final : public QObject {
    Q_OBJECT

public:
    /// `patience` is for answers to questions that take no time.
    NotificationDaemon(NotificationSender sender, std::chrono::milliseconds patience);

    // As in NotificationDisplay.

    static QCoro::Task<bool> awaken(std::shared_ptr<NotificationDaemon> daemon);
    static QCoro::Task<std::optional<quint32>> show(
        std::shared_ptr<NotificationDaemon> daemon, NotificationContent content, quint32 replaced);
    [[nodiscard]] QString sender() const;
    static QCoro::Task<bool> isSenderThere(std::shared_ptr<NotificationDaemon> daemon, QString sender);
    void close(quint32 number) const;
    [[nodiscard]] const QString &name() const { return m_name; }

Q_SIGNALS:
    void appeared();
    void chosen(quint32 number, const QString &activationToken);
    void closed(quint32 number);
    void gone();

private:
    static QCoro::Task<bool> find(std::shared_ptr<NotificationDaemon> daemon);
    void listen();
    /// Whether it is not known yet who is to be heard; then `again` is called when it is.
    [[nodiscard]] bool comesEarly(std::function<void()> again);
    void hearEarlyOnes();
    void followOwner(const QString &service, const QString &oldOwner, const QString &newOwner);
    [[nodiscard]] QList<QVariant> arguments(const NotificationContent &content, quint32 replaced) const;
    [[nodiscard]] bool isFromDaemon(const QDBusMessage &message) const;

    // Called by the bus.
    void actionInvoked(uint number, const QString &action, const QDBusMessage &message);
    void activationToken(uint number, const QString &token, const QDBusMessage &message);
    void ownerLost();
    void notificationClosed(uint number, uint reason, const QDBusMessage &message);

    NotificationSender m_sender;
    std::chrono::milliseconds m_patience;
    QDBusServiceWatcher m_watcher;
    bool m_isListening = false;
    /// Of whom was awakened last: its unique name on the bus, and that together with the bus's own.
    QString m_owner;
    QString m_name;
    QStringList m_skills;
    bool m_isGnomeShell = false;
    /// What came while it was found out who shows notifications, in its order.
    std::vector<std::function<void()>> m_early;
    int m_finding = 0;
    quint32 m_tokenNumber = 0;
    QString m_token;
};

} // namespace orbitledge
