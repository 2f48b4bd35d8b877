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
            if (!entry.daysUntilRenewal || *entry.daysUntilRenewal < 0)
                continue;
            if (!status.nextRenewal)
                status.nextRenewal = entry;
            if (*entry.daysUntilRenewal > sevenDays)
                return status;
            status.withinSevenDays.append(entry);
        }
    }
    return status;
}

} // namespace orbitledge
