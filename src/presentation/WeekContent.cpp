#include "presentation/WeekContent.h"

namespace orbitledge {

using namespace Qt::StringLiterals;

QList<WeekDayContent> weekOf(const TimelineSnapshot &snapshot, DateFormatter &dates)
{
    QList<WeekDayContent> week;
    week.reserve(snapshot.week.size());
    for (const TimelineDay &day : snapshot.week) {
        week.append({
            .weekday = dates.narrowWeekday(day.localDate).toUpper(),
            .day = dates.day(day.localDate),
            .isToday = day.isToday,
            .dots = day.renewalColors,
            .label
            = dates.completeDate(day.localDate) + u", %1 renewal"_s.arg(QString::number(day.renewalCount)),
        });
    }
    return week;
}

} // namespace orbitledge
