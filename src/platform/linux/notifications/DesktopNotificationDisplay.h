#pragma once

#include "platform/linux/notifications/NotificationDisplay.h"

#include <chrono>
#include <memory>

namespace orbitledge {

class NotificationDaemon;

/// Who shows notifications on the session bus, as the Desktop Notifications Specification has it.
///
/// May be destroyed at any time; what runs then ends on its own.
class DesktopNotificationDisplay final : public NotificationDisplay {
    Q_OBJECT

public:
    /// How the desktop finds the program: its name for people, and that of its desktop entry and icon.
    struct Sender {
        QString name;
        QString applicationId;
    };

    /// `patience` is for answers to questions that take no time.
    explicit DesktopNotificationDisplay(
        Sender sender, std::chrono::milliseconds patience = std::chrono::seconds(10));
    ~DesktopNotificationDisplay() override;

    QCoro::Task<bool> awaken() override;
    [[nodiscard]] QString name() const override;
    QCoro::Task<std::optional<quint32>> show(NotificationContent content, quint32 replaced) override;
    void close(quint32 number) override;

private:
    std::shared_ptr<NotificationDaemon> m_daemon;
};

} // namespace orbitledge
