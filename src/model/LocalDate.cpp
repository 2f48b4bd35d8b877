#include "model/LocalDate.h"

#include "model/FixedText.h"
#include "model/FloorDivide.h"

#include <array>

namespace orbitledge {

namespace {

constexpr qint64 daysPerEra = 146097; // the Gregorian calendar repeats every 400 years
constexpr qint64 yearsPerEra = 400;
constexpr qint64 largestYear = 999'999'999;

bool isLeapYear(qint64 year)
{
    return year % 4 == 0 && (year % 100 != 0 || year % 400 == 0);
}

qint64 monthLength(qint64 year, qint64 month)
{
    constexpr std::array<qint64, 12> lengths{31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    return month == 2 && isLeapYear(year) ? 29 : lengths[static_cast<std::size_t>(month - 1)];
}

/// One optional sign, then digits only; a sign alone is no number.
std::optional<qint64> parseInteger(std::string_view text)
{
    const bool hasSign = !text.empty() && (text.front() == '+' || text.front() == '-');
    const bool negative = hasSign && text.front() == '-';
    text.remove_prefix(hasSign ? 1 : 0);
    if (text.empty())
        return std::nullopt;
    qint64 value = 0;
    for (const char c : text) {
        if (c < '0' || c > '9')
            return std::nullopt;
        value = value * 10 + (c - '0');
    }
    return negative ? -value : value;
}

} // namespace

std::optional<LocalDate> LocalDate::fromText(std::string_view text)
{
    if (text.size() != 10 || text[4] != '-' || text[7] != '-')
        return std::nullopt;
    const auto year = parseInteger(text.substr(0, 4));
    const auto month = parseInteger(text.substr(5, 2));
    const auto day = parseInteger(text.substr(8, 2));
    if (!year || !month || !day)
        return std::nullopt;
    const LocalDate date{*year, *month, *day};
    if (!date.isValid())
        return std::nullopt;
    return date;
}

// Both conversions count years from March, so that the leap day is a year's last.

LocalDate LocalDate::fromDaysSinceEpoch(qint64 days)
{
    constexpr qint64 epochInEras = 719468; // 1970-01-01, counted from 0000-03-01
    const qint64 shifted = days + epochInEras;
    const qint64 era = floorDivide(shifted, daysPerEra);
    const qint64 dayOfEra = shifted - era * daysPerEra;
    const qint64 yearOfEra = (dayOfEra - dayOfEra / 1460 + dayOfEra / 36524 - dayOfEra / 146096) / 365;
    const qint64 dayOfYear = dayOfEra - (365 * yearOfEra + yearOfEra / 4 - yearOfEra / 100);
    const qint64 monthFromMarch = (5 * dayOfYear + 2) / 153;
    const qint64 month = monthFromMarch < 10 ? monthFromMarch + 3 : monthFromMarch - 9;
    return {
        .year = era * yearsPerEra + yearOfEra + (month <= 2 ? 1 : 0),
        .month = month,
        .day = dayOfYear - (153 * monthFromMarch + 2) / 5 + 1,
    };
}

qint64 LocalDate::daysSinceEpoch() const
{
    const qint64 yearFromMarch = month <= 2 ? year - 1 : year;
    const qint64 monthFromMarch = month > 2 ? month - 3 : month + 9;
    const qint64 era = floorDivide(yearFromMarch, yearsPerEra);
    const qint64 yearOfEra = yearFromMarch - era * yearsPerEra;
    const qint64 dayOfYear = (153 * monthFromMarch + 2) / 5 + day - 1;
    const qint64 dayOfEra = yearOfEra * 365 + yearOfEra / 4 - yearOfEra / 100 + dayOfYear;
    return era * daysPerEra + dayOfEra - 719468;
}

bool LocalDate::isValid() const
{
    return year >= 1 && year <= largestYear && month >= 1 && month <= 12 && day >= 1
        && day <= monthLength(year, month);
}

QString LocalDate::text() const
{
    FixedText text;
    text.date(*this);
    return QString::fromLatin1(text.view());
}

} // namespace orbitledge
