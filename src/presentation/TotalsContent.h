#pragma once

#include "locale/DateFormatter.h"
#include "locale/MoneyFormatter.h"
#include "locale/NumberFormatter.h"
#include "timeline/TimelineSnapshot.h"

namespace orbitledge {

/// The panel's head: what a month costs, and what of this one is left.
struct TotalsContent {
    /// "March 2026"
    QString month;
    QString monthlyTotal;
    /// " / month", behind the total.
    QString perMonth;
    /// "14 active"
    QString active;
    QString remaining;
    /// Under it.
    QString remainingCaption;
    /// Not everything could be counted.
    bool isPartial = false;
    QString partialLabel;
    QString partialHelp;

    friend bool operator==(const TotalsContent &, const TotalsContent &) = default;
};

TotalsContent totalsOf(const TimelineSnapshot &snapshot, const QString &currency, const LocalDate &today,
    DateFormatter &dates, MoneyFormatter &money, NumberFormatter &numbers);

} // namespace orbitledge
