#include "locale/DateFormatter.h"

#include "support/Printing.h"
#include "support/TestMain.h"
#include "support/Times.h"

using namespace orbitledge;
using namespace orbitledge::testing;
using namespace Qt::StringLiterals;

// The texts are those of CLDR 42, which ICU 72 carries.

namespace {

constexpr LocalDate piDay{2026, 3, 14}; // a Saturday

} // namespace

class DateFormatterTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void shouldWriteDaysAsTheLocaleDoes_data()
    {
        QTest::addColumn<QByteArray>("locale");
        QTest::addColumn<QString>("monthAndDay");
        QTest::addColumn<QString>("monthAndYear");
        QTest::addColumn<QString>("month");
        QTest::addColumn<QString>("narrowWeekday");
        QTest::addColumn<QString>("day");
        const auto row = [](const char *locale, const QString &monthAndDay, const QString &monthAndYear,
                             const QString &month, const QString &narrowWeekday, const QString &day) {
            QTest::newRow(locale) << QByteArray(locale) << monthAndDay << monthAndYear << month
                                  << narrowWeekday << day;
        };
        row("en_US", u"Mar 14"_s, u"March 2026"_s, u"March"_s, u"S"_s, u"14"_s);
        row("en_GB", u"14 Mar"_s, u"March 2026"_s, u"March"_s, u"S"_s, u"14"_s);
        row("de_DE", u"14. März"_s, u"März 2026"_s, u"März"_s, u"S"_s, u"14"_s);
        row("fr_FR", u"14 mars"_s, u"mars 2026"_s, u"mars"_s, u"S"_s, u"14"_s);
        row("ja_JP", u"3月14日"_s, u"2026年3月"_s, u"3月"_s, u"土"_s, u"14日"_s);
        // Slavic months have a form that stands alone: "марта" and "března" only follow a day.
        row("ru_RU", u"14 мар."_s, u"март 2026\u202Fг."_s, u"март"_s, u"С"_s, u"14"_s);
        row("cs_CZ", u"14. 3."_s, u"březen 2026"_s, u"březen"_s, u"S"_s, u"14."_s);
        row("pl_PL", u"14 mar"_s, u"marzec 2026"_s, u"marzec"_s, u"S"_s, u"14"_s);
        row("ar_EG", u"١٤ مارس"_s, u"مارس ٢٠٢٦"_s, u"مارس"_s, u"س"_s, u"١٤"_s);
        // Where another calendar is usual, the Gregorian one is shown all the same.
        row("fa_IR", u"۱۴ مارس"_s, u"مارس ۲۰۲۶"_s, u"مارس"_s, u"ش"_s, u"۱۴"_s);
        row("th_TH", u"14 มี.ค."_s, u"มีนาคม 2026"_s, u"มีนาคม"_s, u"ส"_s, u"14"_s);
        row("th-TH-u-ca-buddhist", u"14 มี.ค."_s, u"มีนาคม 2026"_s, u"มีนาคม"_s, u"ส"_s, u"14"_s);
        row("en_US@calendar=hebrew", u"Mar 14"_s, u"March 2026"_s, u"March"_s, u"S"_s, u"14"_s);
        // The script decides, not the region.
        row("sr_RS@latin", u"14. mar"_s, u"mart 2026."_s, u"mart"_s, u"s"_s, u"14"_s);
    }
    void shouldWriteDaysAsTheLocaleDoes()
    {
        QFETCH(QByteArray, locale);
        QFETCH(QString, monthAndDay);
        QFETCH(QString, monthAndYear);
        QFETCH(QString, month);
        QFETCH(QString, narrowWeekday);
        QFETCH(QString, day);
        DateFormatter dates(localeNamed(locale));
        QCOMPARE(dates.monthAndDay(piDay), monthAndDay);
        QCOMPARE(dates.monthAndYear(piDay), monthAndYear);
        QCOMPARE(dates.month(piDay), month);
        QCOMPARE(dates.narrowWeekday(piDay), narrowWeekday);
        QCOMPARE(dates.day(piDay), day);
    }

    void shouldNameAllMonthsInTheFormThatStandsAlone()
    {
        DateFormatter dates(localeNamed("ru_RU"));
        QStringList months;
        for (qint64 month = 1; month <= 12; ++month)
            months.append(dates.month({2026, month, 1}));
        QCOMPARE(months,
            QStringList({u"январь"_s, u"февраль"_s, u"март"_s, u"апрель"_s, u"май"_s, u"июнь"_s, u"июль"_s,
                u"август"_s, u"сентябрь"_s, u"октябрь"_s, u"ноябрь"_s, u"декабрь"_s}));
    }

    void shouldNameTheWeekdaysInTheirOrder()
    {
        DateFormatter dates(localeNamed("en_US"));
        QString week;
        for (qint64 day = 1; day <= 7; ++day)
            week += dates.narrowWeekday({2026, 3, day}); // the 1st is a Sunday
        QCOMPARE(week, u"SMTWTFS"_s);
    }

    void shouldWriteCompleteDates()
    {
        const auto text
            = [](const char *locale) { return DateFormatter(localeNamed(locale)).completeDate(piDay); };
        QCOMPARE(text("en_US"), u"Saturday, March 14, 2026"_s);
        QCOMPARE(text("en_GB"), u"Saturday, 14 March 2026"_s);
        QCOMPARE(text("de_DE"), u"Samstag, 14. März 2026"_s);
        QCOMPARE(text("ja_JP"), u"2026年3月14日土曜日"_s);
        QCOMPARE(DateFormatter(localeNamed("en_US")).completeDate({2026, 2, 30}), u"2026-02-30"_s);
    }

    void shouldWriteTimesAsTheWallClockShowsThem()
    {
        const auto text = [](const char *locale, const char *zone, const char *instant) {
            return DateFormatter(localeNamed(locale)).shortTime(at(instant), zoneNamed(zone));
        };
        QCOMPARE(text("en_US", "UTC", "2026-03-14T00:05:59Z"), u"12:05\u202fAM"_s);
        QCOMPARE(text("de_DE", "UTC", "2026-03-14T00:05:59Z"), u"00:05"_s);
        // On either side of the clocks' going forward.
        QCOMPARE(text("de_DE", "Europe/Berlin", "2026-03-29T00:59:59Z"), u"01:59"_s);
        QCOMPARE(text("de_DE", "Europe/Berlin", "2026-03-29T01:00:00Z"), u"03:00"_s);
        // Where ICU's own tables are out of date.
        QCOMPARE(text("en_GB", "Africa/Cairo", "2026-07-01T12:00:00Z"), u"15:00"_s);
        QCOMPARE(text("fa_IR", "Asia/Tehran", "2026-07-01T12:00:00Z"), u"۱۵:۳۰"_s);
    }

    void shouldCountByTheGregorianCalendarInAllYears_data()
    {
        QTest::addColumn<LocalDate>("date");
        QTest::addColumn<QString>("monthAndDay");
        QTest::addColumn<QString>("monthAndYear");
        QTest::addColumn<QString>("narrowWeekday");
        const auto row = [](const char *name, const LocalDate &date, const QString &monthAndDay,
                             const QString &monthAndYear, const QString &narrowWeekday) {
            QTest::newRow(name) << date << monthAndDay << monthAndYear << narrowWeekday;
        };
        row("first day of year 1", {1, 1, 1}, u"Jan 1"_s, u"January 1"_s, u"M"_s);
        row("the day after a leap day of the Julian calendar alone", {1500, 3, 1}, u"Mar 1"_s,
            u"March 1500"_s, u"T"_s);
        row("a day that was skipped in Rome", {1582, 10, 10}, u"Oct 10"_s, u"October 1582"_s, u"S"_s);
        row("the day before the change in Rome", {1582, 10, 14}, u"Oct 14"_s, u"October 1582"_s, u"T"_s);
        row("before 1970", {1969, 12, 31}, u"Dec 31"_s, u"December 1969"_s, u"W"_s);
        row("leap day", {2024, 2, 29}, u"Feb 29"_s, u"February 2024"_s, u"T"_s);
        row("last day of year 9999", {9999, 12, 31}, u"Dec 31"_s, u"December 9999"_s, u"F"_s);
    }
    void shouldCountByTheGregorianCalendarInAllYears()
    {
        QFETCH(LocalDate, date);
        QFETCH(QString, monthAndDay);
        QFETCH(QString, monthAndYear);
        QFETCH(QString, narrowWeekday);
        DateFormatter dates(localeNamed("en_US"));
        QCOMPARE(dates.monthAndDay(date), monthAndDay);
        QCOMPARE(dates.monthAndYear(date), monthAndYear);
        QCOMPARE(dates.narrowWeekday(date), narrowWeekday);
    }

    void shouldShowTheNumbersOfADayThatDoesNotExist_data()
    {
        QTest::addColumn<LocalDate>("date");
        QTest::addColumn<QString>("expected");
        QTest::newRow("30 February") << LocalDate{2026, 2, 30} << u"2026-02-30"_s;
        QTest::newRow("29 February of a common year") << LocalDate{1500, 2, 29} << u"1500-02-29"_s;
        QTest::newRow("month 13") << LocalDate{2026, 13, 1} << u"2026-13-01"_s;
        QTest::newRow("zeros") << LocalDate{0, 0, 0} << u"0000-00-00"_s;
        QTest::newRow("negative") << LocalDate{-5, 1, 1} << u"-005-01-01"_s;
    }
    void shouldShowTheNumbersOfADayThatDoesNotExist()
    {
        QFETCH(LocalDate, date);
        QFETCH(QString, expected);
        DateFormatter dates(localeNamed("de_DE"));
        QCOMPARE(dates.monthAndDay(date), expected);
        QCOMPARE(dates.monthAndYear(date), expected);
        QCOMPARE(dates.month(date), expected);
        QCOMPARE(dates.narrowWeekday(date), expected);
        QCOMPARE(dates.day(date), expected);
    }

    void shouldNotDependOnTheMachinesZone()
    {
        for (const char *zone : {"Pacific/Kiritimati", "Pacific/Pago_Pago"}) {
            const CLibraryZone elsewhere(zone);
            DateFormatter dates(localeNamed("en_US"));
            QCOMPARE(dates.monthAndDay({2026, 3, 1}), u"Mar 1"_s);
            QCOMPARE(dates.month({2026, 3, 1}), u"March"_s);
        }
    }

    void shouldFollowTheDatesLocaleAlone()
    {
        DateFormatter dates(Locale{.dates = "de_DE", .money = "en_US", .collation = "en_US"});
        QCOMPARE(dates.monthAndDay(piDay), u"14. März"_s);
    }
};

ORBITLEDGE_TEST_MAIN(DateFormatterTest)
#include "DateFormatterTest.moc"
