#include "support/Printing.h"
#include "support/TestMain.h"

#include <QDate>
#include <QSet>

#include <limits>

using namespace orbitledge;
using namespace Qt::StringLiterals;

namespace {

QString outcome(std::string_view text)
{
    const auto date = LocalDate::fromText(text);
    return date ? date->text() : u"refused"_s;
}

} // namespace

class LocalDateTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void shouldReadADay_data();
    void shouldReadADay();
    void shouldRefuseATextThatIsNoDay_data();
    void shouldRefuseATextThatIsNoDay();
    void shouldGiveTheThreeNumbersInTheirFields();
    void shouldPrintTheTextThatWasRead_data();
    void shouldPrintTheTextThatWasRead();
    void shouldPrintAnyThreeNumbers_data();
    void shouldPrintAnyThreeNumbers();
    void shouldKnowWhichDaysExist_data();
    void shouldKnowWhichDaysExist();
    void shouldAgreeWithAnotherCalendarOnWhichDaysExist();
    void shouldOrderByYearThenMonthThenDay_data();
    void shouldOrderByYearThenMonthThenDay();
    void shouldHashEqualDaysEqually();
    void shouldCountDaysFromTheEpoch_data();
    void shouldCountDaysFromTheEpoch();
    void shouldCountDaysLikeAnotherCalendar();
    void shouldFindTheWayBackFromEveryDayOfAnEra();
};

void LocalDateTest::shouldReadADay_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QString>("expected");
    const auto row = [](const char *name, const char *text, const QString &expected) {
        QTest::newRow(name) << QByteArray(text) << expected;
    };
    row("an ordinary day", "2026-03-05", u"2026-03-05"_s);
    row("29 February of a leap year", "2024-02-29", u"2024-02-29"_s);
    row("29 February of a leap century", "2000-02-29", u"2000-02-29"_s);
    row("28 February of a common century", "1900-02-28", u"1900-02-28"_s);
    row("last day of a year", "2025-12-31", u"2025-12-31"_s);
    row("last day of a 30-day month", "2026-04-30", u"2026-04-30"_s);
    row("first day of year 1", "0001-01-01", u"0001-01-01"_s);
    row("last day of year 9999", "9999-12-31", u"9999-12-31"_s);
    row("year 987 in four digits", "0987-01-01", u"0987-01-01"_s);
    row("year 987 with a plus in its four characters", "+987-01-01", u"0987-01-01"_s);
    row("month with a plus in its two characters", "2026-+3-05", u"2026-03-05"_s);
    row("day with a plus in its two characters", "2026-03-+5", u"2026-03-05"_s);
    row("all three with a plus", "+001-+1-+1", u"0001-01-01"_s);
    // The gap of the switch from the Julian calendar does not exist here.
    row("a day that the switch of calendars skipped", "1582-10-10", u"1582-10-10"_s);
}

void LocalDateTest::shouldReadADay()
{
    QFETCH(QByteArray, text);
    QFETCH(QString, expected);
    QCOMPARE(outcome(text.toStdString()), expected);
}

