#include "locale/Calendar.h"

#include "locale/RegionData.h"
#include "model/FloorDivide.h"

namespace orbitledge {

namespace {

constexpr qint64 millisecondsPerDay = 86'400'000;

// A hundred million days to either side of 1970, so that no step from inside can overflow.
constexpr qint64 coveredDays = 100'000'000;

bool isCovered(qint64 days)
{
    return days >= -coveredDays && days <= coveredDays;
}

LocalDate firstOfNextMonth(const LocalDate &date)
{
    return date.month == 12 ? LocalDate{date.year + 1, 1, 1} : LocalDate{date.year, date.month + 1, 1};
}

} // namespace

Calendar::Calendar(TimeZone timeZone, Locale locale)
    : m_timeZone(std::move(timeZone))
    , m_locale(std::move(locale))
    , m_firstWeekday(static_cast<Weekday>(firstWeekdayNumber(m_locale)))
{
}

LocalDate Calendar::localDate(Instant instant) const
{
    return LocalDate::fromDaysSinceEpoch(floorDivide(m_timeZone.wallClock(instant), millisecondsPerDay));
}

Instant Calendar::startOfDay(Instant instant) const
{
    return m_timeZone.startOfDay(floorDivide(m_timeZone.wallClock(instant), millisecondsPerDay));
}

std::optional<Instant> Calendar::midnight(const LocalDate &date) const
{
    if (!date.isValid())
        return std::nullopt;
    const qint64 days = date.daysSinceEpoch();
    if (!isCovered(days))
        return std::nullopt;
    return m_timeZone.instantAt(days * millisecondsPerDay);
}

std::optional<Instant> Calendar::firstInstant(const LocalDate &date, std::chrono::minutes timeOfDay) const
{
    if (!midnight(date))
        return std::nullopt;
    return m_timeZone.firstInstantFrom(
        date.daysSinceEpoch() * millisecondsPerDay + std::chrono::milliseconds(timeOfDay).count());
}

std::optional<DateInterval> Calendar::week(Instant instant) const
{
    const qint64 days = floorDivide(m_timeZone.wallClock(instant), millisecondsPerDay);
    if (!isCovered(days))
        return std::nullopt;
    constexpr qint64 thursday = 4; // of 1970-01-01, counted from Sunday
    const qint64 first = static_cast<qint64>(m_firstWeekday) - 1;
    const qint64 sinceFirst = days + thursday - first;
    const qint64 start = days - (sinceFirst - floorDivide(sinceFirst, 7) * 7);
    return DateInterval{m_timeZone.startOfDay(start), m_timeZone.startOfDay(start + 7)};
}

std::optional<DateInterval> Calendar::month(Instant instant) const
{
    const LocalDate date = localDate(instant);
    if (!isCovered(date.daysSinceEpoch()))
        return std::nullopt;
    const LocalDate first{date.year, date.month, 1};
    return DateInterval{m_timeZone.startOfDay(first.daysSinceEpoch()),
        m_timeZone.startOfDay(firstOfNextMonth(date).daysSinceEpoch())};
}

Instant Calendar::addingDays(Instant instant, qint64 days) const
{
    // No change at all must not move the second of two equal wall times to the first.
    if (days == 0)
        return instant;
    return m_timeZone.instantAt(m_timeZone.wallClock(instant) + days * millisecondsPerDay);
}

qint64 Calendar::daysBetween(Instant from, Instant to) const
{
    if (from == to)
        return 0;
    const qint64 step = from < to ? 1 : -1;
    const auto passes = [&](qint64 days) {
        const Instant reached = addingDays(from, days);
        return step > 0 ? reached > to : reached < to;
    };
    // The difference of the dates is off by one at most where no clock was moved by a whole day.
    qint64 days = localDate(to).daysSinceEpoch() - localDate(from).daysSinceEpoch();
    while (!passes(days + step))
        days += step;
    while (days != 0 && passes(days))
        days -= step;
    return days * step > 0 ? days : 0;
}

} // namespace orbitledge
