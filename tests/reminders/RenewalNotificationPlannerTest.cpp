#include "reminders/RenewalNotificationPlanner.h"

#include "model/UuidText.h"
#include "support/ProcessorTime.h"
#include "support/SampleRecords.h"
#include "support/TestMain.h"
#include "support/TimeLimit.h"

using namespace orbitledge;
using namespace orbitledge::testing;
using namespace Qt::StringLiterals;

namespace {

Calendar calendarIn(const QByteArray &zone, const QByteArray &locale = "en_US")
{
    return {*TimeZone::named(zone), *Locale::named(locale)};
}

Instant at(const char *text)
{
    return *Instant::fromText(text);
}

ReminderSettings settings(qint64 leadDays)
{
    return {.leadDays = leadDays, .currency = u"EUR"_s, .webURL = QUrl(u"https://example.com/"_s)};
}

Subscription renewing(const LocalDate &date, int number = 0)
{
    Subscription subscription = sampleSubscription(number);
    subscription.nextBillingDate = date;
    return subscription;
}

QString keyOf(const Subscription &subscription, qint64 leadDays)
{
    return uuidText(subscription.id) + u'.' + subscription.nextBillingDate.text() + u'.'
        + QString::number(leadDays);
}

const auto immediate = RenewalNotificationDelivery::immediate();

RenewalNotificationDelivery scheduled(const char *text)
{
    return RenewalNotificationDelivery::scheduled(at(text));
}

} // namespace

class RenewalNotificationPlannerTest : public QObject {
    Q_OBJECT

private:
    const Calendar m_utc = calendarIn("UTC");

    [[nodiscard]] RenewalNotificationPlanning plan(const QList<Subscription> &subscriptions, qint64 leadDays,
        const char *now, const QSet<QString> &ledger = {}) const
    {
        return planReminders(subscriptions, settings(leadDays), at(now), m_utc, ledger);
    }

private Q_SLOTS:
    void shouldPlanAReminder()
    {
        const Subscription subscription = renewing({2026, 3, 21});
        const auto planning = plan({subscription}, 3, "2026-03-17T12:00:00Z");
        const QString key = keyOf(subscription, 3);
        QVERIFY(key.endsWith(u".2026-03-21.3"));
        const RenewalNotificationPlan expected{
            .key = key,
            .identifier = u"orbitledge.renewal."_s + key,
            .title = u"Subscription 0 renews soon"_s,
            .body = u"\u20ac9.99 charges in 4 days."_s,
            .destinationURL
            = QUrl(u"https://example.com/subscriptions/"_s + uuidText(subscription.id) + u"/edit"_s),
            .delivery = scheduled("2026-03-18T09:00:00Z"),
            .renewalDate = {2026, 3, 21},
        };
        QCOMPARE(planning.plans.size(), 1);
        QVERIFY(planning.plans.front() == expected);
        QVERIFY(planning.ledger.isEmpty());
        QCOMPARE(planning.skippedOverBudget, 0);
    }

    void shouldClampTheLeadDays_data()
    {
        QTest::addColumn<qint64>("leadDays");
        QTest::addColumn<qint64>("used");
        for (qint64 days = -1; days <= 30; ++days)
            QTest::addRow("%d", int(days)) << days << std::clamp<qint64>(days, 0, 14);
        QTest::addRow("least") << std::numeric_limits<qint64>::min() << qint64{0};
        QTest::addRow("most") << std::numeric_limits<qint64>::max() << qint64{14};
    }
    void shouldClampTheLeadDays()
    {
        QFETCH(qint64, leadDays);
        QFETCH(qint64, used);
        const Subscription subscription = renewing({2026, 5, 1});
        const auto planning = plan({subscription}, leadDays, "2026-03-17T12:00:00Z");
        QCOMPARE(planning.plans.front().key, keyOf(subscription, used));
        const Instant expected = Instant::fromSecondsSinceEpoch(
            (LocalDate{2026, 5, 1}.daysSinceEpoch() - used) * 86'400 + 9 * 3'600);
        QVERIFY(planning.plans.front().delivery == RenewalNotificationDelivery::scheduled(expected));
    }