void LocalDateTest::shouldRefuseATextThatIsNoDay_data()
{
    QTest::addColumn<QByteArray>("text");
    const auto row = [](const char *name, const QByteArray &text) { QTest::newRow(name) << text; };
    row("empty string", "");
    row("29 February of a common year", "2023-02-29");
    row("29 February of a common century", "1900-02-29");
    row("29 February of the next common century", "2100-02-29");
    row("30 February", "2026-02-30");
    row("30 February of a leap year", "2024-02-30");
    row("31 April", "2026-04-31");
    row("month 0", "2026-00-10");
    row("month 13", "2026-13-01");
    row("day 0", "2026-12-00");
    row("day 32", "2026-12-32");
    row("year 0", "0000-01-01");
    row("year 0 with a plus", "+000-01-01");
    row("month of one digit", "2026-1-10");
    row("day of one digit", "2026-01-1");
    row("month and day of one digit", "2026-1-1");
    row("year of two digits", "26-03-05");
    row("year of three digits", "987-01-01");
    row("year of five digits", "20260-01-01");
    row("month of three digits", "2026-003-05");
    row("day of three digits", "2026-03-005");
    row("year of five characters with a sign", "+2026-03-05");
    row("empty month", "2026--01");
    row("empty month in ten characters", "2026--0001");
    row("empty year", "-03-05");
    row("empty year in ten characters", "-202603-05");
    row("empty day", "2026-03-");
    row("empty day in ten characters", "20260-03--");
    row("trailing hyphen", "2026-01-01-");
    row("leading hyphen", "-2026-01-01");
    row("negative year in its four characters", "-987-01-01");
    row("negative month in its two characters", "2026--3-05");
    row("negative day in its two characters", "2026-03--5");
    row("a sign without digits as month", "2026-+-0005");
    row("two signs as month", "2026-++-05");
    row("two signs as day", "2026-03-+-");
    row("sign behind the month's digit", "2026-3+-05");
    row("two pieces", "2026-03");
    row("one piece", "20260305");
    row("ten digits without hyphens", "2026003005");
    row("four pieces", "2026-03-05-01");
    row("a time behind it", "2026-03-05T00:00:00Z");
    row("a zone behind it", "2026-03-05Z");
    row("slashes", "2026/03/05");
    row("a slash before the month", "2026/03-05");
    row("a slash before the day", "2026-03/05");
    row("dots", "2026.03.05");
    row("day first", "05-03-2026");
    row("blank before", " 2026-03-05");
    row("blank after", "2026-03-05 ");
    row("blank for a leading zero of the month", "2026- 3-05");
    row("blank for a leading zero of the day", "2026-03- 5");
    row("blank behind a digit of the year", "202 -03-05");
    row("line feed after", "2026-03-05\n");
    row("letter in the year", "2O26-03-05");
    row("letter in the month", "2026-o3-05");
    row("hexadecimal year", "0x7e-03-05");
    row("exponent in the year", "20e2-03-05");
    row("fraction in the day", "2026-03-.5");
    row("Arabic-Indic digits", "\u0662\u0660\u0662\u0666-\u0660\u0663-\u0660\u0665");
    row("Arabic-Indic digits that fill ten bytes", "2026-\u0663-05");
    row("full-width digits", "\uff12\uff10\uff12\uff16-03-05");
    row("hyphens of typography", "2026\u201003\u201005");
    row("minus signs of typography", "2026\u221203\u221205");
    row("null character at the end", QByteArray("2026-03-05\0", 11));
    row("null character at the start", QByteArray("\0002026-03-05", 11));
    row("null character for a digit of the year", QByteArray("202\0-03-05", 10));
    row("null character for a digit of the month", QByteArray("2026-\0003-05", 10));
    row("null character for the last digit", QByteArray("2026-03-0\0", 10));
    row("byte order mark",
        "\xEF\xBB\xBF"
        "2026-03-05");
    row("word", "yyyy-MM-dd");
    row("characters next to the digits", "202:-0/-05");
}

void LocalDateTest::shouldRefuseATextThatIsNoDay()
{
    QFETCH(QByteArray, text);
    QCOMPARE(outcome(text.toStdString()), u"refused"_s);
}

void LocalDateTest::shouldGiveTheThreeNumbersInTheirFields()
{
    const auto date = LocalDate::fromText("2026-03-05");
    QVERIFY(date);
    QCOMPARE(date->year, 2026);
    QCOMPARE(date->month, 3);
    QCOMPARE(date->day, 5);
    QCOMPARE(*date, (LocalDate{2026, 3, 5}));
    QCOMPARE(LocalDate{}, (LocalDate{1, 1, 1}));
}

void LocalDateTest::shouldPrintTheTextThatWasRead_data()
{
    QTest::addColumn<QByteArray>("text");
    for (const char *text :
        {"0001-01-01", "0987-01-01", "1970-01-01", "2024-02-29", "2026-12-31", "9999-12-31"})
        QTest::newRow(text) << QByteArray(text);
}

void LocalDateTest::shouldPrintTheTextThatWasRead()
{
    QFETCH(QByteArray, text);
    QCOMPARE(outcome(text.toStdString()), QString::fromLatin1(text));
}

void LocalDateTest::shouldPrintAnyThreeNumbers_data()
{
    QTest::addColumn<LocalDate>("date");
    QTest::addColumn<QString>("expected");
    QTest::newRow("year 987 prints as 0987") << LocalDate{987, 1, 1} << u"0987-01-01"_s;
    QTest::newRow("year 1") << LocalDate{1, 2, 3} << u"0001-02-03"_s;
    QTest::newRow("year of five digits") << LocalDate{12345, 6, 7} << u"12345-06-07"_s;
    QTest::newRow("year 0") << LocalDate{0, 1, 1} << u"0000-01-01"_s;
    QTest::newRow("negative year") << LocalDate{-5, 1, 1} << u"-005-01-01"_s;
    QTest::newRow("wide numbers") << LocalDate{std::numeric_limits<qint64>::max(), 123,
        std::numeric_limits<qint64>::min()}
                                  << u"9223372036854775807-123--9223372036854775808"_s;
}

