#pragma once

#include "locale/TimeZone.h"
#include "platform/Clock.h"
#include "platform/FileStore.h"
#include "platform/UserNotificationCenter.h"
#include "platform/WallClockAlarm.h"
#include "platform/linux/notifications/NotificationDisplay.h"
#include "platform/linux/notifications/NotificationQueue.h"
#include "platform/linux/notifications/NotificationSwitches.h"
#include "platform/linux/notifications/UnattendedDelivery.h"

#include <chrono>
#include <filesystem>
#include <functional>
#include <memory>

namespace orbitledge {

/// Keeps requests in a file and shows them when their time has come. One process at a time is in charge of
/// the file, by a lock beside it.
///
/// A Linux desktop has no permission dialogue. Permission is not determined until it was asked for once,
/// which the file remembers; from then on there is permission where somebody on the session bus shows
/// notifications, or can be started, and where the desktop's own switches for this program are not off.
///
/// May be destroyed at any time; those who wait for an answer get one.
class DesktopNotificationCenter final : public UserNotificationCenter {
    Q_OBJECT

public:
    struct Parts {
        std::filesystem::path file;
        std::shared_ptr<FileStore> files;
        std::shared_ptr<const Clock> clock;
        std::function<TimeZone()> timeZone;
        std::shared_ptr<WallClockAlarm> alarm;
        std::shared_ptr<NotificationDisplay> display;
        std::shared_ptr<NotificationSwitches> switches;
        std::shared_ptr<UnattendedDelivery> unattended;
    };

    /// `patience` is how long another process that is in charge is waited for, `pause` the first time between
    /// two attempts to show or save what could not be; it grows.
    explicit DesktopNotificationCenter(Parts parts,
        std::chrono::milliseconds patience = std::chrono::seconds(10),
        std::chrono::milliseconds pause = std::chrono::minutes(1));
    ~DesktopNotificationCenter() override;

    /// Takes charge, and shows what comes due from now on, first what came due while nothing ran. Without
    /// it nothing is shown. Tries again later where another process is in charge.
    void start();

    /// Shows what is due, without `start`, and has the next delivery started. Ends after `limit`; where
    /// something is still being shown by then, another process may take charge, and what comes of it is not
    /// recorded. Where the person switched the program's notifications off, nothing is shown.
    QCoro::Task<NotificationDelivery> deliverDue(std::chrono::milliseconds limit);

    /// For a process that does not deliver: has the next delivery started, and tells whether something is due
    /// already. By then nothing else of this is under way.
    QCoro::Task<bool> prepareDelivery();

    /// Shows nothing any more from now on, and tells nobody of clicks. Waits until it is recorded what is
    /// being shown at the moment, so that the next process does not show it again, and until the next
    /// delivery is arranged, but not longer than `limit`.
    QCoro::Task<void> finish(std::chrono::milliseconds limit);

    /// What this process has shown and is shown yet, as far as is known, for who follows the clicks on it
    /// when this one has gone.
    [[nodiscard]] QList<ShownNotification> shown() const;

    QCoro::Task<NotificationSettings> settings() override;
    QCoro::Task<tl::expected<bool, NotificationError>> requestAuthorization(
        NotificationOptions options) override;
    QCoro::Task<tl::expected<QList<PendingNotification>, NotificationError>> pendingRequests() override;
    QCoro::Task<void> removePendingRequests(QStringList identifiers) override;
    QCoro::Task<tl::expected<void, NotificationError>> add(NotificationRequest request) override;
    QCoro::Task<tl::expected<void, NotificationError>> save() override;
    QCoro::Task<tl::expected<void, NotificationError>> forget(QString prefix) override;

private:
    class State;
    std::shared_ptr<State> m_state;
};

} // namespace orbitledge
