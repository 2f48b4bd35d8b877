#pragma once

#include "locale/DateFormatter.h"
#include "timeline/TimelineSnapshot.h"

namespace orbitledge {

/// One column of the week strip.
struct WeekDayContent {
    /// "S", in capitals.
    QString weekday;
    /// "14"
    QString day;
    bool isToday = false;
    /// "#RRGGBB"
    QList<QString> dots;
    /// The whole column, for those who do not see it.
    QString label;

    friend bool operator==(const WeekDayContent &, const WeekDayContent &) = default;
};

QList<WeekDayContent> weekOf(const TimelineSnapshot &snapshot, DateFormatter &dates);

} // namespace orbitledge
