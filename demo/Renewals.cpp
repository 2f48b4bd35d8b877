#include "demo/Renewals.h"

#include "model/FloorDivide.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace orbitledge::demo {

namespace {

qint64 monthNumber(const LocalDate &date)
{
    return date.year * 12 + date.month - 1;
}

qint64 monthsOf(BillingCycle cycle)
{
    switch (cycle) {
    case BillingCycle::Monthly:
        return 1;
    case BillingCycle::Quarterly:
        return 3;
    case BillingCycle::Yearly:
        return 12;
    case BillingCycle::Weekly:
        break;
    }
    return 0;
}

/// A number whose renewal is not after `day`, and close before it.
qint64 indexNear(const LocalDate &day, const LocalDate &anchor, BillingCycle cycle)
{
    if (cycle == BillingCycle::Weekly)
        return floorDivide(day.daysSinceEpoch() - anchor.daysSinceEpoch(), 7);
    return floorDivide(monthNumber(day) - monthNumber(anchor), monthsOf(cycle)) - 1;
}

} // namespace

QLatin1StringView cycleText(BillingCycle cycle)
{
    switch (cycle) {
    case BillingCycle::Monthly:
        return "monthly"_L1;
    case BillingCycle::Yearly:
        return "yearly"_L1;
    case BillingCycle::Weekly:
        return "weekly"_L1;
    case BillingCycle::Quarterly:
        return "quarterly"_L1;
    }
    return {};
}

std::optional<BillingCycle> cycleFromText(QStringView text)
{
    const auto is = [text](QLatin1StringView word) { return text.compare(word, Qt::CaseInsensitive) == 0; };
    for (const BillingCycle cycle : billingCycles) {
        if (is(cycleText(cycle)))
            return cycle;
    }
    if (is("annual"_L1) || is("annually"_L1))
        return BillingCycle::Yearly;
    return std::nullopt;
}

LocalDate addDays(const LocalDate &date, qint64 days)
{
    return LocalDate::fromDaysSinceEpoch(date.daysSinceEpoch() + days);
}

LocalDate addMonths(const LocalDate &date, qint64 months)
{
    const qint64 number = monthNumber(date) + months;
    LocalDate result{floorDivide(number, 12), number - floorDivide(number, 12) * 12 + 1, date.day};
    while (!result.isValid() && result.day > 28)
        --result.day;
    return result;
}

LocalDate renewal(const LocalDate &anchor, BillingCycle cycle, qint64 index)
{
    return cycle == BillingCycle::Weekly ? addDays(anchor, index * 7)
                                         : addMonths(anchor, index * monthsOf(cycle));
}

LocalDate firstRenewalFrom(const LocalDate &day, const LocalDate &anchor, BillingCycle cycle)
{
    qint64 index = std::max<qint64>(0, indexNear(day, anchor, cycle));
    LocalDate date = renewal(anchor, cycle, index);
    while (date < day)
        date = renewal(anchor, cycle, ++index);
    return date;
}

QList<LocalDate> renewalsBetween(
    const LocalDate &first, const LocalDate &last, const LocalDate &anchor, BillingCycle cycle)
{
    QList<LocalDate> result;
    qint64 index = std::max<qint64>(0, indexNear(first, anchor, cycle));
    for (LocalDate date = renewal(anchor, cycle, index); date <= last;
        date = renewal(anchor, cycle, ++index)) {
        if (date >= first)
            result.append(date);
    }
    return result;
}

LocalDate rolledForward(
    const LocalDate &next, const LocalDate &today, const LocalDate &anchor, BillingCycle cycle)
{
    const LocalDate yesterday = addDays(today, -1);
    return next >= yesterday ? next : firstRenewalFrom(yesterday, anchor, cycle);
}

} // namespace orbitledge::demo