    void shouldAnnounceARenewalOfTodayOnce()
    {
        const Subscription subscription = renewing({2026, 3, 18});
        const auto early = plan({subscription}, 0, "2026-03-18T08:00:00Z");
        QVERIFY(early.plans.front().delivery == scheduled("2026-03-18T09:00:00Z"));
        QCOMPARE(early.plans.front().body, u"\u20ac9.99 charges today."_s);
        QVERIFY(early.ledger.isEmpty());

        for (const char *moment :
            {"2026-03-18T09:00:00Z", "2026-03-18T10:00:00Z", "2026-03-18T23:59:59.999Z"}) {
            const auto late = plan({subscription}, 0, moment);
            QVERIFY(late.plans.front().delivery == immediate);
            QCOMPARE(late.ledger, QSet<QString>{keyOf(subscription, 0)});
            const auto later = plan({subscription}, 0, moment, late.ledger);
            QVERIFY(later.plans.isEmpty());
            QCOMPARE(later.ledger, late.ledger);
        }
    }

    void shouldSayWhen_data()
    {
        QTest::addColumn<int>("days");
        QTest::addColumn<QString>("phrase");
        QTest::newRow("today") << 0 << u"today"_s;
        QTest::newRow("tomorrow") << 1 << u"tomorrow"_s;
        QTest::newRow("two days") << 2 << u"in 2 days"_s;
        QTest::newRow("a year") << 365 << u"in 365 days"_s;
    }
    void shouldSayWhen()
    {
        QFETCH(int, days);
        QFETCH(QString, phrase);
        const LocalDate date = LocalDate::fromDaysSinceEpoch(LocalDate{2026, 3, 18}.daysSinceEpoch() + days);
        const auto planning = plan({renewing(date)}, 0, "2026-03-18T08:00:00Z");
        QCOMPARE(planning.plans.front().body, u"\u20ac9.99 charges "_s + phrase + u'.');
    }

    void shouldForgetRenewalsThatAreOver()
    {
        const Subscription yesterday = renewing({2026, 3, 17}, 1);
        const auto planning
            = plan({yesterday}, 3, "2026-03-18T00:00:00Z", {keyOf(yesterday, 3), u"of.something.else"_s});
        QVERIFY(planning.plans.isEmpty());
        QVERIFY(planning.ledger.isEmpty());
    }

    void shouldForgetWhatIsNotActive()
    {
        Subscription cancelled = renewing({2026, 3, 19}, 1);
        cancelled.status = u"cancelled"_s;
        Subscription active = renewing({2026, 3, 19}, 2);
        active.status = u"ACTIVE"_s;
        const QSet<QString> ledger{keyOf(cancelled, 3), keyOf(active, 3)};
        const auto planning = plan({cancelled, active}, 3, "2026-03-18T12:00:00Z", ledger);
        QVERIFY(planning.plans.isEmpty());
        QCOMPARE(planning.ledger, QSet<QString>{keyOf(active, 3)});
    }

    void shouldKeepTheKeyOfAReminderThatIsStillToCome()
    {
        const Subscription subscription = renewing({2026, 3, 28});
        const auto planning = plan({subscription}, 3, "2026-03-18T12:00:00Z", {keyOf(subscription, 3)});
        QCOMPARE(planning.plans.size(), 1);
        QCOMPARE(planning.ledger, QSet<QString>{keyOf(subscription, 3)});
    }

    void shouldAnnounceAgainWithAnotherLeadTime()
    {
        const Subscription subscription = renewing({2026, 3, 19});
        const auto three = plan({subscription}, 3, "2026-03-18T12:00:00Z");
        const auto two = plan({subscription}, 2, "2026-03-18T12:00:00Z", three.ledger);
        QCOMPARE(two.plans.size(), 1);
        QVERIFY(two.plans.front().delivery == immediate);
        QCOMPARE(two.ledger, QSet<QString>{keyOf(subscription, 2)});
    }

    void shouldTellTheAmountInTheProfilesCurrencyOnly_data()
    {
        QTest::addColumn<QString>("currency");
        QTest::addColumn<QString>("convertedCurrency");
        QTest::addColumn<QString>("body");
        const QString none = u"A renewal is due in 3 days."_s;
        QTest::newRow("the same") << u"EUR"_s << QString() << u"\u20ac9.99 charges in 3 days."_s;
        QTest::newRow("the same in lower case")
            << u"eur"_s << QString() << u"\u20ac9.99 charges in 3 days."_s;
        QTest::newRow("converted") << u"USD"_s << u"EUR"_s << u"\u20ac1,234.57 charges in 3 days."_s;
        QTest::newRow("converted to another") << u"USD"_s << u"CHF"_s << none;
        QTest::newRow("not converted") << u"USD"_s << QString() << none;
    }
    void shouldTellTheAmountInTheProfilesCurrencyOnly()
    {
        QFETCH(QString, currency);
        QFETCH(QString, convertedCurrency);
        QFETCH(QString, body);
        Subscription subscription = renewing({2026, 3, 21});
        subscription.currency = currency;
        if (!convertedCurrency.isEmpty()) {
            subscription.convertedCost = *Decimal::fromText("1234.565001");
            subscription.convertedCurrency = convertedCurrency;
        }
        QCOMPARE(plan({subscription}, 0, "2026-03-18T12:00:00Z").plans.front().body, body);
    }

