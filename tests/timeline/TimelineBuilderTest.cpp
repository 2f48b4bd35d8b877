#include "timeline/TimelineBuilder.h"

#include "support/Printing.h"
#include "support/SampleSubscriptions.h"
#include "support/TestMain.h"
#include "support/Times.h"
#include "timeline/BrandColor.h"

using namespace orbitledge;
using namespace orbitledge::testing;
using namespace Qt::StringLiterals;

// Zones are the system's tzdata, month names and first weekdays ICU's.

namespace {

using Days = std::optional<qint64>;

// A Thursday. The American week is that of Sunday 2026-03-01, the next one starts on the 8th.
constexpr const char *thursdayNoon = "2026-03-05T12:00:00Z";

TimelineSnapshot build(const QList<Subscription> &subscriptions, const QString &currency = u"USD"_s)
{
    return buildTimeline(subscriptions, currency, at(thursdayNoon), calendarIn("UTC"));
}

/// "week: A 0, B 2; later: C" with the days where there are any.
QString outline(const TimelineSnapshot &snapshot)
{
    QStringList sections;
    for (const TimelineSection &section : snapshot.sections) {
        QStringList entries;
        for (const TimelineEntry &entry : section.entries) {
            const QString days
                = entry.daysUntilRenewal ? u' ' + QString::number(*entry.daysUntilRenewal) : QString();
            entries.append(entry.subscription->name + days);
        }
        sections.append(section.id + u": "_s + entries.join(u", "_s));
    }
    return sections.join(u"; "_s);
}

/// "1 2 *3 4": the strip's days of the month, today's with a star.
QString stripOutline(const TimelineSnapshot &snapshot)
{
    QStringList days;
    for (const TimelineDay &day : snapshot.week)
        days.append((day.isToday ? u"*"_s : QString()) + QString::number(day.localDate.day));
    return days.join(u' ');
}

} // namespace

class TimelineBuilderTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void shouldShowAnEmptyWeekAndNothingElseForNoSubscriptions()
    {
        const TimelineSnapshot snapshot = build({});
        QCOMPARE(snapshot.monthlyTotal, Decimal());
        QCOMPARE(snapshot.remainingThisMonth, Decimal());
        QCOMPARE(snapshot.activeCount, 0);
        QCOMPARE(snapshot.totalsArePartial, false);
        QVERIFY(snapshot.sections.isEmpty());
        QCOMPARE(snapshot.week.size(), 7);
        for (const TimelineDay &day : snapshot.week)
            QVERIFY(day.renewalColors.isEmpty());
        QCOMPARE(snapshot.badgeCount, 0);
    }

    // Totals

    void shouldMatchTheProfilesCurrencyInAnyCase()
    {
        const TimelineSnapshot snapshot = build({SampleSubscription().costs(u"12.34"_s, u"EUR"_s)}, u"eur"_s);
        QCOMPARE(snapshot.monthlyTotal, decimal(u"12.34"_s));
        QVERIFY(!snapshot.totalsArePartial);
    }

    void shouldListAForeignSubscriptionThatItCannotCount()
    {
        const TimelineSnapshot snapshot
            = build({SampleSubscription(u"Foreign"_s).costs(u"5"_s, u"EUR"_s).renewsOn({2026, 3, 6})});
        QVERIFY(snapshot.totalsArePartial);
        QCOMPARE(snapshot.monthlyTotal, Decimal());
        QCOMPARE(snapshot.remainingThisMonth, Decimal());
        QCOMPARE(snapshot.activeCount, 1);
        QCOMPARE(outline(snapshot), u"week: Foreign 1"_s);
        QCOMPARE(snapshot.week[5].renewalColors.size(), 1);
        QCOMPARE(snapshot.badgeCount, 1);
    }

    void shouldAddUpWhatEachSubscriptionCostsPerMonth_data()
    {
        QTest::addColumn<QList<Subscription>>("subscriptions");
        QTest::addColumn<QString>("monthlyTotal");
        QTest::addColumn<QString>("remaining");
        QTest::addColumn<bool>("partial");
        const auto row = [](const char *name, const QList<Subscription> &subscriptions,
                             const QString &monthlyTotal, const QString &remaining, bool partial) {
            QTest::newRow(name) << subscriptions << monthlyTotal << remaining << partial;
        };
        const auto costing = [](const QString &amount, const QString &cycle = u"monthly"_s) {
            return SampleSubscription().costs(amount).every(cycle);
        };
        const auto inEuros = [] { return SampleSubscription().costs(u"8"_s, u"EUR"_s); };

        row("monthly", {costing(u"9.99"_s)}, u"9.99"_s, u"9.99"_s, false);
        row("weekly, four times", {costing(u"10.00"_s, u"weekly"_s)}, u"40"_s, u"10"_s, false);
        row("yearly, a twelfth", {costing(u"120"_s, u"yearly"_s)}, u"10"_s, u"120"_s, false);
        row("annual", {costing(u"120"_s, u"annual"_s)}, u"10"_s, u"120"_s, false);
        row("annually", {costing(u"120"_s, u"annually"_s)}, u"10"_s, u"120"_s, false);
        row("quarterly, a third that is not rounded", {costing(u"10"_s, u"quarterly"_s)},
            u"3.3333333333333333333333333333333333333"_s, u"10"_s, false);
        row("yearly, a twelfth that is not rounded", {costing(u"100"_s, u"yearly"_s)},
            u"8.3333333333333333333333333333333333333"_s, u"100"_s, false);
        row("cycles in any case",
            {costing(u"1"_s, u"MONTHLY"_s), costing(u"1"_s, u"Weekly"_s), costing(u"12"_s, u"YearLy"_s),
                costing(u"3"_s, u"QUARTERLY"_s), costing(u"12"_s, u"Annual"_s)},
            u"8"_s, u"29"_s, false);
        row("unknown cycle, charged this month all the same", {costing(u"7"_s, u"biweekly"_s)}, u"0"_s,
            u"7"_s, true);
        row("no cycle", {costing(u"7"_s, u""_s)}, u"0"_s, u"7"_s, true);
        row("cycle with a blank", {costing(u"7"_s, u"monthly "_s)}, u"0"_s, u"7"_s, true);
        row("unknown cycle next month", {costing(u"7"_s, u"biweekly"_s).renewsOn({2026, 4, 10})}, u"0"_s,
            u"0"_s, true);
        row("one that cannot be counted among others",
            {costing(u"1.1"_s), costing(u"7"_s, u"daily"_s), costing(u"2.2"_s)}, u"3.3"_s, u"10.3"_s, true);

        row("converted", {inEuros().convertedTo(u"9"_s, u"usd"_s)}, u"9"_s, u"9"_s, false);
        row("converted, weekly", {inEuros().convertedTo(u"9"_s, u"USD"_s).every(u"weekly"_s)}, u"36"_s,
            u"9"_s, false);
        row("own currency wins over a conversion", {costing(u"8"_s).convertedTo(u"9"_s, u"USD"_s)}, u"8"_s,
            u"8"_s, false);
        row("converted to a third currency", {inEuros().convertedTo(u"9"_s, u"GBP"_s)}, u"0"_s, u"0"_s, true);
        Subscription withoutAmount = inEuros();
        withoutAmount.convertedCurrency = u"USD"_s;
        row("conversion without an amount", {withoutAmount}, u"0"_s, u"0"_s, true);
        Subscription withoutCurrency = inEuros();
        withoutCurrency.convertedCost = Decimal(9);
        row("conversion without a currency", {withoutCurrency}, u"0"_s, u"0"_s, true);
        row("foreign with an unknown cycle", {inEuros().every(u"biweekly"_s)}, u"0"_s, u"0"_s, true);

        row("inactive does not count", {costing(u"9"_s).withStatus(u"paused"_s)}, u"0"_s, u"0"_s, false);
        row("inactive and foreign does not make totals partial",
            {inEuros().withStatus(u"cancelled"_s), costing(u"1"_s)}, u"1"_s, u"1"_s, false);

        row("cents that binary numbers cannot hold",
            {costing(u"0.1"_s), costing(u"0.2"_s), costing(u"1e-20"_s)}, u"0.30000000000000000001"_s,
            u"0.30000000000000000001"_s, false);
        row("negative amounts", {costing(u"10"_s), costing(u"-2.5"_s)}, u"7.5"_s, u"7.5"_s, false);
        row("free of charge", {costing(u"0"_s, u"yearly"_s)}, u"0"_s, u"0"_s, false);
        row("three thirds",
            {costing(u"1"_s, u"quarterly"_s), costing(u"1"_s, u"quarterly"_s),
                costing(u"1"_s, u"quarterly"_s)},
            u"0.99999999999999999999999999999999999999"_s, u"3"_s, false);
    }
    void shouldAddUpWhatEachSubscriptionCostsPerMonth()
    {
        // GIVEN renewals on 2026-03-14 where a row does not say otherwise
        QFETCH(QList<Subscription>, subscriptions);
        QFETCH(QString, monthlyTotal);
        QFETCH(QString, remaining);
        QFETCH(bool, partial);
        const TimelineSnapshot snapshot = build(subscriptions);
        QCOMPARE(snapshot.monthlyTotal.toString(), monthlyTotal);
        QCOMPARE(snapshot.remainingThisMonth.toString(), remaining);
        QCOMPARE(snapshot.totalsArePartial, partial);
    }

    void shouldCountWhatIsStillChargedThisMonth_data()
    {
        QTest::addColumn<LocalDate>("date");
        QTest::addColumn<bool>("counts");
        QTest::newRow("last month") << LocalDate{2026, 2, 28} << false;
        QTest::newRow("this month, but yesterday") << LocalDate{2026, 3, 4} << false;
        QTest::newRow("today") << LocalDate{2026, 3, 5} << true;
        QTest::newRow("tomorrow") << LocalDate{2026, 3, 6} << true;
        QTest::newRow("last day of the month") << LocalDate{2026, 3, 31} << true;
        QTest::newRow("first day of next month") << LocalDate{2026, 4, 1} << false;
        QTest::newRow("the same day of next year") << LocalDate{2027, 3, 5} << false;
        QTest::newRow("a day that does not exist") << LocalDate{2026, 3, 32} << false;
    }
    void shouldCountWhatIsStillChargedThisMonth()
    {
        QFETCH(LocalDate, date);
        QFETCH(bool, counts);
        const TimelineSnapshot snapshot
            = build({SampleSubscription().costs(u"120"_s).every(u"yearly"_s).renewsOn(date)});
        QCOMPARE(snapshot.remainingThisMonth, counts ? Decimal(120) : Decimal());
        QCOMPARE(snapshot.monthlyTotal, Decimal(10));
    }

    // Sections

    void shouldPutARenewalIntoItsSection_data()
    {
        QTest::addColumn<QByteArray>("zone");
        QTest::addColumn<QByteArray>("locale");
        QTest::addColumn<Instant>("now");
        QTest::addColumn<LocalDate>("date");
        QTest::addColumn<QString>("expected");
        const auto rows = [](const char *context, const char *zone, const char *locale, const char *now,
                              const QList<std::pair<LocalDate, QString>> &renewals) {
            for (const auto &[date, expected] : renewals)
                QTest::addRow("%s: %s", context, qPrintable(date.text()))
                    << QByteArray(zone) << QByteArray(locale) << at(now) << date << expected;
        };
        rows("week from Sunday", "UTC", "en_US", thursdayNoon,
            {{{2025, 3, 5}, u"week: Sample -365"_s}, {{2026, 2, 28}, u"week: Sample -5"_s},
                {{2026, 3, 4}, u"week: Sample -1"_s}, {{2026, 3, 5}, u"week: Sample 0"_s},
                {{2026, 3, 7}, u"week: Sample 2"_s}, {{2026, 3, 8}, u"week: Sample 3"_s},
                {{2026, 3, 9}, u"month: Sample 4"_s}, {{2026, 3, 31}, u"month: Sample 26"_s},
                {{2026, 4, 1}, u"month: Sample 27"_s}, {{2026, 4, 2}, u"next-month: Sample 28"_s},
                {{2026, 4, 30}, u"next-month: Sample 56"_s}, {{2026, 5, 1}, u"later: Sample 57"_s},
                {{2026, 5, 2}, u"later: Sample 58"_s}, {{2027, 3, 5}, u"later: Sample 365"_s},
                {{9999, 12, 31}, u"later: Sample 2912379"_s}});
        rows("week from Monday", "UTC", "de_DE", thursdayNoon,
            {{{2026, 3, 8}, u"week: Sample 3"_s}, {{2026, 3, 9}, u"week: Sample 4"_s},
                {{2026, 3, 10}, u"month: Sample 5"_s}});
        rows("week from Saturday", "UTC", "en_EG", thursdayNoon,
            {{{2026, 3, 6}, u"week: Sample 1"_s}, {{2026, 3, 7}, u"week: Sample 2"_s},
                {{2026, 3, 8}, u"month: Sample 3"_s}});
        rows("first moment of the week", "UTC", "en_US", "2026-03-08T00:00:00Z",
            {{{2026, 3, 7}, u"week: Sample -1"_s}, {{2026, 3, 15}, u"week: Sample 7"_s},
                {{2026, 3, 16}, u"month: Sample 8"_s}});
        rows("last second of the week", "UTC", "en_US", "2026-03-07T23:59:59Z",
            {{{2026, 3, 8}, u"week: Sample 1"_s}, {{2026, 3, 9}, u"month: Sample 2"_s}});
        rows("week over the month's end", "UTC", "en_US", "2026-03-31T12:00:00Z",
            {{{2026, 4, 1}, u"week: Sample 1"_s}, {{2026, 4, 5}, u"week: Sample 5"_s},
                {{2026, 4, 6}, u"next-month: Sample 6"_s}, {{2026, 5, 1}, u"later: Sample 31"_s}});
        rows("next week starts with next month", "UTC", "de_DE", "2026-05-28T12:00:00Z",
            {{{2026, 5, 31}, u"week: Sample 3"_s}, {{2026, 6, 1}, u"week: Sample 4"_s},
                {{2026, 6, 2}, u"next-month: Sample 5"_s}});
        rows("next year is next month", "UTC", "en_US", "2026-12-15T12:00:00Z",
            {{{2026, 12, 31}, u"month: Sample 16"_s}, {{2027, 1, 1}, u"month: Sample 17"_s},
                {{2027, 1, 2}, u"next-month: Sample 18"_s}, {{2027, 1, 31}, u"next-month: Sample 47"_s},
                {{2027, 2, 1}, u"later: Sample 48"_s}});
        rows("week over the year's end", "UTC", "en_US", "2026-12-31T12:00:00Z",
            {{{2027, 1, 1}, u"week: Sample 1"_s}, {{2027, 1, 3}, u"week: Sample 3"_s},
                {{2027, 1, 4}, u"next-month: Sample 4"_s}});
        rows("from a 31st to a short month", "UTC", "en_US", "2026-01-31T12:00:00Z",
            {{{2026, 2, 1}, u"week: Sample 1"_s}, {{2026, 2, 2}, u"next-month: Sample 2"_s},
                {{2026, 2, 28}, u"next-month: Sample 28"_s}, {{2026, 3, 1}, u"later: Sample 29"_s}});
        rows("from a 31st to a leap month", "UTC", "en_US", "2024-01-31T12:00:00Z",
            {{{2024, 2, 29}, u"next-month: Sample 29"_s}, {{2024, 3, 1}, u"later: Sample 30"_s}});
        rows("leap day in this week", "UTC", "en_US", "2024-02-28T12:00:00Z",
            {{{2024, 2, 29}, u"week: Sample 1"_s}, {{2024, 3, 1}, u"week: Sample 2"_s}});
        rows("on a leap day", "UTC", "en_US", "2024-02-29T12:00:00Z",
            {{{2024, 2, 29}, u"week: Sample 0"_s}, {{2024, 3, 31}, u"next-month: Sample 31"_s},
                {{2025, 2, 28}, u"later: Sample 365"_s}});
        rows("29 February of a common year", "UTC", "en_US", "2026-02-10T12:00:00Z",
            {{{2026, 2, 29}, u"later: Sample"_s}});
        rows("30 February", "UTC", "en_US", thursdayNoon, {{{2026, 2, 30}, u"later: Sample"_s}});
        rows("month 13", "UTC", "en_US", thursdayNoon, {{{2026, 13, 1}, u"later: Sample"_s}});
        rows("the machine's day, not that of UTC, east", "Pacific/Kiritimati", "en_US",
            "2026-03-05T12:00:00Z",
            {{{2026, 3, 5}, u"week: Sample -1"_s}, {{2026, 3, 6}, u"week: Sample 0"_s}});
        rows("the machine's day, not that of UTC, west", "Pacific/Pago_Pago", "en_US", "2026-03-05T06:00:00Z",
            {{{2026, 3, 4}, u"week: Sample 0"_s}, {{2026, 3, 5}, u"week: Sample 1"_s}});
        rows("day of 23 hours", "Europe/Berlin", "de_DE", "2026-03-28T12:00:00Z",
            {{{2026, 3, 29}, u"week: Sample 1"_s}, {{2026, 3, 30}, u"week: Sample 2"_s},
                {{2026, 3, 31}, u"month: Sample 3"_s}});
        rows("within a day of 23 hours", "Europe/Berlin", "de_DE", "2026-03-29T12:00:00Z",
            {{{2026, 3, 28}, u"week: Sample -1"_s}, {{2026, 3, 30}, u"week: Sample 1"_s}});
        rows("day of 25 hours", "Europe/Berlin", "de_DE", "2026-10-24T12:00:00Z",
            {{{2026, 10, 25}, u"week: Sample 1"_s}, {{2026, 10, 26}, u"week: Sample 2"_s},
                {{2026, 10, 27}, u"month: Sample 3"_s}});
        rows("last hour of a day of 25 hours", "Europe/Berlin", "de_DE", "2026-10-25T22:30:00Z",
            {{{2026, 10, 24}, u"week: Sample -1"_s}, {{2026, 10, 25}, u"week: Sample 0"_s},
                {{2026, 10, 26}, u"week: Sample 1"_s}});
        rows("before a midnight that is skipped, Cairo", "Africa/Cairo", "ar_EG", "2026-04-22T10:00:00Z",
            {{{2026, 4, 23}, u"week: Sample 1"_s}, {{2026, 4, 24}, u"week: Sample 2"_s},
                {{2026, 4, 25}, u"week: Sample 3"_s}, {{2026, 4, 26}, u"month: Sample 4"_s}});
        rows("hour before midnight comes twice, Cairo", "Africa/Cairo", "ar_EG", "2026-10-29T21:30:00Z",
            {{{2026, 10, 28}, u"week: Sample -1"_s}, {{2026, 10, 29}, u"week: Sample 0"_s},
                {{2026, 10, 30}, u"week: Sample 1"_s}, {{2026, 10, 31}, u"week: Sample 2"_s},
                {{2026, 11, 1}, u"month: Sample 3"_s}, {{2026, 11, 2}, u"next-month: Sample 4"_s}});
        rows("before a month whose midnight is skipped, Asuncion", "America/Asuncion", "en_US",
            "2017-09-15T12:00:00Z",
            {{{2017, 9, 30}, u"month: Sample 15"_s}, {{2017, 10, 1}, u"month: Sample 16"_s},
                {{2017, 10, 2}, u"next-month: Sample 17"_s}, {{2017, 10, 31}, u"next-month: Sample 46"_s},
                {{2017, 11, 1}, u"later: Sample 47"_s}});
        rows("in a month whose midnight is skipped, Asuncion", "America/Asuncion", "en_US",
            "2017-10-15T12:00:00Z",
            {{{2017, 10, 1}, u"week: Sample -14"_s}, {{2017, 11, 1}, u"month: Sample 17"_s},
                {{2017, 11, 2}, u"next-month: Sample 18"_s}, {{2017, 12, 1}, u"later: Sample 47"_s}});
        rows("before a month whose midnight is repeated, Havana", "America/Havana", "en_US",
            "2026-10-15T12:00:00Z",
            {{{2026, 11, 1}, u"month: Sample 17"_s}, {{2026, 11, 2}, u"next-month: Sample 18"_s},
                {{2026, 11, 30}, u"next-month: Sample 46"_s}, {{2026, 12, 1}, u"later: Sample 47"_s}});
        rows("second of two midnights, Havana", "America/Havana", "en_US", "2026-11-01T05:00:00Z",
            {{{2026, 10, 31}, u"week: Sample -1"_s}, {{2026, 11, 1}, u"week: Sample 0"_s},
                {{2026, 11, 2}, u"week: Sample 1"_s}, {{2026, 11, 8}, u"week: Sample 7"_s}});
        rows("a day is skipped whole, Apia", "Pacific/Apia", "en_US", "2011-12-29T20:00:00Z",
            {{{2011, 12, 29}, u"week: Sample 0"_s}, {{2011, 12, 31}, u"week: Sample 2"_s},
                {{2012, 1, 1}, u"week: Sample 3"_s}, {{2012, 1, 2}, u"next-month: Sample 4"_s}});
        rows("summer of 2060, New York", "America/New_York", "en_US", "2060-03-13T12:00:00Z",
            {{{2060, 3, 14}, u"week: Sample 1"_s}, {{2060, 3, 15}, u"month: Sample 2"_s},
                {{2060, 4, 1}, u"month: Sample 19"_s}, {{2060, 4, 30}, u"next-month: Sample 48"_s},
                {{2060, 5, 1}, u"later: Sample 49"_s}});
        rows("autumn of 2060, New York", "America/New_York", "en_US", "2060-10-15T12:00:00Z",
            {{{2060, 11, 1}, u"month: Sample 17"_s}, {{2060, 11, 30}, u"next-month: Sample 46"_s},
                {{2060, 12, 1}, u"later: Sample 47"_s}});
    }
    void shouldPutARenewalIntoItsSection()
    {
        QFETCH(QByteArray, zone);
        QFETCH(QByteArray, locale);
        QFETCH(Instant, now);
        QFETCH(LocalDate, date);
        QFETCH(QString, expected);
        const TimelineSnapshot snapshot
            = buildTimeline({SampleSubscription().renewsOn(date)}, u"USD"_s, now, calendarIn(zone, locale));
        QCOMPARE(outline(snapshot), expected);
    }

    void shouldKeepARenewalOfYesterdayInThisWeekAndOffTheBadge()
    {
        const TimelineSnapshot snapshot = build({SampleSubscription(u"Late"_s).renewsOn({2026, 3, 4})});
        QCOMPARE(outline(snapshot), u"week: Late -1"_s);
        QCOMPARE(snapshot.badgeCount, 0);
        QCOMPARE(snapshot.remainingThisMonth, Decimal());
    }

    void shouldCountARenewalOfTodayEverywhere()
    {
        const TimelineSnapshot snapshot = build({SampleSubscription(u"Due"_s).renewsOn({2026, 3, 5})});
        QCOMPARE(outline(snapshot), u"week: Due 0"_s);
        QCOMPARE(snapshot.badgeCount, 1);
        QCOMPARE(snapshot.remainingThisMonth, Decimal(10));
    }

    void shouldListTheFirstOfNextMonthWithThisMonthButNotSumItUp()
    {
        const TimelineSnapshot snapshot = build({SampleSubscription(u"First"_s).renewsOn({2026, 4, 1})});
        QCOMPARE(outline(snapshot), u"month: First 27"_s);
        QCOMPARE(snapshot.remainingThisMonth, Decimal());
    }

    void shouldPutTheFirstOfTheMonthAfterNextLater()
    {
        QCOMPARE(outline(build({SampleSubscription(u"Far"_s).renewsOn({2026, 5, 1})})), u"later: Far 57"_s);
    }

    void shouldTakeOnlyTheStatusActiveForActive_data()
    {
        QTest::addColumn<QString>("status");
        QTest::addColumn<bool>("active");
        QTest::newRow("active") << u"active"_s << true;
        QTest::newRow("first letter in upper case") << u"Active"_s << true;
        QTest::newRow("upper case") << u"ACTIVE"_s << true;
        QTest::newRow("mixed case") << u"aCtIvE"_s << true;
        QTest::newRow("cancelled") << u"cancelled"_s << false;
        QTest::newRow("paused") << u"paused"_s << false;
        QTest::newRow("trial") << u"trial"_s << false;
        QTest::newRow("inactive") << u"inactive"_s << false;
        QTest::newRow("empty") << u""_s << false;
        QTest::newRow("blank at the end") << u"active "_s << false;
    }
    void shouldTakeOnlyTheStatusActiveForActive()
    {
        QFETCH(QString, status);
        QFETCH(bool, active);
        const TimelineSnapshot snapshot
            = build({SampleSubscription(u"It"_s).withStatus(status).renewsOn({2026, 3, 6})});
        QCOMPARE(outline(snapshot), active ? u"week: It 1"_s : u"inactive: It"_s);
        QCOMPARE(snapshot.activeCount, active ? 1 : 0);
        QCOMPARE(snapshot.badgeCount, active ? 1 : 0);
        QCOMPARE(snapshot.week[5].renewalColors.size(), active ? 1 : 0);
    }

    void shouldNotAskForACancellationsDay()
    {
        const TimelineSnapshot snapshot
            = build({SampleSubscription(u"Leaving"_s).cancelledFrom({2026, 3, 1}).renewsOn({2026, 3, 6})});
        QCOMPARE(outline(snapshot), u"week: Leaving 1"_s);
    }

    void shouldCountDaysFromTheFirstHourOfADayWithoutMidnight()
    {
        // GIVEN a day that starts at one o'clock
        const Calendar cairo = calendarIn("Africa/Cairo", "ar_EG");
        const auto snapshot = [&](const LocalDate &date) {
            return buildTimeline(
                {SampleSubscription().renewsOn(date)}, u"USD"_s, at("2026-04-24T10:00:00Z"), cairo);
        };
        // THEN it is today, and from its start to a midnight a whole day less an hour goes by
        QCOMPARE(outline(snapshot({2026, 4, 23})), u"week: Sample -1"_s);
        QCOMPARE(outline(snapshot({2026, 4, 24})), u"week: Sample 0"_s);
        QCOMPARE(outline(snapshot({2026, 4, 25})), u"week: Sample 0"_s);
        QCOMPARE(outline(snapshot({2026, 4, 26})), u"month: Sample 1"_s);
        QCOMPARE(snapshot({2026, 4, 24}).remainingThisMonth, Decimal(10));
    }

    void shouldOrderTheSectionsAndTheirEntries()
    {
        const TimelineSnapshot snapshot = build({
            SampleSubscription(u"Paused"_s).withStatus(u"paused"_s),
            SampleSubscription(u"Later"_s).renewsOn({2026, 9, 1}),
            SampleSubscription(u"Next"_s).renewsOn({2026, 4, 20}),
            SampleSubscription(u"Month"_s).renewsOn({2026, 3, 20}),
            SampleSubscription(u"Soon"_s).renewsOn({2026, 3, 6}),
            SampleSubscription(u"Overdue"_s).renewsOn({2026, 2, 1}),
            SampleSubscription(u"Today"_s).renewsOn({2026, 3, 5}),
            SampleSubscription(u"Sooner month"_s).renewsOn({2026, 3, 10}),
        });
        QCOMPARE(outline(snapshot),
            u"week: Overdue -32, Today 0, Soon 1; month: Sooner month 5, Month 15; next-month: Next 46; "
            "later: Later 180; inactive: Paused"_s);
    }

    void shouldKeepTheOrderOfEntriesOnTheSameDay()
    {
        QList<Subscription> subscriptions;
        QStringList names;
        for (const auto &name : {u"zeta"_s, u"Alpha"_s, u"mu"_s, u"alpha"_s, u"Zeta"_s, u"beta"_s}) {
            subscriptions.append(SampleSubscription(name).renewsOn({2026, 3, 6}));
            names.append(name + u" 1"_s);
        }
        QCOMPARE(outline(build(subscriptions)), u"week: "_s + names.join(u", "_s));
    }

    void shouldOrderEntriesWithoutDaysByName()
    {
        const auto inactive
            = [](const QString &name) { return SampleSubscription(name).withStatus(u"cancelled"_s); };
        QCOMPARE(outline(build(
                     {inactive(u"zoom"_s), inactive(u"Banana"_s), inactive(u"apple"_s), inactive(u"cherry"_s),
                         inactive(u"Ångström"_s), inactive(u"BANANA"_s), inactive(u"banana"_s)})),
            u"inactive: Ångström, apple, Banana, BANANA, banana, cherry, zoom"_s);
    }

    void shouldOrderNamesAsTheLocaleDoes()
    {
        const auto inactive
            = [](const QString &name) { return SampleSubscription(name).withStatus(u"cancelled"_s); };
        const TimelineSnapshot snapshot
            = buildTimeline({inactive(u"Ångström"_s), inactive(u"Zebra"_s), inactive(u"apple"_s)}, u"SEK"_s,
                at(thursdayNoon), calendarIn("Europe/Stockholm", "sv_SE"));
        QCOMPARE(outline(snapshot), u"inactive: apple, Zebra, Ångström"_s);
    }

    void shouldPutEntriesWithDaysBeforeThoseWithout()
    {
        const TimelineSnapshot snapshot = build({
            SampleSubscription(u"b, no such day"_s).renewsOn({2026, 2, 30}),
            SampleSubscription(u"z, far"_s).renewsOn({2030, 1, 1}),
            SampleSubscription(u"A, no such day"_s).renewsOn({2026, 6, 31}),
            SampleSubscription(u"y, near"_s).renewsOn({2026, 5, 1}),
        });
        QCOMPARE(outline(snapshot), u"later: y, near 57, z, far 1398, A, no such day, b, no such day"_s);
    }

    void shouldTitleTheSections_data()
    {
        QTest::addColumn<QByteArray>("zone");
        QTest::addColumn<QByteArray>("locale");
        QTest::addColumn<Instant>("now");
        QTest::addColumn<LocalDate>("nextMonth");
        QTest::addColumn<QString>("expected");
        const auto row = [](const char *name, const char *zone, const char *locale, const char *now,
                             const LocalDate &nextMonth, const QString &expected) {
            QTest::newRow(name) << QByteArray(zone) << QByteArray(locale) << at(now) << nextMonth << expected;
        };
        row("American", "UTC", "en_US", thursdayNoon, {2026, 4, 20}, u"April"_s);
        row("German", "UTC", "de_DE", thursdayNoon, {2026, 4, 20}, u"April"_s);
        row("Russian, in the form that stands alone", "UTC", "ru_RU", thursdayNoon, {2026, 4, 20},
            u"апрель"_s);
        row("Japanese", "UTC", "ja_JP", thursdayNoon, {2026, 4, 20}, u"4月"_s);
        row("Persian, by the Gregorian calendar", "UTC", "fa_IR", thursdayNoon, {2026, 4, 20}, u"آوریل"_s);
        row("January after December", "UTC", "en_US", "2026-12-10T00:00:00Z", {2027, 1, 20}, u"January"_s);
        row("from a 31st", "UTC", "en_US", "2026-01-31T12:00:00Z", {2026, 2, 20}, u"February"_s);
        row("east of UTC", "Pacific/Kiritimati", "en_US", thursdayNoon, {2026, 4, 20}, u"April"_s);
        row("west of UTC", "Pacific/Pago_Pago", "en_US", thursdayNoon, {2026, 4, 20}, u"April"_s);
        row("month whose midnight is skipped", "America/Asuncion", "en_US", "2017-09-15T12:00:00Z",
            {2017, 10, 20}, u"October"_s);
    }
    void shouldTitleTheSections()
    {
        QFETCH(QByteArray, zone);
        QFETCH(QByteArray, locale);
        QFETCH(Instant, now);
        QFETCH(LocalDate, nextMonth);
        QFETCH(QString, expected);
        const Calendar calendar = calendarIn(zone, locale);
        const LocalDate today = calendar.localDate(now);
        LocalDate nextYear = today;
        ++nextYear.year;
        nextYear.day = 1;
        const TimelineSnapshot snapshot = buildTimeline(
            {
                SampleSubscription(u"Now"_s).renewsOn(today),
                SampleSubscription(u"Next month"_s).renewsOn(nextMonth),
                SampleSubscription(u"Next year"_s).renewsOn(nextYear),
                SampleSubscription(u"Never"_s).withStatus(u"cancelled"_s),
            },
            u"USD"_s, now, calendar);
        QStringList titles;
        for (const TimelineSection &section : snapshot.sections)
            titles.append(section.id + u'=' + section.title);
        QCOMPARE(titles,
            QStringList({u"week=This week"_s, u"next-month="_s + expected, u"later=Later"_s,
                u"inactive=Inactive"_s}));
    }

    void shouldTitleTheRestOfTheMonth()
    {
        const TimelineSnapshot snapshot = build({SampleSubscription().renewsOn({2026, 3, 20})});
        QCOMPARE(snapshot.sections.size(), 1);
        QCOMPARE(snapshot.sections.first().id, u"month"_s);
        QCOMPARE(snapshot.sections.first().title, u"Later this month"_s);
    }

    void shouldHandSubscriptionsOnUnchanged()
    {
        const Subscription subscription = SampleSubscription(u"Whole"_s)
                                              .costs(u"9.990"_s, u"eur"_s)
                                              .convertedTo(u"10.5"_s, u"usd"_s)
                                              .inCategory(u"Streaming"_s)
                                              .renewsOn({2026, 3, 6});
        const TimelineSnapshot snapshot = build({subscription});
        QCOMPARE(snapshot.sections.size(), 1);
        QCOMPARE(snapshot.sections.first().entries.size(), 1);
        QVERIFY(*snapshot.sections.first().entries.first().subscription == subscription);
    }

    // Week strip

    void shouldShowTheCalendarWeekOfToday_data()
    {
        QTest::addColumn<QByteArray>("zone");
        QTest::addColumn<QByteArray>("locale");
        QTest::addColumn<Instant>("now");
        QTest::addColumn<QString>("expected");
        const auto row = [](const char *name, const char *zone, const char *locale, const char *now,
                             const QString &expected) {
            QTest::newRow(name) << QByteArray(zone) << QByteArray(locale) << at(now) << expected;
        };
        row("from Sunday", "UTC", "en_US", thursdayNoon, u"1 2 3 4 *5 6 7"_s);
        row("from Monday", "UTC", "de_DE", thursdayNoon, u"2 3 4 *5 6 7 8"_s);
        row("from Saturday, over the month's end", "UTC", "ar_EG", thursdayNoon, u"28 1 2 3 4 *5 6"_s);
        row("today is the first day", "UTC", "en_US", "2026-03-01T00:00:00Z", u"*1 2 3 4 5 6 7"_s);
        row("today is the last day", "UTC", "en_US", "2026-03-07T23:59:59Z", u"1 2 3 4 5 6 *7"_s);
        row("over the year's end", "UTC", "de_DE", "2027-01-01T00:00:00Z", u"28 29 30 31 *1 2 3"_s);
        row("over a leap day", "UTC", "de_DE", "2024-02-29T00:00:00Z", u"26 27 28 *29 1 2 3"_s);
        row("an hour less", "Europe/Berlin", "de_DE", "2026-03-29T12:00:00Z", u"23 24 25 26 27 28 *29"_s);
        row("an hour more, in its last hour", "Europe/Berlin", "de_DE", "2026-10-25T22:30:00Z",
            u"19 20 21 22 23 24 *25"_s);
        row("midnight skipped on the first day", "Asia/Beirut", "en_US", "2026-03-29T12:00:00Z",
            u"*29 30 31 1 2 3 4"_s);
        row("midnight skipped within", "Africa/Cairo", "ar_EG", "2026-04-24T12:00:00Z",
            u"18 19 20 21 22 23 *24"_s);
        row("hour before midnight repeated", "Africa/Cairo", "ar_EG", "2026-10-29T21:30:00Z",
            u"24 25 26 27 28 *29 30"_s);
        row("half an hour to either side of midnight skipped", "America/Toronto", "en_US",
            "1919-04-02T12:00:00Z", u"30 31 1 *2 3 4 5"_s);
        row("a day skipped whole", "Pacific/Apia", "en_US", "2011-12-29T20:00:00Z", u"25 26 27 28 *29 31"_s);
        row("on the day after it", "Pacific/Apia", "en_US", "2011-12-30T20:00:00Z", u"25 26 27 28 29 *31"_s);
    }
    void shouldShowTheCalendarWeekOfToday()
    {
        QFETCH(QByteArray, zone);
        QFETCH(QByteArray, locale);
        QFETCH(Instant, now);
        QFETCH(QString, expected);
        const Calendar calendar = calendarIn(zone, locale);
        const TimelineSnapshot snapshot = buildTimeline({}, u"USD"_s, now, calendar);
        QCOMPARE(stripOutline(snapshot), expected);
        for (const TimelineDay &day : snapshot.week) {
            QCOMPARE(calendar.localDate(day.date), day.localDate);
            QCOMPARE(calendar.startOfDay(day.date), day.date);
        }
    }

    void shouldColorADayByItsFirstThreeRenewals()
    {
        // GIVEN four names with four colours, and one more day
        QList<Subscription> subscriptions;
        QStringList colors;
        for (const auto &name : {u"A"_s, u"a"_s, u"B"_s, u"E"_s}) {
            subscriptions.append(SampleSubscription(name).renewsOn({2026, 3, 6}));
            colors.append(brandColor(name).dark);
        }
        QCOMPARE(QSet<QString>(colors.begin(), colors.end()).size(), 4);
        subscriptions.insert(1, SampleSubscription(u"D"_s).renewsOn({2026, 3, 2}));
        subscriptions.insert(0, SampleSubscription(u"F"_s).renewsOn({2026, 3, 6}).withStatus(u"paused"_s));
        subscriptions.append(SampleSubscription(u"G"_s).renewsOn({2025, 3, 6}));
        subscriptions.append(SampleSubscription(u"H"_s).renewsOn({2026, 3, 8}));
        // WHEN
        const TimelineSnapshot snapshot = build(subscriptions);
        // THEN
        QCOMPARE(snapshot.week[0].renewalColors, QStringList());
        QCOMPARE(snapshot.week[1].renewalColors, QStringList({brandColor(u"D").dark}));
        QCOMPARE(snapshot.week[5].renewalColors, colors.first(3));
        QCOMPARE(snapshot.week[6].renewalColors, QStringList());
    }

    void shouldCountTheRenewalsOfEachDay()
    {
        const TimelineSnapshot snapshot
            = build({SampleSubscription().renewsOn({2026, 3, 2}), SampleSubscription().renewsOn({2026, 3, 7}),
                SampleSubscription().renewsOn({2026, 3, 7}), SampleSubscription().renewsOn({2026, 3, 7}),
                SampleSubscription().renewsOn({2026, 3, 7}), SampleSubscription().renewsOn({2026, 3, 8})});
        QList<qint64> counts;
        for (const TimelineDay &day : snapshot.week)
            counts.append(day.renewalCount);
        QCOMPARE(counts, (QList<qint64>{0, 1, 0, 0, 0, 0, 4}));
    }

    void shouldRepeatAColorThatTwoRenewalsShare()
    {
        const TimelineSnapshot snapshot = build({SampleSubscription(u""_s).renewsOn({2026, 3, 6}),
            SampleSubscription(u""_s).renewsOn({2026, 3, 6})});
        QCOMPARE(snapshot.week[5].renewalColors, QStringList({u"#67E8F9"_s, u"#67E8F9"_s}));
    }

    void shouldColorOverdueDaysOfTheWeek()
    {
        const TimelineSnapshot snapshot = build({SampleSubscription(u"A"_s).renewsOn({2026, 3, 1})});
        QCOMPARE(snapshot.week[0].renewalColors, QStringList({u"#60A5FA"_s}));
    }

    void shouldColorNoDayForADayThatWasSkippedWhole()
    {
        const TimelineSnapshot snapshot = buildTimeline({SampleSubscription(u"A"_s).renewsOn({2011, 12, 30})},
            u"USD"_s, at("2011-12-29T20:00:00Z"), calendarIn("Pacific/Apia"));
        QCOMPARE(snapshot.week.size(), 6);
        for (const TimelineDay &day : snapshot.week)
            QVERIFY(day.renewalColors.isEmpty());
        QCOMPARE(snapshot.sections.size(), 1);
        QCOMPARE(snapshot.sections.first().id, u"week"_s);
    }

    // Badge

    void shouldCountRenewalsOfTodayAndTheNextThreeDays_data()
    {
        QTest::addColumn<LocalDate>("date");
        QTest::addColumn<qint64>("expected");
        QTest::newRow("yesterday") << LocalDate{2026, 3, 4} << qint64{0};
        QTest::newRow("today") << LocalDate{2026, 3, 5} << qint64{1};
        QTest::newRow("tomorrow") << LocalDate{2026, 3, 6} << qint64{1};
        QTest::newRow("in three days") << LocalDate{2026, 3, 8} << qint64{1};
        QTest::newRow("in four days") << LocalDate{2026, 3, 9} << qint64{0};
        QTest::newRow("a day that does not exist") << LocalDate{2026, 2, 30} << qint64{0};
    }
    void shouldCountRenewalsOfTodayAndTheNextThreeDays()
    {
        QFETCH(LocalDate, date);
        QFETCH(qint64, expected);
        QCOMPARE(build({SampleSubscription().renewsOn(date)}).badgeCount, expected);
    }

    void shouldCountEachUrgentRenewalOnce()
    {
        QCOMPARE(build({SampleSubscription(u"A"_s).renewsOn({2026, 3, 5}),
                           SampleSubscription(u"B"_s).renewsOn({2026, 3, 5}),
                           SampleSubscription(u"C"_s).renewsOn({2026, 3, 8}),
                           SampleSubscription(u"D"_s).renewsOn({2026, 3, 8}).withStatus(u"paused"_s),
                           SampleSubscription(u"E"_s).renewsOn({2026, 3, 9})})
                     .badgeCount,
            3);
    }

    // Outside of the calendar

    void shouldHaveNoWeekAndNoMonthBeforeTheYearsThatTheCalendarCovers()
    {
        // GIVEN a clock that has lost all reason
        const Instant now = Instant::fromMillisecondsSinceEpoch(-100'000'010 * day);
        const TimelineSnapshot snapshot
            = buildTimeline({SampleSubscription(u"Known"_s).renewsOn({1970, 1, 1}),
                                SampleSubscription(u"Unknown"_s).renewsOn({2026, 2, 30})},
                u"USD"_s, now, calendarIn("UTC"));
        // THEN there is nothing but "later", and what is paid per month
        QVERIFY(snapshot.week.isEmpty());
        QCOMPARE(outline(snapshot), u"later: Known 100000010, Unknown"_s);
        QCOMPARE(snapshot.monthlyTotal, Decimal(20));
        QCOMPARE(snapshot.remainingThisMonth, Decimal());
        QCOMPARE(snapshot.badgeCount, 0);
    }

    void shouldTakeEverythingForOverdueAfterTheYearsThatTheCalendarCovers()
    {
        const Instant now = Instant::fromMillisecondsSinceEpoch(100'000'010 * day);
        const TimelineSnapshot snapshot
            = buildTimeline({SampleSubscription(u"Past"_s).renewsOn({1970, 1, 1}),
                                SampleSubscription(u"Beyond"_s).renewsOn({275'761, 1, 1})},
                u"USD"_s, now, calendarIn("America/New_York"));
        QVERIFY(snapshot.week.isEmpty());
        QCOMPARE(outline(snapshot), u"week: Past -100000009; later: Beyond"_s);
        QCOMPARE(snapshot.remainingThisMonth, Decimal());
    }
};

ORBITLEDGE_TEST_MAIN(TimelineBuilderTest)
#include "TimelineBuilderTest.moc"
