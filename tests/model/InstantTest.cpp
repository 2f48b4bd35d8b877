#include "support/Printing.h"
#include "support/TestMain.h"

#include <QDateTime>

using namespace orbitledge;
using namespace Qt::StringLiterals;

namespace {

QString outcome(const QByteArray &text)
{
    const auto instant = Instant::fromText(text.toStdString());
    return instant ? QString::number(instant->millisecondsSinceEpoch()) : u"refused"_s;
}

qint64 milliseconds(int year, int month, int day, int hour = 0, int minute = 0, int second = 0, int ms = 0)
{
    return QDateTime(QDate(year, month, day), QTime(hour, minute, second, ms), Qt::UTC).toMSecsSinceEpoch();
}

} // namespace

class InstantTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void shouldReadADateAndTimeWithAZone_data();
    void shouldReadADateAndTimeWithAZone();
    void shouldReadEveryOffset();
    void shouldRefuseATextThatIsNoInstant_data();
    void shouldRefuseATextThatIsNoInstant();
    void shouldRefuseEveryTextThatWasCutOff();
    void shouldReadLongFractionsWithoutOverflowing();
    void shouldPrintWholeSecondsRoundedDown_data();
    void shouldPrintWholeSecondsRoundedDown();
    void shouldPrintWhatItReadsBackAtTheEdges_data();
    void shouldPrintWhatItReadsBackAtTheEdges();
    void shouldPrintLikeAnotherCalendar();
    void shouldOrderByTime();
    void shouldBeTheEpochByDefault();
};

void InstantTest::shouldReadADateAndTimeWithAZone_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<qint64>("expected");
    const auto row = [](const char *name, const char *text, qint64 expected) {
        QTest::newRow(name) << QByteArray(text) << expected;
    };
    const qint64 morning = milliseconds(2026, 3, 5, 8);
    row("whole seconds in UTC", "2026-03-05T08:00:00Z", morning);
    row("three fraction digits", "2026-03-05T08:00:00.123Z", morning + 123);
    row("an offset", "2026-03-05T09:00:00+01:00", morning);
    row("a fraction and an offset", "2026-03-05T09:00:00.5+01:00", morning + 500);
    row("the epoch", "1970-01-01T00:00:00Z", 0);
    row("before the epoch", "1969-12-31T23:59:59Z", -1000);
    row("a fraction before the epoch", "1969-12-31T23:59:59.999Z", -1);
    row("the last second of a day", "2026-03-05T23:59:59Z", milliseconds(2026, 3, 5, 23, 59, 59));
    row("a leap day", "2024-02-29T12:30:45Z", milliseconds(2024, 2, 29, 12, 30, 45));

    row("one fraction digit, ending :00.5Z", "2026-03-05T08:00:00.5Z", morning + 500);
    row("two fraction digits", "2026-03-05T08:00:00.12Z", morning + 120);
    row("fraction with a leading zero", "2026-03-05T08:00:00.05Z", morning + 50);
    row("four fraction digits", "2026-03-05T08:00:00.1234Z", morning + 123);
    row("five fraction digits", "2026-03-05T08:00:00.12345Z", morning + 123);
    row("six fraction digits", "2026-03-05T08:00:00.123456Z", morning + 123);
    row("seven fraction digits", "2026-03-05T08:00:00.1234567Z", morning + 123);
    row("eight fraction digits", "2026-03-05T08:00:00.12345678Z", morning + 123);
    row("nine fraction digits", "2026-03-05T08:00:00.123456789Z", morning + 123);
    row("ten fraction digits", "2026-03-05T08:00:00.1234567891Z", morning + 123);
    row("eleven fraction digits", "2026-03-05T08:00:00.12345678912Z", morning + 123);
    row("twelve fraction digits", "2026-03-05T08:00:00.123456789123Z", morning + 123);
    row("a fraction is cut off, not rounded", "2026-03-05T08:00:00.9999999Z", morning + 999);
    row("a fraction before the epoch is cut off", "1969-12-31T23:59:59.0009Z", -1000);
    row("a fraction of zeros", "2026-03-05T08:00:00.000000Z", morning);

    row("offset without a colon", "2026-03-05T09:00:00+0100", morning);
    row("offset of hours alone", "2026-03-05T09:00:00+01", morning);
    row("western offset", "2026-03-05T03:00:00-05:00", morning);
    row("western offset without a colon", "2026-03-05T03:00:00-0500", morning);
    row("western offset of hours alone", "2026-03-05T03:00:00-05", morning);
    row("offset with minutes", "2026-03-05T13:30:00+05:30", morning);
    row("western offset with minutes", "2026-03-05T04:30:00-03:30", morning);
    row("offset of zero", "2026-03-05T08:00:00+00:00", morning);
    row("offset of minus zero", "2026-03-05T08:00:00-00:00", morning);
    row("greatest offset", "2026-03-06T07:59:00+23:59", morning);
    row("greatest western offset", "2026-03-04T08:01:00-23:59", morning);
    row("an offset that leads into the day before", "2026-03-05T00:30:00+01:00",
        milliseconds(2026, 3, 4, 23, 30));
    row("an offset that leads into the next year", "2025-12-31T23:00:00-02:00", milliseconds(2026, 1, 1, 1));
    row("an offset that leads into a leap day", "2024-03-01T00:00:00+00:01",
        milliseconds(2024, 2, 29, 23, 59));

    row("the first instant of year 1", "0001-01-01T00:00:00Z", milliseconds(1, 1, 1));
    row("the last instant of year 9999", "9999-12-31T23:59:59.999Z",
        milliseconds(9999, 12, 31, 23, 59, 59, 999));
    row("a western offset at the start of year 1", "0001-01-01T00:00:00-01:00", milliseconds(1, 1, 1, 1));
    row("an offset that ends at the start of year 1", "0001-01-01T01:00:00+01:00", milliseconds(1, 1, 1));
    row("an offset at the end of year 9999", "9999-12-31T23:59:59+01:00",
        milliseconds(9999, 12, 31, 22, 59, 59));
    row("a western offset that ends at the end of year 9999", "9999-12-31T22:59:59-01:00",
        milliseconds(9999, 12, 31, 23, 59, 59));
}

