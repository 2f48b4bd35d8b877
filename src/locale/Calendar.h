#pragma once

#include "locale/Locale.h"
#include "locale/TimeZone.h"
#include "model/Instant.h"
#include "model/LocalDate.h"

#include <chrono>
#include <optional>

namespace orbitledge {

/// Numbered as in ICU and in most calendars of programs.
enum class Weekday { Sunday = 1, Monday, Tuesday, Wednesday, Thursday, Friday, Saturday };

/// From `start` to `end`. Both ends belong to it: what ends at the next midnight contains that midnight.
struct DateInterval {
    Instant start;
    Instant end;

    [[nodiscard]] bool contains(Instant instant) const { return start <= instant && instant <= end; }

    friend bool operator==(const DateInterval &, const DateInterval &) = default;
};

/// The proleptic Gregorian calendar in one zone, with the week and the texts of one region. The one place
/// where days become instants and instants days. A cheap value that can be shared between threads.
///
/// Wall times that a zone skipped or repeated are decided as `TimeZone` says. What follows for days, in
/// Europe/Berlin (clocks forward on 2026-03-29, back on 2026-10-25):
///
/// - The 29th of March has 23 hours, the 25th of October 25; each counts as one day.
/// - 02:30 on the 28th of March plus one day is 03:30 on the 29th; plus two days is 02:30 on the 30th.
class Calendar {
public:
    Calendar(TimeZone timeZone, Locale locale);

    [[nodiscard]] const TimeZone &timeZone() const { return m_timeZone; }
    [[nodiscard]] const Locale &locale() const { return m_locale; }
    [[nodiscard]] Weekday firstWeekday() const { return m_firstWeekday; }

    /// The date that the wall clock shows at an instant.
    [[nodiscard]] LocalDate localDate(Instant instant) const;

    /// The first instant of the day that contains an instant.
    [[nodiscard]] Instant startOfDay(Instant instant) const;

    /// Midnight at the start of a day. Absent where the numbers name no day that exists, or one outside
    /// of the years that the calendar covers.
    [[nodiscard]] std::optional<Instant> midnight(const LocalDate &date) const;

    /// When the wall clock first shows that time of that day, or the next time that exists where it was
    /// skipped. Absent as `midnight` is.
    [[nodiscard]] std::optional<Instant> firstInstant(
        const LocalDate &date, std::chrono::minutes timeOfDay) const;

    /// The week, from the region's first weekday, and the month that contain an instant; each up to the
    /// first instant of the next one. Absent outside of the years that the calendar covers.
    [[nodiscard]] std::optional<DateInterval> week(Instant instant) const;
    [[nodiscard]] std::optional<DateInterval> month(Instant instant) const;

    /// The same wall time so many days later, or earlier.
    [[nodiscard]] Instant addingDays(Instant instant, qint64 days) const;

    /// Whole days from one instant to another, by the wall clock, towards zero: forward the largest n for
    /// which `from` plus n days is not after `to`; backward the same, mirrored, so yesterday is −1.
    [[nodiscard]] qint64 daysBetween(Instant from, Instant to) const;

    friend bool operator==(const Calendar &left, const Calendar &right)
    {
        return left.m_timeZone.id() == right.m_timeZone.id() && left.m_locale == right.m_locale;
    }

private:
    TimeZone m_timeZone;
    Locale m_locale;
    Weekday m_firstWeekday;
};

} // namespace orbitledge