    void shouldGiveAmountsTheDigitsOfTheirCurrency_data()
    {
        QTest::addColumn<QByteArray>("locale");
        QTest::addColumn<QString>("currency");
        QTest::addColumn<QString>("amount");
        QTest::newRow("yen") << "en_US"_ba << u"JPY"_s << u"\u00a51,234"_s;
        QTest::newRow("dollars") << "en_US"_ba << u"USD"_s << u"$1,234.50"_s;
        QTest::newRow("dinars") << "en_US"_ba << u"KWD"_s << u"KWD\u00a01,234.500"_s;
        QTest::newRow("unknown") << "en_US"_ba << u"XYZ"_s << u"XYZ\u00a01,234.50"_s;
        QTest::newRow("euros in Spain") << "es_ES"_ba << u"EUR"_s << u"1234,50\u00a0\u20ac"_s;
    }
    void shouldGiveAmountsTheDigitsOfTheirCurrency()
    {
        QFETCH(QByteArray, locale);
        QFETCH(QString, currency);
        QFETCH(QString, amount);
        Subscription subscription = renewing({2026, 3, 18});
        subscription.currency = currency;
        subscription.cost = *Decimal::fromText("1234.5");
        ReminderSettings here = settings(0);
        here.currency = currency;
        const auto planning
            = planReminders({subscription}, here, at("2026-03-18T08:00:00Z"), calendarIn("UTC", locale), {});
        // Half a yen goes to the even one.
        QCOMPARE(planning.plans.front().body, amount + u" charges today."_s);
    }

    void shouldHaveNoAmountWhereTheCurrencyIsNone()
    {
        Subscription subscription = renewing({2026, 3, 18});
        subscription.currency = u"EURO"_s;
        ReminderSettings here = settings(0);
        here.currency = u"EURO"_s;
        const auto planning = planReminders({subscription}, here, at("2026-03-18T08:00:00Z"), m_utc, {});
        QCOMPARE(planning.plans.front().body, u"A renewal is due today."_s);
    }

    void shouldFireAtNineByTheWallClock_data()
    {
        QTest::addColumn<QByteArray>("zone");
        QTest::addColumn<LocalDate>("renewal");
        QTest::addColumn<qint64>("leadDays");
        QTest::addColumn<QByteArray>("fires");
        const auto row = [](const char *name, const char *zone, const LocalDate &renewal, qint64 leadDays,
                             const char *fires) {
            QTest::newRow(name) << QByteArray(zone) << renewal << leadDays << QByteArray(fires);
        };
        row("before clocks go forward", "Europe/Berlin", {2026, 3, 29}, 1, "2026-03-28T08:00:00Z");
        row("on the day of 23 hours", "Europe/Berlin", {2026, 3, 29}, 0, "2026-03-29T07:00:00Z");
        row("across the day of 23 hours", "Europe/Berlin", {2026, 3, 30}, 2, "2026-03-28T08:00:00Z");
        row("on the day of 25 hours", "Europe/Berlin", {2026, 10, 25}, 0, "2026-10-25T08:00:00Z");
        row("across the day of 25 hours", "Europe/Berlin", {2026, 10, 26}, 3, "2026-10-23T07:00:00Z");
        row("where midnight is skipped", "Africa/Cairo", {2026, 4, 24}, 0, "2026-04-24T06:00:00Z");
        row("across a skipped midnight", "Africa/Cairo", {2026, 4, 25}, 1, "2026-04-24T06:00:00Z");
        row("far east", "Pacific/Auckland", {2026, 3, 21}, 3, "2026-03-17T20:00:00Z");
        row("far west", "Pacific/Honolulu", {2026, 3, 21}, 3, "2026-03-18T19:00:00Z");
        row("at the end of February", "UTC", {2028, 3, 1}, 1, "2028-02-29T09:00:00Z");
        row("across the new year", "UTC", {2027, 1, 2}, 14, "2026-12-19T09:00:00Z");
    }
    void shouldFireAtNineByTheWallClock()
    {
        QFETCH(QByteArray, zone);
        QFETCH(LocalDate, renewal);
        QFETCH(qint64, leadDays);
        QFETCH(QByteArray, fires);
        const auto planning = planReminders(
            {renewing(renewal)}, settings(leadDays), at("2026-02-01T00:00:00Z"), calendarIn(zone), {});
        QVERIFY2(planning.plans.front().delivery == scheduled(fires.constData()),
            planning.plans.front().delivery.instant()->text().constData());
    }

