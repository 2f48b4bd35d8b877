#include "locale/TimeZone.h"

#include "support/Printing.h"
#include "support/TestMain.h"
#include "support/Times.h"

#include <QProcess>
#include <QProcessEnvironment>
#include <QTimeZone>

#include <rapidcheck.h>

#include <cstdio>
#include <random>
#include <vector>

using namespace orbitledge;
using namespace orbitledge::testing;

// Zones are the system's tzdata. Rows about the future hold as long as the rules that are in force now.

namespace {

constexpr const char *printSystemZone = "--print-system-zone";

LocalDate dateAt(const TimeZone &zone, Instant instant)
{
    return LocalDate::fromDaysSinceEpoch(floorDivide(zone.wallClock(instant), day));
}

/// Milliseconds of any instant, with a liking for the hours around a zone's changes.
rc::Gen<qint64> millisecondsIn(const QByteArray &zone)
{
    std::vector<qint64> changes;
    for (const auto &transition :
        QTimeZone(zone).transitions(QDateTime::fromSecsSinceEpoch(-2'500'000'000, Qt::UTC),
            QDateTime::fromSecsSinceEpoch(2'140'000'000, Qt::UTC)))
        changes.push_back(transition.atUtc.toMSecsSinceEpoch());
    const auto anywhere = rc::gen::inRange<qint64>(-5'300'000'000'000, 16'700'000'000'000); // 1802 to 2499
    if (changes.empty())
        return anywhere;
    constexpr qint64 step = 15 * second;
    constexpr qint64 reach = 30 * hour / step;
    const auto nearAChange
        = rc::gen::map(rc::gen::pair(rc::gen::elementOf(changes), rc::gen::inRange<qint64>(-reach, reach)),
            [](const std::pair<qint64, qint64> &choice) { return choice.first + choice.second * step; });
    return rc::gen::noShrink(rc::gen::weightedOneOf<qint64>({{1, anywhere}, {3, nearAChange}}));
}

} // namespace

class TimeZoneTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void shouldMoveASkippedWallTimeOnByTheGap_data()
    {
        QTest::addColumn<QByteArray>("zone");
        QTest::addColumn<qint64>("wallClock");
        QTest::addColumn<Instant>("expected");
        const auto row = [](const char *name, const char *zone, qint64 wallClock, const char *expected) {
            QTest::newRow(name) << QByteArray(zone) << wallClock << at(expected);
        };
        row("last second before the gap", "Europe/Berlin", wallTime({2026, 3, 29}, 1, 59, 59),
            "2026-03-29T00:59:59Z");
        row("first moment of the gap", "Europe/Berlin", wallTime({2026, 3, 29}, 2), "2026-03-29T01:00:00Z");
        row("middle of the gap", "Europe/Berlin", wallTime({2026, 3, 29}, 2, 30), "2026-03-29T01:30:00Z");
        row("last second of the gap", "Europe/Berlin", wallTime({2026, 3, 29}, 2, 59, 59),
            "2026-03-29T01:59:59Z");
        row("first moment after the gap", "Europe/Berlin", wallTime({2026, 3, 29}, 3),
            "2026-03-29T01:00:00Z");
        row("midnight, Asuncion", "America/Asuncion", wallTime({2017, 10, 1}), "2017-10-01T04:00:00Z");
        row("midnight, Cairo", "Africa/Cairo", wallTime({2026, 4, 24}), "2026-04-23T22:00:00Z");
        row("half past midnight, Cairo", "Africa/Cairo", wallTime({2026, 4, 24}, 0, 30),
            "2026-04-23T22:30:00Z");
        row("midnight, Beirut", "Asia/Beirut", wallTime({2026, 3, 29}), "2026-03-28T22:00:00Z");
        row("midnight, Havana", "America/Havana", wallTime({2026, 3, 8}), "2026-03-08T05:00:00Z");
        row("midnight, Sao Paulo", "America/Sao_Paulo", wallTime({2018, 11, 4}), "2018-11-04T03:00:00Z");
        row("a gap from before midnight to after it", "America/Toronto", wallTime({1919, 3, 31}),
            "1919-03-31T05:00:00Z");
        row("half an hour, Lord Howe", "Australia/Lord_Howe", wallTime({2026, 10, 4}, 2, 15),
            "2026-10-03T15:45:00Z");
        row("a whole day, Apia", "Pacific/Apia", wallTime({2011, 12, 30}, 12), "2011-12-30T22:00:00Z");
        row("a whole day, Kwajalein", "Pacific/Kwajalein", wallTime({1993, 8, 21}, 12),
            "1993-08-22T00:00:00Z");
        row("summer as the standard time, Dublin", "Europe/Dublin", wallTime({2026, 3, 29}, 1, 30),
            "2026-03-29T01:30:00Z");
        row("end of Ramadan, Casablanca", "Africa/Casablanca", wallTime({2023, 4, 23}, 2, 30),
            "2023-04-23T02:30:00Z");
        row("a gap of 44 minutes and 30 seconds, Monrovia", "Africa/Monrovia", wallTime({1972, 1, 7}, 0, 10),
            "1972-01-07T00:54:30Z");
        row("2060", "America/New_York", wallTime({2060, 3, 14}, 2, 30), "2060-03-14T07:30:00Z");
        row("2500", "Europe/Berlin", wallTime({2500, 3, 28}, 2, 30), "2500-03-28T01:30:00Z");
    }
    void shouldMoveASkippedWallTimeOnByTheGap()
    {
        QFETCH(QByteArray, zone);
        QFETCH(qint64, wallClock);
        QFETCH(Instant, expected);
        QCOMPARE(zoneNamed(zone).instantAt(wallClock), expected);
    }

    void shouldTakeTheFirstOfTwoEqualWallTimes_data()
    {
        QTest::addColumn<QByteArray>("zone");
        QTest::addColumn<qint64>("wallClock");
        QTest::addColumn<Instant>("expected");
        const auto row = [](const char *name, const char *zone, qint64 wallClock, const char *expected) {
            QTest::newRow(name) << QByteArray(zone) << wallClock << at(expected);
        };
        row("last second before the overlap", "Europe/Berlin", wallTime({2026, 10, 25}, 1, 59, 59),
            "2026-10-24T23:59:59Z");
        row("first moment of the overlap", "Europe/Berlin", wallTime({2026, 10, 25}, 2),
            "2026-10-25T00:00:00Z");
        row("middle of the overlap", "Europe/Berlin", wallTime({2026, 10, 25}, 2, 30),
            "2026-10-25T00:30:00Z");
        row("last second of the overlap", "Europe/Berlin", wallTime({2026, 10, 25}, 2, 59, 59),
            "2026-10-25T00:59:59Z");
        row("first moment after the overlap", "Europe/Berlin", wallTime({2026, 10, 25}, 3),
            "2026-10-25T02:00:00Z");
        row("midnight, Havana", "America/Havana", wallTime({2026, 11, 1}), "2026-11-01T04:00:00Z");
        row("half past midnight, Havana", "America/Havana", wallTime({2026, 11, 1}, 0, 30),
            "2026-11-01T04:30:00Z");
        row("the hour before midnight, Cairo", "Africa/Cairo", wallTime({2026, 10, 29}, 23, 30),
            "2026-10-29T20:30:00Z");
        row("midnight after it, which comes once, Cairo", "Africa/Cairo", wallTime({2026, 10, 30}),
            "2026-10-29T22:00:00Z");
        row("midnight, St John's", "America/St_Johns", wallTime({2006, 10, 29}), "2006-10-29T02:30:00Z");
        row("the day before, St John's", "America/St_Johns", wallTime({2006, 10, 28}, 23, 30),
            "2006-10-29T02:00:00Z");
        row("just after the minute, St John's", "America/St_Johns", wallTime({2006, 10, 29}, 0, 1),
            "2006-10-29T03:31:00Z");
        row("half an hour, Lord Howe", "Australia/Lord_Howe", wallTime({2026, 4, 5}, 1, 45),
            "2026-04-04T14:45:00Z");
        row("winter as the exception, Dublin", "Europe/Dublin", wallTime({2026, 10, 25}, 1, 30),
            "2026-10-25T00:30:00Z");
        row("start of Ramadan, Casablanca", "Africa/Casablanca", wallTime({2023, 3, 19}, 2, 30),
            "2023-03-19T01:30:00Z");
        row("nearly a whole day, Kwajalein", "Pacific/Kwajalein", wallTime({1969, 9, 30}, 12),
            "1969-09-30T01:00:00Z");
        row("2060", "America/New_York", wallTime({2060, 11, 7}, 1, 30), "2060-11-07T05:30:00Z");
        row("2500", "Europe/Berlin", wallTime({2500, 10, 31}, 2, 30), "2500-10-31T00:30:00Z");
    }
    void shouldTakeTheFirstOfTwoEqualWallTimes()
    {
        QFETCH(QByteArray, zone);
        QFETCH(qint64, wallClock);
        QFETCH(Instant, expected);
        QCOMPARE(zoneNamed(zone).instantAt(wallClock), expected);
    }

    void shouldStartADayWithItsFirstInstant_data()
    {
        QTest::addColumn<QByteArray>("zone");
        QTest::addColumn<LocalDate>("date");
        QTest::addColumn<Instant>("expected");
        const auto row = [](const char *name, const char *zone, const LocalDate &date, const char *expected) {
            QTest::newRow(name) << QByteArray(zone) << date << at(expected);
        };
        row("ordinary day", "Europe/Berlin", {2026, 7, 1}, "2026-06-30T22:00:00Z");
        row("day with a gap later on", "Europe/Berlin", {2026, 3, 29}, "2026-03-28T23:00:00Z");
        row("midnight skipped, Asuncion", "America/Asuncion", {2017, 10, 1}, "2017-10-01T04:00:00Z");
        row("midnight skipped, Cairo", "Africa/Cairo", {2026, 4, 24}, "2026-04-23T22:00:00Z");
        row("midnight skipped, Beirut", "Asia/Beirut", {2026, 3, 29}, "2026-03-28T22:00:00Z");
        row("midnight skipped, Havana", "America/Havana", {2026, 3, 8}, "2026-03-08T05:00:00Z");
        row("midnight skipped, Sao Paulo", "America/Sao_Paulo", {2018, 11, 4}, "2018-11-04T03:00:00Z");
        row("midnight skipped, Havana in 2500", "America/Havana", {2500, 3, 14}, "2500-03-14T05:00:00Z");
        row("the gap ends at half past midnight, Toronto", "America/Toronto", {1919, 3, 31},
            "1919-03-31T04:30:00Z");
        row("midnight repeated, Havana", "America/Havana", {2026, 11, 1}, "2026-11-01T04:00:00Z");
        row("hour before midnight repeated, Cairo", "Africa/Cairo", {2026, 10, 30}, "2026-10-29T22:00:00Z");
        row("the day that got the hour, Cairo", "Africa/Cairo", {2026, 10, 29}, "2026-10-28T21:00:00Z");
        row("a minute of the day, then the day before again, St John's", "America/St_Johns", {2006, 10, 29},
            "2006-10-29T02:30:00Z");
        row("the day that came back, St John's", "America/St_Johns", {2006, 10, 28}, "2006-10-28T02:30:00Z");
        row("day skipped whole, Apia", "Pacific/Apia", {2011, 12, 30}, "2011-12-30T10:00:00Z");
        row("day before it, Apia", "Pacific/Apia", {2011, 12, 29}, "2011-12-29T10:00:00Z");
        row("day after it, Apia", "Pacific/Apia", {2011, 12, 31}, "2011-12-30T10:00:00Z");
        row("day skipped whole, Kwajalein", "Pacific/Kwajalein", {1993, 8, 21}, "1993-08-21T12:00:00Z");
        row("day after it, Kwajalein", "Pacific/Kwajalein", {1993, 8, 22}, "1993-08-21T12:00:00Z");
        row("day lived nearly twice, Kwajalein", "Pacific/Kwajalein", {1969, 9, 30}, "1969-09-29T13:00:00Z");
        row("offset with seconds, Monrovia", "Africa/Monrovia", {1971, 6, 1}, "1971-06-01T00:44:30Z");
        row("summer of 2060", "Europe/Berlin", {2060, 7, 1}, "2060-06-30T22:00:00Z");
        row("winter of 2060", "Europe/Berlin", {2060, 12, 1}, "2060-11-30T23:00:00Z");
        row("local mean time, 1890", "Europe/Berlin", {1890, 6, 1}, "1890-05-31T23:06:32Z");
        row("local mean time, year 1", "America/New_York", {1, 6, 1}, "0001-06-01T04:56:02Z");
        row("year 9999", "America/New_York", {9999, 7, 1}, "9999-07-01T04:00:00Z");
    }
    void shouldStartADayWithItsFirstInstant()
    {
        QFETCH(QByteArray, zone);
        QFETCH(LocalDate, date);
        QFETCH(Instant, expected);
        QCOMPARE(zoneNamed(zone).startOfDay(date.daysSinceEpoch()), expected);
    }

    void shouldAgreeWithTheCLibraryAtAnyInstant_data() { addZoneRows(); }
    void shouldAgreeWithTheCLibraryAtAnyInstant()
    {
        QFETCH(QByteArray, zone);
        const TimeZone timeZone = zoneNamed(zone);
        const CLibraryZone oracle(zone);
        std::mt19937_64 random(20260305); // NOLINT: the same instants in every run
        struct Span {
            LocalDate from;
            LocalDate to;
            int count;
        };
        for (const Span &span : {Span{{1, 1, 1}, {1900, 1, 1}, 50}, Span{{1900, 1, 1}, {1970, 1, 1}, 300},
                 Span{{1970, 1, 1}, {2100, 1, 1}, 1000}, Span{{2100, 1, 1}, {2400, 1, 1}, 200}}) {
            std::uniform_int_distribution<qint64> seconds(
                span.from.daysSinceEpoch() * 86'400, span.to.daysSinceEpoch() * 86'400);
            for (int i = 0; i < span.count; ++i)
                QCOMPARE(disagreement(timeZone, oracle, seconds(random)), QByteArray());
        }
    }

    void shouldChangeClocksInTheSameSecondAsTheCLibrary_data() { addZoneRows(); }
    void shouldChangeClocksInTheSameSecondAsTheCLibrary()
    {
        // GIVEN every half hour of years with rules of today, and of one for which no change is listed
        QFETCH(QByteArray, zone);
        const TimeZone timeZone = zoneNamed(zone);
        const CLibraryZone oracle(zone);
        for (const qint64 year : {2011, 2026, 2037, 2038, 2060, 2099, 2100}) {
            constexpr qint64 step = 1800;
            const qint64 end = LocalDate{year + 1, 1, 1}.daysSinceEpoch() * 86'400;
            qint64 expected = oracle.offsetSeconds(LocalDate{year, 1, 1}.daysSinceEpoch() * 86'400);
            for (qint64 at = LocalDate{year, 1, 1}.daysSinceEpoch() * 86'400; at < end; at += step) {
                const qint64 next = oracle.offsetSeconds(at);
                // WHEN the clocks changed within it
                if (next == expected)
                    continue;
                // THEN the last second before the change agrees, and the first one after it
                qint64 before = at - step;
                qint64 after = at;
                while (after - before > 1) {
                    const qint64 middle = (before + after) / 2;
                    (oracle.offsetSeconds(middle) == next ? after : before) = middle;
                }
                QCOMPARE(disagreement(timeZone, oracle, before), QByteArray());
                QCOMPARE(disagreement(timeZone, oracle, after), QByteArray());
                expected = next;
            }
        }
    }

    void shouldFindTheWayBackFromAnyWallClock_data() { addZoneRows(); }
    void shouldFindTheWayBackFromAnyWallClock()
    {
        QFETCH(QByteArray, zone);
        const TimeZone timeZone = zoneNamed(zone);
        const auto milliseconds = millisecondsIn(zone);
        const auto offset = [&](Instant at) { return timeZone.offsetMilliseconds(at); };
        QVERIFY(rc::check("the way back leads to the first instant with that wall time", [&] {
            const Instant instant = Instant::fromMillisecondsSinceEpoch(*milliseconds);
            const qint64 wallClock = timeZone.wallClock(instant);
            const Instant back = timeZone.instantAt(wallClock);
            RC_ASSERT(timeZone.wallClock(back) == wallClock);
            RC_ASSERT(back <= instant);
            if (back != instant) // it came twice: back by the hours that were repeated
                RC_ASSERT(later(back, offset(back) - offset(instant)) == instant);
            for (qint64 hours = 1; hours <= 26; ++hours) {
                const auto candidate
                    = Instant::fromMillisecondsSinceEpoch(wallClock - offset(later(instant, -hours * hour)));
                RC_ASSERT((candidate >= back || timeZone.wallClock(candidate) != wallClock));
            }
        }));
    }

    void shouldStartEachDayBeforeAllOfIt_data() { addZoneRows(); }
    void shouldStartEachDayBeforeAllOfIt()
    {
        QFETCH(QByteArray, zone);
        const TimeZone timeZone = zoneNamed(zone);
        const auto milliseconds = millisecondsIn(zone);
        QVERIFY(rc::check("a day starts with the first instant that carries its date", [&] {
            const Instant instant = Instant::fromMillisecondsSinceEpoch(*milliseconds);
            const LocalDate date = dateAt(timeZone, instant);
            const Instant start = timeZone.startOfDay(date.daysSinceEpoch());
            RC_ASSERT(start <= instant);
            RC_ASSERT(dateAt(timeZone, start) == date);
            RC_ASSERT(dateAt(timeZone, later(start, -1)) < date);
        }));
    }

    void shouldAcceptNamesOfTheDatabase_data()
    {
        QTest::addColumn<QByteArray>("name");
        for (const char *name :
            {"Europe/Berlin", "America/Argentina/Buenos_Aires", "US/Eastern", "Asia/Calcutta", "UTC",
                "Etc/UTC", "GMT", "Etc/GMT+5", "Etc/GMT-14", "EST5EDT", "America/Port-au-Prince"})
            QTest::newRow(name) << QByteArray(name);
    }
    void shouldAcceptNamesOfTheDatabase()
    {
        QFETCH(QByteArray, name);
        const auto zone = TimeZone::named(name);
        QVERIFY(zone);
        QCOMPARE(zone->id(), name);
    }

    void shouldReadAnAliasAsTheZoneItStandsFor()
    {
        QCOMPARE(zoneNamed("US/Eastern").offsetMilliseconds(at("2026-07-01T00:00:00Z")), -4 * hour);
        QCOMPARE(zoneNamed("Asia/Calcutta").offsetMilliseconds(at("2026-07-01T00:00:00Z")),
            5 * hour + 30 * minute);
        QCOMPARE(zoneNamed("Etc/GMT+5").offsetMilliseconds(at("2026-07-01T00:00:00Z")), -5 * hour);
    }

    void shouldRefuseWhatTheDatabaseDoesNotName_data()
    {
        QTest::addColumn<QByteArray>("name");
        QTest::newRow("empty") << QByteArray("");
        QTest::newRow("null") << QByteArray();
        QTest::newRow("unknown") << QByteArray("Mars/Olympus");
        QTest::newRow("POSIX rule") << QByteArray("Foo+3");
        QTest::newRow("POSIX rule with summer time") << QByteArray("CET-1CEST,M3.5.0,M10.5.0/3");
        QTest::newRow("offset of the toolkit") << QByteArray("UTC+01:00");
        QTest::newRow("path out of the folder") << QByteArray("../../etc/passwd");
        QTest::newRow("path out and back in") << QByteArray("../zoneinfo/Europe/Berlin");
        QTest::newRow("path within") << QByteArray("Europe/../Europe/Berlin");
        QTest::newRow("absolute path") << QByteArray("/etc/localtime");
        QTest::newRow("absolute path of a zone") << QByteArray("/usr/share/zoneinfo/Europe/Berlin");
        QTest::newRow("counts leap seconds") << QByteArray("right/UTC");
        QTest::newRow("counts leap seconds, deeper") << QByteArray("right/Europe/Berlin");
        QTest::newRow("folder") << QByteArray("Europe");
        QTest::newRow("folder with a slash") << QByteArray("Europe/");
        QTest::newRow("other file of the folder") << QByteArray("tzdata.zi");
        QTest::newRow("other file without a dot") << QByteArray("leapseconds");
        QTest::newRow("line feed at the end") << QByteArray("Europe/Berlin\n");
        QTest::newRow("blank at the end") << QByteArray("Europe/Berlin ");
        QTest::newRow("NUL inside") << QByteArray("Europe/Berlin\0x", 15);
        QTest::newRow("colon before") << QByteArray(":Europe/Berlin");
        QTest::newRow("lower case") << QByteArray("europe/berlin");
        QTest::newRow("upper case") << QByteArray("EUROPE/BERLIN");
        QTest::newRow("not ASCII") << QByteArray("Europe/Z\xc3\xbcrich");
        QTest::newRow("abbreviation that is none") << QByteArray("CEST");
    }
    void shouldRefuseWhatTheDatabaseDoesNotName()
    {
        QFETCH(QByteArray, name);
        QVERIFY(!TimeZone::named(name));
    }

    void shouldTakeTheMachinesZoneFromTheEnvironment_data()
    {
        QTest::addColumn<QByteArray>("variable");
        QTest::addColumn<QByteArray>("expected");
        QTest::newRow("name") << QByteArray("Europe/Berlin") << QByteArray("Europe/Berlin 7200000");
        QTest::newRow("name after a colon")
            << QByteArray(":Europe/Berlin") << QByteArray("Europe/Berlin 7200000");
        QTest::newRow("path") << QByteArray("/usr/share/zoneinfo/Asia/Tokyo")
                              << QByteArray("Asia/Tokyo 32400000");
        QTest::newRow("path after a colon")
            << QByteArray(":/usr/share/zoneinfo/Asia/Tokyo") << QByteArray("Asia/Tokyo 32400000");
        QTest::newRow("alias") << QByteArray("US/Eastern") << QByteArray("US/Eastern -14400000");
        QTest::newRow("unknown") << QByteArray("Mars/Olympus") << QByteArray("UTC 0");
        QTest::newRow("no name at all") << QByteArray("%$!") << QByteArray("UTC 0");
    }
    void shouldTakeTheMachinesZoneFromTheEnvironment()
    {
        // The toolkit may keep the first answer, so each comes from a process of its own.
        QFETCH(QByteArray, variable);
        QFETCH(QByteArray, expected);
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("TZ"), QString::fromLatin1(variable));
        QProcess process;
        process.setProcessEnvironment(environment);
        process.start(QCoreApplication::applicationFilePath(), {QLatin1String(printSystemZone)});
        QVERIFY(process.waitForFinished());
        QCOMPARE(process.exitCode(), 0);
        QCOMPARE(process.readAllStandardOutput(), expected);
    }

private:
    static void addZoneRows()
    {
        QTest::addColumn<QByteArray>("zone");
        for (const QByteArray &zone : instructiveZones())
            QTest::newRow(zone.constData()) << zone;
    }

    /// What is wrong with a zone at an instant; empty where nothing is.
    static QByteArray disagreement(const TimeZone &zone, const CLibraryZone &oracle, qint64 seconds)
    {
        const Instant instant = Instant::fromSecondsSinceEpoch(seconds);
        const qint64 expected = oracle.offsetSeconds(seconds) * second;
        const qint64 actual = zone.offsetMilliseconds(instant);
        if (actual == expected)
            return {};
        return instant.text() + ": " + QByteArray::number(actual) + " instead of "
            + QByteArray::number(expected);
    }
};

int main(int argc, char **argv)
{
    if (argc == 2 && qstrcmp(argv[1], printSystemZone) == 0) {
        const TimeZone zone = TimeZone::system();
        std::fprintf(stdout, "%s %lld", zone.id().constData(),
            zone.offsetMilliseconds(orbitledge::testing::at("2026-07-01T00:00:00Z")));
        return 0;
    }
    return orbitledge::testing::runTest<TimeZoneTest>(argc, argv);
}

#include "TimeZoneTest.moc"
