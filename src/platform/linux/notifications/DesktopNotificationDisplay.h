#pragma once

#include "platform/linux/notifications/NotificationDisplay.h"
#include "platform/linux/notifications/NotificationSender.h"

#include <chrono>
#include <memory>

namespace orbitledge {

class NotificationDaemon;

/// Who shows notifications on the session bus. May be destroyed at any time; what runs then ends on its own.
class DesktopNotificationDisplay final : public NotificationDisplay {
    Q_OBJECT

public:
    /// `patience` is for answers to questions that take no time.
    explicit DesktopNotificationDisplay(
        NotificationSender sender, std::chrono::milliseconds patience = std::chrono::seconds(10));

    QCoro::Task<bool> awaken() override;
    [[nodiscard]] QString name() const override;
    QCoro::Task<std::optional<quint32>> show(NotificationContent content, quint32 replaced) override;
    [[nodiscard]] QString sender() const override;
    QCoro::Task<bool> isSenderThere(QString sender) override;
    void close(quint32 number) override;

private:
    std::shared_ptr<NotificationDaemon> m_daemon;
};

} // namespace orbitledge