    void shouldTakeTheNextTimeWhereNineWasSkipped()
    {
        // There was no 30 December 2011 in Apia.
        const auto planning = planReminders({renewing({2011, 12, 31})}, settings(1),
            at("2011-12-01T00:00:00Z"), calendarIn("Pacific/Apia"), {});
        QVERIFY2(planning.plans.front().delivery.instant() >= at("2011-12-29T19:00:00Z"),
            planning.plans.front().delivery.instant()->text().constData());
        QVERIFY(planning.plans.front().delivery.instant() <= at("2011-12-30T19:00:00Z"));
    }

    void shouldFollowAChangeOfTheZone()
    {
        const Subscription subscription = renewing({2026, 3, 21});
        const auto berlin = planReminders(
            {subscription}, settings(3), at("2026-03-17T12:00:00Z"), calendarIn("Europe/Berlin"), {});
        const auto tokyo = planReminders(
            {subscription}, settings(3), at("2026-03-17T12:00:00Z"), calendarIn("Asia/Tokyo"), berlin.ledger);
        QCOMPARE(tokyo.plans.front().identifier, berlin.plans.front().identifier);
        QVERIFY(berlin.plans.front().delivery == scheduled("2026-03-18T08:00:00Z"));
        QVERIFY(tokyo.plans.front().delivery == scheduled("2026-03-18T00:00:00Z"));
    }

