#include "timeline/EntryTexts.h"

#include "support/SampleSubscriptions.h"
#include "support/TestMain.h"
#include "support/Times.h"

using namespace orbitledge;
using namespace orbitledge::testing;
using namespace Qt::StringLiterals;

class EntryTextsTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void shouldShowTheCostInTheProfilesCurrencyWherePossible_data()
    {
        QTest::addColumn<Subscription>("subscription");
        QTest::addColumn<QString>("profileCurrency");
        QTest::addColumn<QString>("expected");
        const auto row = [](const char *name, const Subscription &subscription,
                             const QString &profileCurrency, const QString &expected) {
            QTest::newRow(name) << subscription << profileCurrency << expected;
        };
        const auto nineNinetyNine = [] { return SampleSubscription().costs(u"9.99"_s, u"EUR"_s); };
        row("own currency is the profile's", SampleSubscription().costs(u"1234.5"_s), u"USD"_s,
            u"$1,234.50"_s);
        row("own currency is the profile's in another case", SampleSubscription().costs(u"9.99"_s, u"eur"_s),
            u"EUR"_s, u"€9.99"_s);
        row("own currency wins over a conversion", nineNinetyNine().convertedTo(u"11"_s, u"EUR"_s), u"EUR"_s,
            u"€9.99"_s);
        row("converted to the profile's", nineNinetyNine().convertedTo(u"10.5"_s, u"USD"_s), u"USD"_s,
            u"$10.50"_s);
        row("converted to the profile's in another case", nineNinetyNine().convertedTo(u"10.5"_s, u"Usd"_s),
            u"usd"_s, u"$10.50"_s);
        row("converted to a third currency", nineNinetyNine().convertedTo(u"8.5"_s, u"GBP"_s), u"USD"_s,
            u"€9.99"_s);
        row("not converted", nineNinetyNine(), u"USD"_s, u"€9.99"_s);
        Subscription withoutAmount = nineNinetyNine();
        withoutAmount.convertedCurrency = u"USD"_s;
        row("conversion without an amount", withoutAmount, u"USD"_s, u"€9.99"_s);
        Subscription withoutCurrency = nineNinetyNine();
        withoutCurrency.convertedCost = decimal(u"10.5"_s);
        row("conversion without a currency", withoutCurrency, u"USD"_s, u"€9.99"_s);
        row("free of charge", SampleSubscription().costs(u"0"_s), u"USD"_s, u"$0.00"_s);
        row("a refund", SampleSubscription().costs(u"-9.5"_s), u"USD"_s, u"-$9.50"_s);
        row("no code at all", SampleSubscription().costs(u"9.5"_s, u"euros"_s), u"USD"_s, u"EUROS 9.5"_s);
    }
    void shouldShowTheCostInTheProfilesCurrencyWherePossible()
    {
        QFETCH(Subscription, subscription);
        QFETCH(QString, profileCurrency);
        QFETCH(QString, expected);
        MoneyFormatter money(localeNamed("en_US"));
        QCOMPARE(costText(subscription, profileCurrency, money), expected);
    }

    void shouldSayWhatMattersMostAboutARenewal_data()
    {
        QTest::addColumn<Subscription>("subscription");
        QTest::addColumn<QString>("expected");
        const auto row = [](const char *name, const Subscription &subscription, const QString &expected) {
            QTest::newRow(name) << subscription << expected;
        };
        const auto sample = [] { return SampleSubscription().every(u"yearly"_s); };
        row("category", sample().inCategory(u"Streaming"_s), u"Mar 14 · Streaming"_s);
        row("category as it is written", sample().inCategory(u"video & TV"_s), u"Mar 14 · video & TV"_s);
        row("cycle where there is no category", sample(), u"Mar 14 · Yearly"_s);
        row("cycle of two words", sample().every(u"EVERY two-weeks"_s), u"Mar 14 · Every Two-Weeks"_s);
        row("status in another case is active", sample().withStatus(u"ACTIVE"_s), u"Mar 14 · Yearly"_s);
        row("status before the category", sample().inCategory(u"Streaming"_s).withStatus(u"paused"_s),
            u"Mar 14 · Paused"_s);
        row("status of two words", sample().withStatus(u"past_due"_s), u"Mar 14 · Past_Due"_s);
        row("cancelled", sample().withStatus(u"cancelled"_s), u"Mar 14 · Cancelled"_s);
        row("no status", sample().withStatus(u""_s), u"Mar 14 · "_s);
        row("cancellation before the category",
            sample().inCategory(u"Streaming"_s).cancelledFrom({2026, 4, 1}),
            u"Mar 14 · cancellation scheduled"_s);
        row("cancellation before the status", sample().withStatus(u"cancelled"_s).cancelledFrom({2026, 4, 1}),
            u"Mar 14 · cancellation scheduled"_s);
        row("a day that does not exist", sample().renewsOn({2026, 2, 30}), u"2026-02-30 · Yearly"_s);
        row("another year looks the same", sample().renewsOn({2031, 12, 1}), u"Dec 1 · Yearly"_s);
    }
    void shouldSayWhatMattersMostAboutARenewal()
    {
        QFETCH(Subscription, subscription);
        QFETCH(QString, expected);
        DateFormatter dates(localeNamed("en_US"));
        QCOMPARE(subtitle(subscription, dates), expected);
    }

    void shouldWriteTheDayInTheLocalesWay()
    {
        DateFormatter dates(localeNamed("de_DE"));
        QCOMPARE(subtitle(SampleSubscription(), dates), u"14. März · Monthly"_s);
    }

    void shouldCountTheDaysInWords_data()
    {
        QTest::addColumn<std::optional<qint64>>("days");
        QTest::addColumn<QString>("expected");
        const auto row = [](const char *name, std::optional<qint64> days, const QString &expected) {
            QTest::newRow(name) << days << expected;
        };
        row("no day count", std::nullopt, QString());
        row("long ago", -400, u"400 days ago"_s);
        row("two days ago", -2, u"2 days ago"_s);
        row("one day ago", -1, u"yesterday"_s);
        row("no day", 0, u"today"_s);
        row("one day", 1, u"tomorrow"_s);
        row("two days", 2, u"in 2 days"_s);
        row("a year", 365, u"in 365 days"_s);
    }
    void shouldCountTheDaysInWords()
    {
        QFETCH(std::optional<qint64>, days);
        QFETCH(QString, expected);
        QCOMPARE(daysText(days), expected);
    }

    void shouldRankRenewalsByTheDaysThatAreLeft_data()
    {
        QTest::addColumn<std::optional<qint64>>("days");
        QTest::addColumn<Urgency>("expected");
        const auto row = [](const char *name, std::optional<qint64> days, Urgency expected) {
            QTest::newRow(name) << days << expected;
        };
        row("no day count", std::nullopt, Urgency::None);
        row("long overdue", -400, Urgency::Urgent);
        row("yesterday", -1, Urgency::Urgent);
        row("today", 0, Urgency::Urgent);
        row("three days", 3, Urgency::Urgent);
        row("four days", 4, Urgency::Soon);
        row("seven days", 7, Urgency::Soon);
        row("eight days", 8, Urgency::None);
        row("next year", 400, Urgency::None);
    }
    void shouldRankRenewalsByTheDaysThatAreLeft()
    {
        QFETCH(std::optional<qint64>, days);
        QFETCH(Urgency, expected);
        QCOMPARE(urgencyOf(days), expected);
    }

    void shouldKnowACancellationByItsDayOrByTheStatus_data()
    {
        QTest::addColumn<Subscription>("subscription");
        QTest::addColumn<bool>("expected");
        const auto row = [](const char *name, const Subscription &subscription, bool expected) {
            QTest::newRow(name) << subscription << expected;
        };
        row("active", SampleSubscription(), false);
        row("paused", SampleSubscription().withStatus(u"paused"_s), false);
        row("cancelled", SampleSubscription().withStatus(u"cancelled"_s), true);
        row("cancelled in another case", SampleSubscription().withStatus(u"CanceLLed"_s), true);
        row("canceled, as it is not spelled", SampleSubscription().withStatus(u"canceled"_s), false);
        row("more than the word", SampleSubscription().withStatus(u"cancelled "_s), false);
        row("active with a day", SampleSubscription().cancelledFrom({2026, 4, 1}), true);
        Subscription withInstant = SampleSubscription();
        withInstant.cancelledAt = Instant();
        row("the instant alone says nothing", withInstant, false);
    }
    void shouldKnowACancellationByItsDayOrByTheStatus()
    {
        QFETCH(Subscription, subscription);
        QFETCH(bool, expected);
        QCOMPARE(isCancelled(subscription), expected);
    }
};

ORBITLEDGE_TEST_MAIN(EntryTextsTest)
#include "EntryTextsTest.moc"