void LocalDateTest::shouldPrintAnyThreeNumbers()
{
    QFETCH(LocalDate, date);
    QFETCH(QString, expected);
    QCOMPARE(date.text(), expected);
}

void LocalDateTest::shouldKnowWhichDaysExist_data()
{
    QTest::addColumn<LocalDate>("date");
    QTest::addColumn<bool>("exists");
    constexpr qint64 least = std::numeric_limits<qint64>::min();
    constexpr qint64 greatest = std::numeric_limits<qint64>::max();
    QTest::newRow("29 February 2024") << LocalDate{2024, 2, 29} << true;
    QTest::newRow("30 February 2024") << LocalDate{2024, 2, 30} << false;
    QTest::newRow("29 February 2023") << LocalDate{2023, 2, 29} << false;
    QTest::newRow("29 February 2000") << LocalDate{2000, 2, 29} << true;
    QTest::newRow("29 February 1900") << LocalDate{1900, 2, 29} << false;
    QTest::newRow("29 February 2100") << LocalDate{2100, 2, 29} << false;
    QTest::newRow("29 February of year 4") << LocalDate{4, 2, 29} << true;
    QTest::newRow("month 0") << LocalDate{2026, 0, 1} << false;
    QTest::newRow("month 13") << LocalDate{2026, 13, 1} << false;
    QTest::newRow("day 0") << LocalDate{2026, 1, 0} << false;
    QTest::newRow("day 32") << LocalDate{2026, 1, 32} << false;
    QTest::newRow("negative month") << LocalDate{2026, -1, 1} << false;
    QTest::newRow("negative day") << LocalDate{2026, 1, -1} << false;
    QTest::newRow("year 1") << LocalDate{1, 1, 1} << true;
    QTest::newRow("year 0") << LocalDate{0, 1, 1} << false;
    QTest::newRow("year -1") << LocalDate{-1, 1, 1} << false;
    QTest::newRow("year 10000") << LocalDate{10000, 1, 1} << true;
    QTest::newRow("greatest year") << LocalDate{999'999'999, 12, 31} << true;
    QTest::newRow("one beyond the greatest year") << LocalDate{1'000'000'000, 1, 1} << false;
    QTest::newRow("greatest numbers") << LocalDate{greatest, greatest, greatest} << false;
    QTest::newRow("least numbers") << LocalDate{least, least, least} << false;
    QTest::newRow("greatest day") << LocalDate{2026, 1, greatest} << false;
    QTest::newRow("greatest month") << LocalDate{2026, greatest, 1} << false;
}

void LocalDateTest::shouldKnowWhichDaysExist()
{
    QFETCH(LocalDate, date);
    QFETCH(bool, exists);
    QCOMPARE(date.isValid(), exists);
}

void LocalDateTest::shouldAgreeWithAnotherCalendarOnWhichDaysExist()
{
    for (int year = 1; year <= 2500; ++year) {
        for (int month = 0; month <= 13; ++month) {
            for (int day = 27; day <= 32; ++day)
                QCOMPARE((LocalDate{year, month, day}.isValid()), QDate::isValid(year, month, day));
        }
    }
}

void LocalDateTest::shouldOrderByYearThenMonthThenDay_data()
{
    QTest::addColumn<LocalDate>("earlier");
    QTest::addColumn<LocalDate>("later");
    QTest::newRow("the end of January before the start of February")
        << LocalDate{2026, 1, 31} << LocalDate{2026, 2, 1};
    QTest::newRow("the end of a year before the start of the next")
        << LocalDate{2025, 12, 31} << LocalDate{2026, 1, 1};
    QTest::newRow("days of a month") << LocalDate{2026, 1, 9} << LocalDate{2026, 1, 10};
    QTest::newRow("year 987 before 2026") << LocalDate{987, 12, 31} << LocalDate{2026, 1, 1};
    QTest::newRow("year 9999 before 10000") << LocalDate{9999, 12, 31} << LocalDate{10000, 1, 1};
    QTest::newRow("a day that does not exist") << LocalDate{2026, 2, 30} << LocalDate{2026, 3, 1};
}

void LocalDateTest::shouldOrderByYearThenMonthThenDay()
{
    QFETCH(LocalDate, earlier);
    QFETCH(LocalDate, later);
    QVERIFY(earlier < later);
    QVERIFY(later > earlier);
    QVERIFY(earlier != later);
    QVERIFY(!(later < earlier));
    QVERIFY(earlier <= earlier);
    QVERIFY(!(earlier < earlier));
}

void LocalDateTest::shouldHashEqualDaysEqually()
{
    const LocalDate read = LocalDate::fromText("2026-03-05").value();
    const LocalDate built{2026, 3, 5};
    QCOMPARE(read, built);
    QCOMPARE(qHash(read), qHash(built));
    QCOMPARE(qHash(read, 42), qHash(built, 42));

    QSet<LocalDate> days;
    for (qint64 day = 0; day < 1000; ++day)
        days.insert(LocalDate::fromDaysSinceEpoch(day));
    for (qint64 day = 500; day < 1500; ++day)
        days.insert(LocalDate::fromDaysSinceEpoch(day));
    QCOMPARE(days.size(), 1500);
    QVERIFY(days.contains(LocalDate{1970, 1, 1}));
    QVERIFY(!days.contains(LocalDate{1969, 12, 31}));

    // Every field counts, and so does its place.
    QVERIFY(qHash(LocalDate{2026, 3, 5}) != qHash(LocalDate{2025, 3, 5}));
    QVERIFY(qHash(LocalDate{2026, 3, 5}) != qHash(LocalDate{2026, 4, 5}));
    QVERIFY(qHash(LocalDate{2026, 3, 5}) != qHash(LocalDate{2026, 3, 6}));
    QVERIFY(qHash(LocalDate{2026, 3, 5}) != qHash(LocalDate{2026, 5, 3}));
}

void LocalDateTest::shouldCountDaysFromTheEpoch_data()
{
    QTest::addColumn<LocalDate>("date");
    QTest::addColumn<qint64>("days");
    QTest::newRow("the epoch") << LocalDate{1970, 1, 1} << qint64{0};
    QTest::newRow("the day before") << LocalDate{1969, 12, 31} << qint64{-1};
    QTest::newRow("a leap day") << LocalDate{1972, 2, 29} << qint64{789};
    QTest::newRow("the turn of the millennium") << LocalDate{2000, 1, 1} << qint64{10957};
    QTest::newRow("the first day") << LocalDate{1, 1, 1} << qint64{-719162};
    QTest::newRow("the last day of four digits") << LocalDate{9999, 12, 31} << qint64{2932896};
    QTest::newRow("the last valid day") << LocalDate{999'999'999, 12, 31} << qint64{365'241'780'471};
}

void LocalDateTest::shouldCountDaysFromTheEpoch()
{
    QFETCH(LocalDate, date);
    QFETCH(qint64, days);
    QCOMPARE(date.daysSinceEpoch(), days);
    QCOMPARE(LocalDate::fromDaysSinceEpoch(days), date);
}

void LocalDateTest::shouldCountDaysLikeAnotherCalendar()
{
    const qint64 epoch = QDate(1970, 1, 1).toJulianDay();
    const auto agree = [epoch](qint64 days) {
        int year = 0;
        int month = 0;
        int day = 0;
        QDate::fromJulianDay(epoch + days).getDate(&year, &month, &day);
        const LocalDate expected{year, month, day};
        const LocalDate date = LocalDate::fromDaysSinceEpoch(days);
        return date == expected && date.daysSinceEpoch() == days && date.isValid();
    };
    // Every day of the years 1 to 2400, then in steps that meet every day of the year up to year 200,000.
    const qint64 first = QDate(1, 1, 1).toJulianDay() - epoch;
    const qint64 last = QDate(2400, 12, 31).toJulianDay() - epoch;
    for (qint64 days = first; days <= last; ++days)
        QVERIFY2(agree(days), qPrintable(QString::number(days)));
    for (qint64 days = last; days < QDate(200'000, 1, 1).toJulianDay() - epoch; days += 97)
        QVERIFY2(agree(days), qPrintable(QString::number(days)));
}

void LocalDateTest::shouldFindTheWayBackFromEveryDayOfAnEra()
{
    // 400 years around year 0, where the other calendar has no year 0 to compare with.
    LocalDate previous = LocalDate::fromDaysSinceEpoch(-800'001);
    for (qint64 days = -800'000; days < -640'000; ++days) {
        const LocalDate date = LocalDate::fromDaysSinceEpoch(days);
        QCOMPARE(date.daysSinceEpoch(), days);
        QVERIFY(previous < date);
        previous = date;
    }
}

ORBITLEDGE_TEST_MAIN(LocalDateTest)
#include "LocalDateTest.moc"