    void shouldSkipWhatIsNoDay()
    {
        const auto planning = plan(
            {renewing({2026, 2, 30}, 1), renewing({1'000'000'000, 1, 1}, 2), renewing({2026, 3, 20}, 3)}, 0,
            "2026-01-01T00:00:00Z");
        QCOMPARE(planning.plans.size(), 1);
        QCOMPARE(planning.plans.front().title, u"Subscription 3 renews soon"_s);
    }

    void shouldBuildPagesFromAnyBase_data()
    {
        QTest::addColumn<QString>("base");
        QTest::addColumn<QString>("prefix");
        QTest::newRow("with a slash") << u"https://example.com/"_s << u"https://example.com/subscriptions/"_s;
        QTest::newRow("without") << u"https://example.com"_s << u"https://example.com/subscriptions/"_s;
        QTest::newRow("with a path") << u"http://localhost:8420/app/"_s
                                     << u"http://localhost:8420/app/subscriptions/"_s;
        QTest::newRow("with an encoded blank")
            << u"https://example.com/my%20app"_s << u"https://example.com/my%20app/subscriptions/"_s;
        QTest::newRow("with an encoded percent sign")
            << u"https://example.com/100%25/"_s << u"https://example.com/100%25/subscriptions/"_s;
        QTest::newRow("with a query and a fragment")
            << u"https://example.com/app/?from=mail#top"_s << u"https://example.com/app/subscriptions/"_s;
    }
    void shouldBuildPagesFromAnyBase()
    {
        QFETCH(QString, base);
        QFETCH(QString, prefix);
        ReminderSettings here = settings(0);
        here.webURL = QUrl(base);
        const auto planning
            = planReminders({renewing({2026, 3, 20})}, here, at("2026-03-18T08:00:00Z"), m_utc, {});
        QCOMPARE(planning.plans.size(), 1);
        QVERIFY(planning.plans.front().destinationURL.toString(QUrl::FullyEncoded).startsWith(prefix));
    }

    void shouldPlanNothingWithoutPages()
    {
        const Subscription late = renewing({2026, 3, 20}, 1);
        const Subscription shown = renewing({2026, 3, 20}, 2);
        const Subscription toCome = renewing({2026, 3, 28}, 3);
        ReminderSettings here = settings(3);
        for (const QUrl &noAddress : {QUrl(), QUrl(u"/app/"_s), QUrl(u"https://["_s)}) {
            here.webURL = noAddress;
            const auto planning = planReminders(
                {late, shown, toCome}, here, at("2026-03-18T08:00:00Z"), m_utc, {keyOf(shown, 3)});
            QVERIFY(planning.plans.isEmpty());
            // What was shown stays so, and nothing else counts as shown.
            QCOMPARE(planning.ledger, QSet<QString>{keyOf(shown, 3)});
        }
    }

    void shouldKeepTheEarliestSixty()
    {
        QList<Subscription> subscriptions;
        for (int i = 0; i < 61; ++i)
            subscriptions.append(
                renewing(LocalDate::fromDaysSinceEpoch(LocalDate{2026, 6, 30}.daysSinceEpoch() - i), i));
        const auto sixty = plan(subscriptions.mid(1), 0, "2026-03-18T12:00:00Z");
        QCOMPARE(sixty.plans.size(), 60);
        QCOMPARE(sixty.skippedOverBudget, 0);
        // The first one in the list is the last to come.
        const auto kept = plan(subscriptions, 0, "2026-03-18T12:00:00Z");
        QCOMPARE(kept.skippedOverBudget, 1);
        QVERIFY(kept.plans == sixty.plans);
    }

    void shouldKeepImmediateOnesFirst()
    {
        QList<Subscription> subscriptions;
        for (int i = 0; i < 70; ++i) {
            // Every fourteenth is due tomorrow, whose reminder is late; the others come later and later.
            const LocalDate date = i % 14 == 0
                ? LocalDate{2026, 3, 19}
                : LocalDate::fromDaysSinceEpoch(LocalDate{2026, 4, 1}.daysSinceEpoch() + i);
            subscriptions.append(renewing(date, i));
        }
        const auto planning = plan(subscriptions, 3, "2026-03-18T12:00:00Z");
        QCOMPARE(planning.plans.size(), 60);
        QCOMPARE(planning.skippedOverBudget, 10);
        QCOMPARE(
            std::ranges::count_if(planning.plans, [](const auto &p) { return p.delivery.isImmediate(); }), 5);
        QCOMPARE(planning.ledger.size(), 5);
        QStringList names;
        for (const auto &p : planning.plans)
            names.append(p.title);
        // In the order of the list; what is missing are the ten last to come.
        QStringList expected;
        for (int i = 0; i < 60; ++i)
            expected.append(u"Subscription %1 renews soon"_s.arg(i));
        QCOMPARE(names, expected);
    }

    void shouldKeepTheFirstOfEqualsAtTheEdge()
    {
        QList<Subscription> subscriptions;
        for (int i = 0; i < 62; ++i)
            subscriptions.append(renewing({2026, 4, 1}, i));
        const auto planning = plan(subscriptions, 3, "2026-03-18T12:00:00Z");
        QCOMPARE(planning.plans.size(), 60);
        QCOMPARE(planning.plans.front().title, u"Subscription 0 renews soon"_s);
        QCOMPARE(planning.plans.back().title, u"Subscription 59 renews soon"_s);
        QCOMPARE(planning.skippedOverBudget, 2);
    }

    void shouldLeaveDroppedImmediateOnesForLater()
    {
        QList<Subscription> subscriptions;
        for (int i = 0; i < 65; ++i)
            subscriptions.append(renewing({2026, 3, 19}, i));
        const auto first = plan(subscriptions, 3, "2026-03-18T12:00:00Z");
        QCOMPARE(first.plans.size(), 60);
        QCOMPARE(first.ledger.size(), 60);
        const auto second = plan(subscriptions, 3, "2026-03-18T12:00:00Z", first.ledger);
        QCOMPARE(second.plans.size(), 5);
        QCOMPARE(second.plans.front().title, u"Subscription 60 renews soon"_s);
        QCOMPARE(second.ledger.size(), 65);
        QVERIFY(plan(subscriptions, 3, "2026-03-18T12:00:00Z", second.ledger).plans.isEmpty());
    }

    void shouldPlanThousandsInNoTime()
    {
        QList<Subscription> subscriptions;
        for (int i = 0; i < 10'000; ++i)
            subscriptions.append(renewing(
                LocalDate::fromDaysSinceEpoch(LocalDate{2026, 3, 19}.daysSinceEpoch() + i % 366), i));
        const WorkTimer timer;
        const auto planning = planReminders(
            subscriptions, settings(3), at("2026-03-18T12:00:00Z"), calendarIn("Europe/Berlin"), {});
        const qint64 elapsed = timer.elapsed();
        QCOMPARE(planning.skippedOverBudget, 9'940);
        QVERIFY2(elapsed < timeLimit(50), QByteArray::number(elapsed).constData());
    }
};

ORBITLEDGE_TEST_MAIN(RenewalNotificationPlannerTest)
#include "RenewalNotificationPlannerTest.moc"
