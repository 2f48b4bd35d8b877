#include "cli/Status.h"

#include "timeline/TimelineBuilder.h"

namespace orbitledge {

using namespace Qt::StringLiterals;

Status statusOf(const CacheSnapshot &snapshot, const View &view)
{
    const QString currency = view.currency.isEmpty() ? u"USD"_s : view.currency;
    const TimelineSnapshot timeline
        = buildTimeline(snapshot.subscriptions, currency, view.now, view.calendar);
    Status status{
        .badgeCount = timeline.badgeCount,
        .withinSevenDays = {},
        .nextRenewal = {},
        .monthlyTotal = timeline.monthlyTotal,
        .remainingThisMonth = timeline.remainingThisMonth,
        .totalsArePartial = timeline.totalsArePartial,
        .activeCount = timeline.activeCount,
        .currency = currency,
        .fetchedAt = snapshot.fetchedAt,
    };
    constexpr qint64 sevenDays = 7;
    // One section after the other they come by their day, and what is overdue comes first.
    for (const TimelineSection &section : timeline.sections) {
        for (const TimelineEntry &entry : section.entries) {
            const qint64 days = entry.daysUntilRenewal.value_or(-1);
            if (days < 0)
                continue;
            const ComingRenewal renewal{.subscription = entry.subscription, .daysUntilRenewal = days};
            if (!status.nextRenewal)
                status.nextRenewal = renewal;
            if (days > sevenDays)
                return status;
            status.withinSevenDays.append(renewal);
        }
    }
    return status;
}

} // namespace orbitledge
