#include "platform/linux/notifications/DesktopNotificationDisplay.h"

#include "platform/linux/notifications/NotificationDaemon.h"

#include <utility>

namespace orbitledge {

DesktopNotificationDisplay::DesktopNotificationDisplay(
    NotificationSender sender, std::chrono::milliseconds patience)
    : m_daemon(std::make_shared<NotificationDaemon>(std::move(sender), patience))
{
    connect(m_daemon.get(), &NotificationDaemon::appeared, this, &NotificationDisplay::appeared);
    connect(m_daemon.get(), &NotificationDaemon::gone, this, &NotificationDisplay::gone);
    connect(m_daemon.get(), &NotificationDaemon::chosen, this, &NotificationDisplay::chosen);
    connect(m_daemon.get(), &NotificationDaemon::closed, this, &NotificationDisplay::closed);
}

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

QString DesktopNotificationDisplay::sender() const
{
    return m_daemon->sender();
}

QCoro::Task<bool> DesktopNotificationDisplay::isSenderThere(QString sender)
{
    return NotificationDaemon::isSenderThere(m_daemon, std::move(sender));
}

void DesktopNotificationDisplay::close(quint32 number)
{
    m_daemon->close(number);
}

} // namespace orbitledge
