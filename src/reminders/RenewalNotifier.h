#pragma once

#include "locale/Calendar.h"
#include "model/Subscription.h"
#include "platform/SerialQueue.h"
#include "platform/Turns.h"
#include "platform/UserDefaults.h"
#include "platform/UserNotificationCenter.h"

#include <QCoroTask>
#include <QUrl>

#include <memory>
#include <optional>

namespace orbitledge {

/// What became of the reminders.
struct ReminderSynchronisation {
    /// How many there were too many.
    qint64 skippedOverBudget = 0;
    /// Why some were refused, for people.
    std::optional<QString> failure;

    friend bool operator==(const ReminderSynchronisation &, const ReminderSynchronisation &) = default;
};

/// Keeps the notification centre's pending reminders in step with the subscriptions. Operations on them run
/// one after the other, in the order of the calls; it may be destroyed while they run. Belongs to one thread.
class RenewalNotifier {
public:
    /// `webURL` is of the web application, whose pages reminders open.
    RenewalNotifier(
        std::shared_ptr<UserNotificationCenter> center, std::shared_ptr<UserDefaults> defaults, QUrl webURL);

    [[nodiscard]] QCoro::Task<NotificationAuthorization> authorizationStatus();
    /// Whether a notification would be seen, as an alert or in a list.
    [[nodiscard]] QCoro::Task<bool> canPresent();
    /// Asks for alerts and sound. Whether they were granted.
    [[nodiscard]] QCoro::Task<tl::expected<bool, NotificationError>> requestAuthorization();

    /// Replaces the pending reminders by those that are due for these subscriptions now.
    [[nodiscard]] QCoro::Task<ReminderSynchronisation> synchronise(QList<Subscription> subscriptions,
        qint64 leadDays, Instant now, QString profileCurrency, Calendar calendar);

    /// Removes all reminders, takes back those that are shown, and forgets which were shown.
    [[nodiscard]] QCoro::Task<tl::expected<void, NotificationError>> removeAll();

    [[nodiscard]] QCoro::Task<tl::expected<void, NotificationError>> sendTestNotification();

private:
    std::shared_ptr<UserNotificationCenter> m_center;
    std::shared_ptr<UserDefaults> m_defaults;
    QUrl m_webURL;
    /// Plans, which may take longer than a frame where there are many subscriptions.
    std::shared_ptr<SerialQueue> m_background = std::make_shared<SerialQueue>();
    std::shared_ptr<Turns> m_turns = std::make_shared<Turns>();
};

} // namespace orbitledge
