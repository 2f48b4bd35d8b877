#pragma once

#include "model/LocalDate.h"

#include <QList>

#include <array>
#include <optional>

namespace orbitledge::demo {

enum class BillingCycle { Monthly, Yearly, Weekly, Quarterly };

inline constexpr std::array billingCycles{
    BillingCycle::Monthly, BillingCycle::Yearly, BillingCycle::Weekly, BillingCycle::Quarterly};

/// The word by which a cycle travels and is stored.
QLatin1StringView cycleText(BillingCycle cycle);
/// In any case; "annual" and "annually" are "yearly" as well.
std::optional<BillingCycle> cycleFromText(QStringView text);

LocalDate addDays(const LocalDate &date, qint64 days);
/// The same day of another month, or that month's last day where it is shorter.
LocalDate addMonths(const LocalDate &date, qint64 months);

/// Renewal number `index` of a subscription that renews on `anchor` (number 0). Always counted from the
/// anchor, so that the 31st that February had to shorten comes back in March.
LocalDate renewal(const LocalDate &anchor, BillingCycle cycle, qint64 index);

/// The first renewal that is not before `day`, and never one before the anchor.
LocalDate firstRenewalFrom(const LocalDate &day, const LocalDate &anchor, BillingCycle cycle);

/// Every renewal from `first` to `last`, both included, and never one before the anchor.
QList<LocalDate> renewalsBetween(
    const LocalDate &first, const LocalDate &last, const LocalDate &anchor, BillingCycle cycle);

/// Where the next renewal of an active subscription stands today. One of yesterday stays: the day is over
/// here, but not yet everywhere west of here.
LocalDate rolledForward(
    const LocalDate &next, const LocalDate &today, const LocalDate &anchor, BillingCycle cycle);

} // namespace orbitledge::demo
