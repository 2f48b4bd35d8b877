#pragma once

#include "locale/Calendar.h"
#include "model/Subscription.h"
#include "reminders/RenewalNotificationPlan.h"

#include <QList>
#include <QSet>

namespace orbitledge {

/// What planning depends on besides the subscriptions.
struct ReminderSettings {
    /// How many days before a renewal it is announced; taken as 0 where it is less, as 14 where it is more.
    qint64 leadDays = 0;
    /// ISO 4217 code; amounts are told in this currency or not at all.
    QString currency;
    /// Of the web application, whose pages reminders open.
    QUrl webURL;
};

struct RenewalNotificationPlanning {
    /// In the order of the subscriptions.
    QList<RenewalNotificationPlan> plans;
    /// The keys of reminders that were, or are now, shown at once because their moment had passed.
    QSet<QString> ledger;
    /// How many plans there were too many.
    qint64 skippedOverBudget = 0;

    friend bool operator==(const RenewalNotificationPlanning &, const RenewalNotificationPlanning &)
        = default;
};

/// The most reminders that are planned at a time: the earliest ones.
inline constexpr qsizetype mostReminders = 60;

/// Plans a reminder at 09:00, by the calendar's wall clock, for each renewal of an active subscription that
/// is not over. One whose moment has passed is shown at once, unless the ledger has its key.
RenewalNotificationPlanning planReminders(const QList<Subscription> &subscriptions,
    const ReminderSettings &settings, Instant now, const Calendar &calendar, const QSet<QString> &ledger);

} // namespace orbitledge
