#include "locale/Calendar.h"

#include "support/Printing.h"
#include "support/TestMain.h"
#include "support/Times.h"

#include <rapidcheck.h>

#include <random>

using namespace orbitledge;
using namespace orbitledge::testing;

// Zones are the system's tzdata, first weekdays ICU's. Rows about the future hold as long as the rules that
// are in force now.

namespace {

constexpr qint64 coveredDays = 100'000'000;

Instant atDay(qint64 days)
{
    return Instant::fromMillisecondsSinceEpoch(days * day);
}

} // namespace

class CalendarTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void shouldStartTheWeekAsTheRegionDoes_data()
    {
        QTest::addColumn<QByteArray>("locale");
        QTest::addColumn<Weekday>("expected");
        for (const char *locale : {"en_EG", "ar_EG", "ar_AE"})
            QTest::newRow(locale) << QByteArray(locale) << Weekday::Saturday;
        for (const char *locale : {"en_US", "ja_JP", "pt_BR", "en_IN", "hi_IN", "en_CA", "he_IL"})
            QTest::newRow(locale) << QByteArray(locale) << Weekday::Sunday;
        for (const char *locale : {"de_DE", "en_GB", "zh_CN", "fr_FR", "ru_RU", "en_DE"})
            QTest::newRow(locale) << QByteArray(locale) << Weekday::Monday;
    }
    void shouldStartTheWeekAsTheRegionDoes()
    {
        QFETCH(QByteArray, locale);
        QFETCH(Weekday, expected);
        QCOMPARE(calendarIn("UTC", locale).firstWeekday(), expected);
    }

    void shouldStartTheWeekAsDatesAreWrittenNotTheMoney()
    {
        const Locale english = localeNamed("en_US");
        const Locale mixed{.dates = "de_DE", .money = english.money, .collation = english.collation};
        QCOMPARE(Calendar(zoneNamed("UTC"), mixed).firstWeekday(), Weekday::Monday);
    }

    void shouldFindTheWeekOfAnInstant_data()
    {
        QTest::addColumn<QByteArray>("zone");
        QTest::addColumn<QByteArray>("locale");
        QTest::addColumn<Instant>("instant");
        QTest::addColumn<DateInterval>("expected");
        const auto row = [](const char *name, const char *zone, const char *locale, const char *instant,
                             const char *start, const char *end) {
            QTest::newRow(name) << QByteArray(zone) << QByteArray(locale) << at(instant)
                                << DateInterval{at(start), at(end)};
        };
        row("from Saturday", "UTC", "en_EG", "2026-03-05T12:00:00Z", "2026-02-28T00:00:00Z",
            "2026-03-07T00:00:00Z");
        row("from Sunday", "UTC", "en_US", "2026-03-05T12:00:00Z", "2026-03-01T00:00:00Z",
            "2026-03-08T00:00:00Z");
        row("from Monday", "UTC", "de_DE", "2026-03-05T12:00:00Z", "2026-03-02T00:00:00Z",
            "2026-03-09T00:00:00Z");
        row("first moment", "UTC", "de_DE", "2026-03-02T00:00:00Z", "2026-03-02T00:00:00Z",
            "2026-03-09T00:00:00Z");
        row("a second before", "UTC", "de_DE", "2026-03-01T23:59:59Z", "2026-02-23T00:00:00Z",
            "2026-03-02T00:00:00Z");
        row("over the end of a year", "UTC", "de_DE", "2027-01-02T00:00:00Z", "2026-12-28T00:00:00Z",
            "2027-01-04T00:00:00Z");
        row("over a leap day", "UTC", "de_DE", "2024-02-27T00:00:00Z", "2024-02-26T00:00:00Z",
            "2024-03-04T00:00:00Z");
        row("before 1970", "UTC", "en_US", "1969-12-31T23:00:00Z", "1969-12-28T00:00:00Z",
            "1970-01-04T00:00:00Z");
        row("year 1", "UTC", "de_DE", "0001-01-03T00:00:00Z", "0001-01-01T00:00:00Z", "0001-01-08T00:00:00Z");
        row("167 hours", "Europe/Berlin", "de_DE", "2026-03-25T00:00:00Z", "2026-03-22T23:00:00Z",
            "2026-03-29T22:00:00Z");
        row("169 hours", "Europe/Berlin", "de_DE", "2026-10-21T00:00:00Z", "2026-10-18T22:00:00Z",
            "2026-10-25T23:00:00Z");
        row("midnight skipped on its first day", "Asia/Beirut", "en_US", "2026-03-31T00:00:00Z",
            "2026-03-28T22:00:00Z", "2026-04-04T21:00:00Z");
        row("midnight skipped at its end", "Asia/Beirut", "en_US", "2026-03-25T00:00:00Z",
            "2026-03-21T22:00:00Z", "2026-03-28T22:00:00Z");
        row("midnight repeated on its first day", "America/Havana", "en_US", "2026-11-03T00:00:00Z",
            "2026-11-01T04:00:00Z", "2026-11-08T05:00:00Z");
        row("a day skipped whole", "Pacific/Apia", "en_US", "2011-12-29T00:00:00Z", "2011-12-25T10:00:00Z",
            "2011-12-31T10:00:00Z");
        row("the day skipped would be its first", "Pacific/Apia", "ar_EG", "2012-01-03T00:00:00Z",
            "2011-12-30T10:00:00Z", "2012-01-06T10:00:00Z");
        row("summer of 2060", "America/New_York", "en_US", "2060-07-07T12:00:00Z", "2060-07-04T04:00:00Z",
            "2060-07-11T04:00:00Z");
    }
    void shouldFindTheWeekOfAnInstant()
    {
        QFETCH(QByteArray, zone);
        QFETCH(QByteArray, locale);
        QFETCH(Instant, instant);
        QFETCH(DateInterval, expected);
        const auto week = calendarIn(zone, locale).week(instant);
        QVERIFY(week);
        QCOMPARE(*week, expected);
    }

    void shouldFindTheMonthOfAnInstant_data()
    {
        QTest::addColumn<QByteArray>("zone");
        QTest::addColumn<Instant>("instant");
        QTest::addColumn<DateInterval>("expected");
        const auto row = [](const char *name, const char *zone, const char *instant, const char *start,
                             const char *end) {
            QTest::newRow(name) << QByteArray(zone) << at(instant) << DateInterval{at(start), at(end)};
        };
        row("31 days", "UTC", "2026-03-05T12:00:00Z", "2026-03-01T00:00:00Z", "2026-04-01T00:00:00Z");
        row("first moment", "UTC", "2026-03-01T00:00:00Z", "2026-03-01T00:00:00Z", "2026-04-01T00:00:00Z");
        row("last second", "UTC", "2026-03-31T23:59:59Z", "2026-03-01T00:00:00Z", "2026-04-01T00:00:00Z");
        row("December", "UTC", "2026-12-31T12:00:00Z", "2026-12-01T00:00:00Z", "2027-01-01T00:00:00Z");
        row("February", "UTC", "2026-02-10T12:00:00Z", "2026-02-01T00:00:00Z", "2026-03-01T00:00:00Z");
        row("February of a leap year", "UTC", "2024-02-29T12:00:00Z", "2024-02-01T00:00:00Z",
            "2024-03-01T00:00:00Z");
        row("February of 1900", "UTC", "1900-02-10T12:00:00Z", "1900-02-01T00:00:00Z",
            "1900-03-01T00:00:00Z");
        row("February of 2000", "UTC", "2000-02-10T12:00:00Z", "2000-02-01T00:00:00Z",
            "2000-03-01T00:00:00Z");
        row("another month than in UTC", "Asia/Tokyo", "2026-03-31T15:00:00Z", "2026-03-31T15:00:00Z",
            "2026-04-30T15:00:00Z");
        row("an hour less", "Europe/Berlin", "2026-03-05T12:00:00Z", "2026-02-28T23:00:00Z",
            "2026-03-31T22:00:00Z");
        row("an hour more", "Europe/Berlin", "2026-10-05T12:00:00Z", "2026-09-30T22:00:00Z",
            "2026-10-31T23:00:00Z");
        row("midnight skipped on its first day", "America/Asuncion", "2017-10-15T12:00:00Z",
            "2017-10-01T04:00:00Z", "2017-11-01T03:00:00Z");
        row("midnight skipped at its end", "America/Asuncion", "2017-09-15T12:00:00Z", "2017-09-01T04:00:00Z",
            "2017-10-01T04:00:00Z");
        row("midnight repeated on its first day", "America/Havana", "2026-11-15T12:00:00Z",
            "2026-11-01T04:00:00Z", "2026-12-01T05:00:00Z");
        row("a day less", "Pacific/Apia", "2011-12-05T12:00:00Z", "2011-12-01T10:00:00Z",
            "2011-12-31T10:00:00Z");
        row("summer of 2060", "America/New_York", "2060-07-07T12:00:00Z", "2060-07-01T04:00:00Z",
            "2060-08-01T04:00:00Z");
    }
    void shouldFindTheMonthOfAnInstant()
    {
        QFETCH(QByteArray, zone);
        QFETCH(Instant, instant);
        QFETCH(DateInterval, expected);
        const auto month = calendarIn(zone).month(instant);
        QVERIFY(month);
        QCOMPARE(*month, expected);
    }

    void shouldHaveNoIntervalsOutsideOfTheYearsItCovers()
    {
        const Calendar calendar = calendarIn("UTC");
        for (const qint64 edge : {coveredDays, -coveredDays}) {
            QVERIFY(calendar.week(atDay(edge)));
            QVERIFY(calendar.month(atDay(edge)));
            const qint64 outside = edge + (edge > 0 ? 1 : -1);
            QVERIFY(!calendar.week(atDay(outside)));
            QVERIFY(!calendar.month(atDay(outside)));
        }
    }

    void shouldHaveNoMidnightOfADayThatDoesNotExist_data()
    {
        QTest::addColumn<LocalDate>("date");
        QTest::newRow("30 February") << LocalDate{2026, 2, 30};
        QTest::newRow("29 February of a common year") << LocalDate{2026, 2, 29};
        QTest::newRow("29 February of 2100") << LocalDate{2100, 2, 29};
        QTest::newRow("31 April") << LocalDate{2026, 4, 31};
        QTest::newRow("day 0") << LocalDate{2026, 4, 0};
        QTest::newRow("month 0") << LocalDate{2026, 0, 1};
        QTest::newRow("month 13") << LocalDate{2026, 13, 1};
        QTest::newRow("year 0") << LocalDate{0, 1, 1};
        QTest::newRow("a day after the years covered") << LocalDate{275'760, 9, 14};
        QTest::newRow("the largest year") << LocalDate{999'999'999, 12, 31};
    }
    void shouldHaveNoMidnightOfADayThatDoesNotExist()
    {
        QFETCH(LocalDate, date);
        QVERIFY(!calendarIn("UTC").midnight(date));
    }

    void shouldFindMidnightOfADay_data()
    {
        QTest::addColumn<QByteArray>("zone");
        QTest::addColumn<LocalDate>("date");
        QTest::addColumn<Instant>("expected");
        const auto row = [](const char *name, const char *zone, const LocalDate &date, Instant expected) {
            QTest::newRow(name) << QByteArray(zone) << date << expected;
        };
        row("leap day", "UTC", {2024, 2, 29}, at("2024-02-29T00:00:00Z"));
        row("summer", "Europe/Berlin", {2026, 7, 1}, at("2026-06-30T22:00:00Z"));
        row("skipped, Cairo", "Africa/Cairo", {2026, 4, 24}, at("2026-04-23T22:00:00Z"));
        row("repeated, Havana", "America/Havana", {2026, 11, 1}, at("2026-11-01T04:00:00Z"));
        row("once, after an hour that came twice, Cairo", "Africa/Cairo", {2026, 10, 30},
            at("2026-10-29T22:00:00Z"));
        row("day skipped whole", "Pacific/Apia", {2011, 12, 30}, at("2011-12-30T10:00:00Z"));
        row("year 1", "UTC", {1, 1, 1}, at("0001-01-01T00:00:00Z"));
        row("the last day covered", "UTC", {275'760, 9, 13}, atDay(coveredDays));
    }
    void shouldFindMidnightOfADay()
    {
        QFETCH(QByteArray, zone);
        QFETCH(LocalDate, date);
        QFETCH(Instant, expected);
        const auto midnight = calendarIn(zone).midnight(date);
        QVERIFY(midnight);
        QCOMPARE(*midnight, expected);
    }

    void shouldStartTheDayOfAnInstant_data()
    {
        QTest::addColumn<QByteArray>("zone");
        QTest::addColumn<Instant>("instant");
        QTest::addColumn<Instant>("expected");
        const auto row = [](const char *name, const char *zone, const char *instant, const char *expected) {
            QTest::newRow(name) << QByteArray(zone) << at(instant) << at(expected);
        };
        row("ordinary", "Europe/Berlin", "2026-07-01T12:00:00Z", "2026-06-30T22:00:00Z");
        row("its first moment", "Europe/Berlin", "2026-06-30T22:00:00Z", "2026-06-30T22:00:00Z");
        row("a second before", "Europe/Berlin", "2026-06-30T21:59:59Z", "2026-06-29T22:00:00Z");
        row("midnight skipped", "Africa/Cairo", "2026-04-24T12:00:00Z", "2026-04-23T22:00:00Z");
        row("first pass of the hour before midnight", "Africa/Cairo", "2026-10-29T20:30:00Z",
            "2026-10-28T21:00:00Z");
        row("second pass of the hour before midnight", "Africa/Cairo", "2026-10-29T21:30:00Z",
            "2026-10-28T21:00:00Z");
        row("second pass of the hour after midnight", "America/Havana", "2026-11-01T05:30:00Z",
            "2026-11-01T04:00:00Z");
        row("the day before, come back after midnight", "America/St_Johns", "2006-10-29T02:45:00Z",
            "2006-10-28T02:30:00Z");
        row("after midnight came again", "America/St_Johns", "2006-10-29T03:45:00Z", "2006-10-29T02:30:00Z");
    }
    void shouldStartTheDayOfAnInstant()
    {
        QFETCH(QByteArray, zone);
        QFETCH(Instant, instant);
        QFETCH(Instant, expected);
        QCOMPARE(calendarIn(zone).startOfDay(instant), expected);
    }

    void shouldKeepTheWallTimeWhenDaysAreAdded_data()
    {
        QTest::addColumn<QByteArray>("zone");
        QTest::addColumn<Instant>("instant");
        QTest::addColumn<qint64>("days");
        QTest::addColumn<Instant>("expected");
        const auto row
            = [](const char *name, const char *zone, const char *instant, qint64 days, const char *expected) {
                  QTest::newRow(name) << QByteArray(zone) << at(instant) << days << at(expected);
              };
        row("one", "UTC", "2026-02-28T12:34:56Z", 1, "2026-03-01T12:34:56Z");
        row("one, over a leap day", "UTC", "2024-02-28T12:00:00Z", 1, "2024-02-29T12:00:00Z");
        row("one back, over a year's end", "UTC", "2026-01-01T12:00:00Z", -1, "2025-12-31T12:00:00Z");
        row("over a day of 23 hours", "Europe/Berlin", "2026-03-28T11:00:00Z", 1, "2026-03-29T10:00:00Z");
        row("over a day of 25 hours", "Europe/Berlin", "2026-10-24T10:00:00Z", 1, "2026-10-25T11:00:00Z");
        row("back over a day of 25 hours", "Europe/Berlin", "2026-10-25T11:00:00Z", -1,
            "2026-10-24T10:00:00Z");
        row("into a gap", "Europe/Berlin", "2026-03-28T01:30:00Z", 1, "2026-03-29T01:30:00Z");
        row("past a gap", "Europe/Berlin", "2026-03-28T01:30:00Z", 2, "2026-03-30T00:30:00Z");
        row("into an overlap", "Europe/Berlin", "2026-10-24T00:30:00Z", 1, "2026-10-25T00:30:00Z");
        row("from the second of two equal times", "Europe/Berlin", "2026-10-25T01:30:00Z", 1,
            "2026-10-26T01:30:00Z");
        row("none, first of two equal times", "Europe/Berlin", "2026-10-25T00:30:00Z", 0,
            "2026-10-25T00:30:00Z");
        row("none, second of two equal times", "Europe/Berlin", "2026-10-25T01:30:00Z", 0,
            "2026-10-25T01:30:00Z");
        row("into a day skipped whole", "Pacific/Apia", "2011-12-29T22:00:00Z", 1, "2011-12-30T22:00:00Z");
        row("past a day skipped whole", "Pacific/Apia", "2011-12-29T22:00:00Z", 2, "2011-12-30T22:00:00Z");
        row("into a midnight that is skipped", "Africa/Cairo", "2026-04-22T22:00:00Z", 1,
            "2026-04-23T22:00:00Z");
    }
    void shouldKeepTheWallTimeWhenDaysAreAdded()
    {
        QFETCH(QByteArray, zone);
        QFETCH(Instant, instant);
        QFETCH(qint64, days);
        QFETCH(Instant, expected);
        QCOMPARE(calendarIn(zone).addingDays(instant, days), expected);
    }

    void shouldCountWholeDaysTowardsZero_data()
    {
        QTest::addColumn<QByteArray>("zone");
        QTest::addColumn<Instant>("from");
        QTest::addColumn<Instant>("to");
        QTest::addColumn<qint64>("expected");
        const auto row
            = [](const char *name, const char *zone, const char *from, const char *to, qint64 expected) {
                  QTest::newRow(name) << QByteArray(zone) << at(from) << at(to) << expected;
              };
        row("the same instant", "UTC", "2026-03-05T00:00:00Z", "2026-03-05T00:00:00Z", 0);
        row("a second", "UTC", "2026-03-05T00:00:00Z", "2026-03-05T00:00:01Z", 0);
        row("a second back, over midnight", "UTC", "2026-03-05T00:00:00Z", "2026-03-04T23:59:59Z", 0);
        row("a second short of a day", "UTC", "2026-03-05T00:00:00Z", "2026-03-05T23:59:59Z", 0);
        row("a day", "UTC", "2026-03-05T00:00:00Z", "2026-03-06T00:00:00Z", 1);
        row("yesterday", "UTC", "2026-03-05T00:00:00Z", "2026-03-04T00:00:00Z", -1);
        row("a second short of yesterday", "UTC", "2026-03-05T00:00:00Z", "2026-03-04T00:00:01Z", 0);
        row("another date, less than a day", "UTC", "2026-03-05T18:00:00Z", "2026-03-06T17:00:00Z", 0);
        row("another date, less than a day back", "UTC", "2026-03-05T06:00:00Z", "2026-03-04T07:00:00Z", 0);
        row("two dates on, less than two days", "UTC", "2026-03-05T18:00:00Z", "2026-03-07T17:00:00Z", 1);
        row("two dates back, less than two days", "UTC", "2026-03-05T06:00:00Z", "2026-03-03T07:00:00Z", -1);
        row("a leap year", "UTC", "2024-01-01T00:00:00Z", "2025-01-01T00:00:00Z", 366);
        row("a day of 23 hours", "Europe/Berlin", "2026-03-28T23:00:00Z", "2026-03-29T22:00:00Z", 1);
        row("a second short of a day of 23 hours", "Europe/Berlin", "2026-03-28T23:00:00Z",
            "2026-03-29T21:59:59Z", 0);
        row("back over a day of 23 hours", "Europe/Berlin", "2026-03-29T22:00:00Z", "2026-03-28T23:00:00Z",
            -1);
        row("a day of 25 hours", "Europe/Berlin", "2026-10-24T22:00:00Z", "2026-10-25T23:00:00Z", 1);
        row("24 hours of a day of 25", "Europe/Berlin", "2026-10-24T22:00:00Z", "2026-10-25T22:00:00Z", 0);
        row("back over a day of 25 hours", "Europe/Berlin", "2026-10-25T23:00:00Z", "2026-10-24T22:00:00Z",
            -1);
        row("24 hours back from the end of a day of 25", "Europe/Berlin", "2026-10-25T23:00:00Z",
            "2026-10-24T23:00:00Z", 0);
        row("weeks with a gap between", "Europe/Berlin", "2026-03-01T23:00:00Z", "2026-04-30T22:00:00Z", 60);
        row("to a midnight that is skipped", "Africa/Cairo", "2026-04-22T22:00:00Z", "2026-04-23T22:00:00Z",
            1);
        row("from a midnight that is skipped", "Africa/Cairo", "2026-04-23T22:00:00Z", "2026-04-24T21:00:00Z",
            0);
        row("from a midnight that is skipped, two dates on", "Africa/Cairo", "2026-04-23T22:00:00Z",
            "2026-04-25T21:00:00Z", 1);
        row("back to before a midnight that is skipped", "Africa/Cairo", "2026-04-23T22:00:00Z",
            "2026-04-22T22:00:00Z", -1);
        row("over the hour before midnight that comes twice", "Africa/Cairo", "2026-10-28T21:00:00Z",
            "2026-10-29T22:00:00Z", 1);
        row("from the first of two midnights", "America/Havana", "2026-11-01T04:00:00Z",
            "2026-11-02T05:00:00Z", 1);
        row("to the second of two midnights", "America/Havana", "2026-10-31T04:00:00Z",
            "2026-11-01T05:00:00Z", 1);
        row("on to the day before, come back after midnight", "America/St_Johns", "2006-10-29T02:30:30Z",
            "2006-10-29T02:45:00Z", 0);
        row("back from the day before, come back after midnight", "America/St_Johns", "2006-10-29T02:45:00Z",
            "2006-10-29T02:30:30Z", 0);
        row("over a day skipped whole", "Pacific/Apia", "2011-12-29T10:00:00Z", "2011-12-30T10:00:00Z", 2);
        row("back over a day skipped whole", "Pacific/Apia", "2011-12-30T10:00:00Z", "2011-12-29T10:00:00Z",
            -2);
        row("days of 2060", "America/New_York", "2060-03-13T05:00:00Z", "2060-03-15T04:00:00Z", 2);
    }
    void shouldCountWholeDaysTowardsZero()
    {
        QFETCH(QByteArray, zone);
        QFETCH(Instant, from);
        QFETCH(Instant, to);
        QFETCH(qint64, expected);
        QCOMPARE(calendarIn(zone).daysBetween(from, to), expected);
    }

    void shouldCountTheMostDaysThatFit_data() { addZoneRows(); }
    void shouldCountTheMostDaysThatFit()
    {
        QFETCH(QByteArray, zone);
        const Calendar calendar = calendarIn(zone);
        QVERIFY(rc::check("the days counted fit, and no larger number does", [&] {
            const auto halfHours = rc::gen::inRange<qint64>(0, 4 * 365 * 48);
            const Instant start = at("2009-06-01T00:00:00Z");
            const Instant from = later(start, *halfHours * 30 * minute);
            const Instant to = later(start, *halfHours * 30 * minute);
            const qint64 counted = calendar.daysBetween(from, to);
            const auto fits = [&](qint64 days) {
                const Instant reached = calendar.addingDays(from, days);
                return from <= to ? reached <= to : reached >= to;
            };
            const qint64 away = from <= to ? 1 : -1;
            RC_ASSERT(counted * away >= 0);
            RC_ASSERT(fits(counted));
            for (qint64 more = 1; more <= 3; ++more)
                RC_ASSERT(!fits(counted + more * away));
        }));
    }

    void shouldShowTheDateThatTheCLibraryShows_data() { addZoneRows(); }
    void shouldShowTheDateThatTheCLibraryShows()
    {
        QFETCH(QByteArray, zone);
        const Calendar calendar = calendarIn(zone);
        const CLibraryZone oracle(zone);
        std::mt19937_64 random(1582); // NOLINT: the same instants in every run
        std::uniform_int_distribution<qint64> seconds(
            LocalDate{1, 1, 2}.daysSinceEpoch() * 86'400, LocalDate{2600, 1, 1}.daysSinceEpoch() * 86'400);
        std::uniform_int_distribution<qint64> recentSeconds(
            0, LocalDate{2100, 1, 1}.daysSinceEpoch() * 86'400);
        for (int i = 0; i < 500; ++i) {
            const qint64 instant = i % 4 == 0 ? seconds(random) : recentSeconds(random);
            QCOMPARE(calendar.localDate(Instant::fromSecondsSinceEpoch(instant)), oracle.localDate(instant));
        }
    }

    void shouldReachFarIntoTheFuture()
    {
        // GIVEN a summer's noon of the year 40,000
        const Calendar calendar = calendarIn("America/New_York");
        const LocalDate date{40'000, 7, 1};
        const Instant noon = Instant::fromMillisecondsSinceEpoch(wallTime(date, 16));
        // THEN the rule of today is in force, and days are found both ways
        QCOMPARE(calendar.timeZone().offsetMilliseconds(noon), -4 * hour);
        QCOMPARE(calendar.localDate(noon), date);
        QCOMPARE(calendar.startOfDay(noon), Instant::fromMillisecondsSinceEpoch(wallTime(date, 4)));
        QCOMPARE(calendar.midnight(date), std::optional(calendar.startOfDay(noon)));
        const auto month = calendar.month(noon);
        QVERIFY(month);
        QCOMPARE(month->end, Instant::fromMillisecondsSinceEpoch(wallTime({40'000, 8, 1}, 4)));
    }

    void shouldContainBothEndsOfAnInterval()
    {
        const DateInterval interval{at("2026-03-02T00:00:00Z"), at("2026-03-09T00:00:00Z")};
        QVERIFY(interval.contains(interval.start));
        QVERIFY(interval.contains(interval.end));
        QVERIFY(interval.contains(later(interval.start, 1)));
        QVERIFY(!interval.contains(later(interval.start, -1)));
        QVERIFY(!interval.contains(later(interval.end, 1)));
    }

    void shouldBeEqualWhereZoneAndLocaleAre()
    {
        QVERIFY(calendarIn("Europe/Berlin", "de_DE") == calendarIn("Europe/Berlin", "de_DE"));
        QVERIFY(calendarIn("Europe/Berlin", "de_DE") != calendarIn("Europe/Vienna", "de_DE"));
        QVERIFY(calendarIn("Europe/Berlin", "de_DE") != calendarIn("Europe/Berlin", "de_AT"));
    }

private:
    static void addZoneRows()
    {
        QTest::addColumn<QByteArray>("zone");
        for (const QByteArray &zone : instructiveZones())
            QTest::newRow(zone.constData()) << zone;
    }
};

ORBITLEDGE_TEST_MAIN(CalendarTest)
#include "CalendarTest.moc"