void InstantTest::shouldReadADateAndTimeWithAZone()
{
    QFETCH(QByteArray, text);
    QFETCH(qint64, expected);
    QCOMPARE(outcome(text), QString::number(expected));
}

void InstantTest::shouldReadEveryOffset()
{
    const qint64 noon = milliseconds(2026, 3, 5, 12);
    for (int hours = 0; hours < 24; ++hours) {
        for (int minutes = 0; minutes < 60; ++minutes) {
            const qint64 offset = (hours * 60 + minutes) * 60'000;
            for (const char *const form : {"%02d:%02d", "%02d%02d"}) {
                const QByteArray zone = QString::asprintf(form, hours, minutes).toLatin1();
                QCOMPARE(outcome("2026-03-05T12:00:00+" + zone), QString::number(noon - offset));
                QCOMPARE(outcome("2026-03-05T12:00:00-" + zone), QString::number(noon + offset));
            }
        }
    }
}

void InstantTest::shouldRefuseATextThatIsNoInstant_data()
{
    QTest::addColumn<QByteArray>("text");
    const auto row = [](const char *name, const QByteArray &text) { QTest::newRow(name) << text; };
    row("empty", "");
    row("no time", "2026-03-05");
    row("no time behind the T", "2026-03-05T");
    row("no date", "08:00:00Z");
    row("no date before the T", "T08:00:00Z");
    row("no zone", "2026-03-05T08:00:00");
    row("no zone behind a fraction", "2026-03-05T08:00:00.123");
    row("blank for T", "2026-03-05 08:00:00Z");
    row("lower-case t", "2026-03-05t08:00:00Z");
    row("lower-case z", "2026-03-05T08:00:00z");
    row("underscore for T", "2026-03-05_08:00:00Z");
    row("nothing for T", "2026-03-0508:00:00Z");
    row("no seconds", "2026-03-05T08:00Z");
    row("no seconds, with an offset", "2026-03-05T08:00+01:00");
    row("no minutes", "2026-03-05T08Z");
    row("time without colons", "2026-03-05T080000Z");
    row("date without hyphens", "20260305T08:00:00Z");
    row("date and time without separators", "20260305T080000Z");
    row("a week", "2026-W10-4T08:00:00Z");
    row("a day of the year", "2026-064T08:00:00Z");

    row("second 60", "2026-03-05T08:00:60Z");
    row("a leap second", "2016-12-31T23:59:60Z");
    row("minute 60", "2026-03-05T08:60:00Z");
    row("hour 24", "2026-03-05T24:00:00Z");
    row("hour 25", "2026-03-05T25:00:00Z");
    row("month 0", "2026-00-05T08:00:00Z");
    row("month 13", "2026-13-05T08:00:00Z");
    row("day 0", "2026-03-00T08:00:00Z");
    row("day 32", "2026-03-32T08:00:00Z");
    row("30 February", "2026-02-30T08:00:00Z");
    row("29 February of a common year", "2026-02-29T08:00:00Z");
    row("29 February of a common century", "1900-02-29T08:00:00Z");
    row("31 April", "2026-04-31T08:00:00Z");

    row("month of one digit", "2026-3-05T08:00:00Z");
    row("day of one digit", "2026-03-5T08:00:00Z");
    row("hour of one digit", "2026-03-05T8:00:00Z");
    row("second of one digit", "2026-03-05T08:00:0Z");
    row("second of three digits", "2026-03-05T08:00:000Z");
    row("year of two digits", "26-03-05T08:00:00Z");
    row("year of five digits", "12026-03-05T08:00:00Z");
    row("year with a plus", "+2026-03-05T08:00:00Z");
    row("year with a plus in its four characters", "+026-03-05T08:00:00Z");
    row("negative year", "-2026-03-05T08:00:00Z");
    row("month with a plus in its two characters", "2026-+3-05T08:00:00Z");

    row("a dot without fraction digits", "2026-03-05T08:00:00.Z");
    row("a dot without fraction digits before an offset", "2026-03-05T08:00:00.+01:00");
    row("comma before the fraction", "2026-03-05T08:00:00,5Z");
    row("two fractions", "2026-03-05T08:00:00.5.5Z");
    row("fraction of a minute", "2026-03-05T08:00.5Z");
    row("sign in the fraction", "2026-03-05T08:00:00.-5Z");

    row("offset hour 24", "2026-03-05T08:00:00+24:00");
    row("offset hour 99", "2026-03-05T08:00:00+99:00");
    row("offset minute 60", "2026-03-05T08:00:00+01:60");
    row("offset minute 60 without a colon", "2026-03-05T08:00:00+0160");
    row("offset of one digit", "2026-03-05T08:00:00+1");
    row("offset of three digits", "2026-03-05T08:00:00+010");
    row("offset with one digit of the minute", "2026-03-05T08:00:00+01:0");
    row("offset with a colon and no minute", "2026-03-05T08:00:00+01:");
    row("offset with seconds", "2026-03-05T08:00:00+01:00:00");
    row("offset with seconds without colons", "2026-03-05T08:00:00+010000");
    row("offset with two colons", "2026-03-05T08:00:00+01::00");
    row("a sign alone", "2026-03-05T08:00:00+");
    row("two signs", "2026-03-05T08:00:00+-01:00");
    row("offset without a sign", "2026-03-05T08:00:0001:00");
    row("Z and an offset", "2026-03-05T08:00:00Z+01:00");
    row("an offset and Z", "2026-03-05T08:00:00+01:00Z");
    row("name of a zone", "2026-03-05T08:00:00 GMT");
    row("name of a zone in brackets", "2026-03-05T08:00:00Z[UTC]");
    row("minus sign of typography", "2026-03-05T08:00:00\u221205:00");

    row("blank before", " 2026-03-05T08:00:00Z");
    row("blank after", "2026-03-05T08:00:00Z ");
    row("blank before the zone", "2026-03-05T08:00:00 Z");
    row("line feed after", "2026-03-05T08:00:00Z\n");
    row("a word after", "2026-03-05T08:00:00Zulu");
    row("null character after", QByteArray("2026-03-05T08:00:00Z\0", 21));
    row("null character before", QByteArray("\0002026-03-05T08:00:00Z", 21));
    row("null character for T", QByteArray("2026-03-05\00008:00:00Z", 20));
    row("null character for Z", QByteArray("2026-03-05T08:00:00\0", 20));
    row("null character in the fraction", QByteArray("2026-03-05T08:00:00.\0Z", 22));
    row("Arabic-Indic digits", "\u0662\u0660\u0662\u0666-03-05T08:00:00Z");
    row("byte order mark",
        "\xEF\xBB\xBF"
        "2026-03-05T08:00:00Z");
    row("seconds since 1970", "1772697600");

    row("year 0", "0000-12-31T08:00:00Z");
    row("an offset that leads before year 1", "0001-01-01T00:00:00+00:01");
    row("a fraction and an offset that lead before year 1", "0001-01-01T00:59:59.999+01:00");
    row("an offset that leads behind year 9999", "9999-12-31T23:59:59-00:01");
    row("an offset that leads to the first moment behind year 9999", "9999-12-31T23:59:00-00:01");
    row("year 0 with an offset that leads into year 1", "0000-12-31T23:30:00-01:00");
}

