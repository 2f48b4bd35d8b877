#pragma once

#include "locale/DateFormatter.h"
#include "locale/MoneyFormatter.h"
#include "model/Subscription.h"

#include <QString>

#include <optional>

namespace orbitledge {

// What a row says about a subscription, the same wherever rows are shown.

/// A cancellation is known by its day, or else by the status.
bool isCancelled(const Subscription &subscription);

/// The charge of one cycle: in the profile's currency where the service gave it, else in its own.
QString costText(const Subscription &subscription, const QString &profileCurrency, MoneyFormatter &money);

/// "Mar 14 · Streaming": the renewal's day, then what matters most about it, be it a cancellation that is
/// scheduled, a status that is not active, the category, or the billing cycle.
QString subtitle(const Subscription &subscription, DateFormatter &dates);

/// "today", "in 3 days", "2 days ago"; empty where there is no renewal to wait for.
QString daysText(std::optional<qint64> daysUntilRenewal);

enum class Urgency {
    None,
    /// Within seven days.
    Soon,
    /// Within three days, or overdue.
    Urgent,
};

Urgency urgencyOf(std::optional<qint64> daysUntilRenewal);

} // namespace orbitledge
