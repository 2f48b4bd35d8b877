#pragma once

#include "locale/Calendar.h"
#include "timeline/TimelineSnapshot.h"

namespace orbitledge {

/// Derives what there is to show from the subscriptions as they are held, the profile's currency (ISO 4217,
/// in any case), the current instant and the calendar. A pure function: the same input gives the same
/// snapshot, nothing is read or changed elsewhere, and it cannot fail. Cost: n log n.
///
/// Boundaries: an interval contains both its ends, so a renewal on the first day of next week counts as
/// "This week" and one on the first of next month as "Later this month", while the sum of what is left this
/// month ends strictly before the next one.
TimelineSnapshot buildTimeline(const QList<Subscription> &subscriptions, const QString &profileCurrency,
    Instant now, const Calendar &calendar);

} // namespace orbitledge