void InstantTest::shouldRefuseATextThatIsNoInstant()
{
    QFETCH(QByteArray, text);
    QCOMPARE(outcome(text), u"refused"_s);
}

void InstantTest::shouldRefuseEveryTextThatWasCutOff()
{
    for (const QByteArray whole : {"2026-03-05T08:00:00.123Z", "2026-03-05T08:00:00Z"}) {
        QVERIFY(outcome(whole) != u"refused"_s);
        for (qsizetype length = 0; length < whole.size(); ++length)
            QCOMPARE(outcome(whole.first(length)), u"refused"_s);
        for (qsizetype start = 1; start <= whole.size(); ++start)
            QCOMPARE(outcome(whole.sliced(start)), u"refused"_s);
    }
}

void InstantTest::shouldReadLongFractionsWithoutOverflowing()
{
    const QByteArray nines(1'000'000, '9');
    QCOMPARE(outcome("1970-01-01T00:00:00." + nines + 'Z'), u"999"_s);
    QCOMPARE(outcome("1970-01-01T00:00:00." + nines), u"refused"_s);
}

void InstantTest::shouldPrintWholeSecondsRoundedDown_data()
{
    QTest::addColumn<qint64>("value");
    QTest::addColumn<QByteArray>("expected");
    const auto row = [](const char *name, qint64 value, const char *expected) {
        QTest::newRow(name) << value << QByteArray(expected);
    };
    row("the epoch", 0, "1970-01-01T00:00:00Z");
    row("half a second", 500, "1970-01-01T00:00:00Z");
    row("just before the next second", 999, "1970-01-01T00:00:00Z");
    row("a second", 1000, "1970-01-01T00:00:01Z");
    row("a millisecond before the epoch", -1, "1969-12-31T23:59:59Z");
    row("a second before the epoch", -1000, "1969-12-31T23:59:59Z");
    row("more than a second before the epoch", -1001, "1969-12-31T23:59:58Z");
    row("a day before the epoch", -86'400'000, "1969-12-31T00:00:00Z");
    row("a millisecond more than a day before the epoch", -86'400'001, "1969-12-30T23:59:59Z");
    row("a morning", milliseconds(2026, 3, 5, 8), "2026-03-05T08:00:00Z");
    row("a leap day", milliseconds(2024, 2, 29, 23, 59, 59, 999), "2024-02-29T23:59:59Z");
    row("year 987", milliseconds(987, 1, 2, 3, 4, 5), "0987-01-02T03:04:05Z");
}

