#pragma once

#include <QHashFunctions>
#include <QString>

#include <compare>
#include <optional>
#include <string_view>

namespace orbitledge {

/// A calendar day without time or zone, in the proleptic Gregorian calendar.
///
/// A plain value: the three numbers may also name a day that does not exist, which `isValid` tells.
/// Only `Calendar` turns a day into an instant.
struct LocalDate {
    qint64 year = 1;
    /// 1 to 12.
    qint64 month = 1;
    /// 1 to the month's length.
    qint64 day = 1;

    /// Reads exactly "yyyy-MM-dd", the form of a full-date of RFC 3339. Each part is an integer of ASCII
    /// digits with at most one sign, and exactly four, two and two characters long, so "+987-01-01" is
    /// the year 987 while "2026-3-05" is refused. Absent where the text or the day is not valid.
    static std::optional<LocalDate> fromText(std::string_view text);

    /// The day that lies `days` after 1970-01-01.
    static LocalDate fromDaysSinceEpoch(qint64 days);

    /// Days after 1970-01-01, negative before it. Meaningful for valid days.
    [[nodiscard]] qint64 daysSinceEpoch() const;

    /// Whether the day exists: 2024-02-29 does, 2026-02-30 and 2026-13-01 do not. Years count from 1;
    /// the largest is 999,999,999.
    [[nodiscard]] bool isValid() const;

    /// "%04d-%02d-%02d" of year, month and day.
    [[nodiscard]] QString text() const;

    friend auto operator<=>(const LocalDate &, const LocalDate &) = default;
};

inline size_t qHash(const LocalDate &date, size_t seed = 0) noexcept
{
    return qHashMulti(seed, date.year, date.month, date.day);
}

} // namespace orbitledge
