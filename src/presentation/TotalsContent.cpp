#include "presentation/TotalsContent.h"

namespace orbitledge {

using namespace Qt::StringLiterals;

TotalsContent totalsOf(const TimelineSnapshot &snapshot, const QString &currency, const LocalDate &today,
    DateFormatter &dates, MoneyFormatter &money, NumberFormatter &numbers)
{
    return {
        .month = dates.monthAndYear(today),
        .monthlyTotal = money.text(snapshot.monthlyTotal, currency),
        .perMonth = u" / month"_s,
        .active = numbers.text(snapshot.activeCount) + u" active"_s,
        .remaining = money.text(snapshot.remainingThisMonth, currency),
        .remainingCaption = u"left to charge"_s,
        .isPartial = snapshot.totalsArePartial,
        .partialLabel = u"Partial total"_s,
        .partialHelp = u"Some subscriptions could not be converted to your profile currency."_s,
    };
}

} // namespace orbitledge