void InstantTest::shouldPrintWholeSecondsRoundedDown()
{
    QFETCH(qint64, value);
    QFETCH(QByteArray, expected);
    const Instant instant = Instant::fromMillisecondsSinceEpoch(value);
    QCOMPARE(instant.millisecondsSinceEpoch(), value);
    QCOMPARE(instant.text(), expected);
}

void InstantTest::shouldPrintWhatItReadsBackAtTheEdges_data()
{
    QTest::addColumn<QByteArray>("text");
    for (const char *text : {"0001-01-01T00:00:00Z", "1969-12-31T23:59:59Z", "1970-01-01T00:00:00Z",
             "2024-02-29T12:00:00Z", "9999-12-31T23:59:59Z"})
        QTest::newRow(text) << QByteArray(text);
}

void InstantTest::shouldPrintWhatItReadsBackAtTheEdges()
{
    QFETCH(QByteArray, text);
    const auto instant = Instant::fromText(text.toStdString());
    QVERIFY(instant);
    QCOMPARE(instant->text(), text);
}

void InstantTest::shouldPrintLikeAnotherCalendar()
{
    // A step of 11 days and some odd milliseconds, over the years 1 to 9999.
    for (qint64 value = milliseconds(1, 1, 1); value < milliseconds(9999, 12, 31); value += 987'654'321) {
        const QDateTime other = QDateTime::fromMSecsSinceEpoch(value, Qt::UTC);
        const QByteArray expected = other.toString(u"yyyy-MM-dd'T'HH:mm:ss'Z'"_s).toLatin1();
        QCOMPARE(Instant::fromMillisecondsSinceEpoch(value).text(), expected);
    }
}

void InstantTest::shouldOrderByTime()
{
    const Instant earlier = Instant::fromMillisecondsSinceEpoch(-1);
    const Instant later = Instant::fromMillisecondsSinceEpoch(0);
    QVERIFY(earlier < later);
    QVERIFY(later > earlier);
    QVERIFY(earlier != later);
    QCOMPARE(Instant::fromText("2026-03-05T09:00:00+01:00"), Instant::fromText("2026-03-05T08:00:00Z"));
    QVERIFY(Instant::fromText("2026-03-05T08:00:00.001Z") > Instant::fromText("2026-03-05T08:00:00Z"));
}

void InstantTest::shouldBeTheEpochByDefault()
{
    QCOMPARE(Instant().millisecondsSinceEpoch(), 0);
    QCOMPARE(Instant::fromSecondsSinceEpoch(5), Instant::fromMillisecondsSinceEpoch(5000));
    QCOMPARE(Instant::fromSecondsSinceEpoch(-5).millisecondsSinceEpoch(), -5000);
}

ORBITLEDGE_TEST_MAIN(InstantTest)
#include "InstantTest.moc"
