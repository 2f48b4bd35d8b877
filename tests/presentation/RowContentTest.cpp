#include "presentation/RowContent.h"

#include "support/SampleSubscriptions.h"
#include "support/TestMain.h"
#include "support/Times.h"

using namespace orbitledge;
using namespace orbitledge::testing;
using namespace Qt::StringLiterals;

class RowContentTest : public QObject {
    Q_OBJECT

private:
    static RowContent row(const Subscription &subscription, std::optional<qint64> days = std::nullopt,
        const QString &currency = u"USD"_s)
    {
        DateFormatter dates(localeNamed("en_US"));
        MoneyFormatter money(localeNamed("en_US"));
        return rowOf({.subscription = SubscriptionRef({subscription}, 0), .daysUntilRenewal = days}, currency,
            dates, money);
    }

private Q_SLOTS:
    void shouldSayWhatTheSubscriptionIs()
    {
        const Subscription subscription
            = SampleSubscription(u"Tidewater Music"_s).costs(u"10.99"_s).inCategory(u"Music"_s);
        const RowContent content = row(subscription, 1);
        QCOMPARE(content.id, subscription.id);
        QCOMPARE(content.name, u"Tidewater Music"_s);
        QCOMPARE(content.subtitle, u"Mar 14 · Music"_s);
        QCOMPARE(content.cost, u"$10.99"_s);
        QVERIFY(content.isActive);
        QCOMPARE(content.openLabel, u"Open Tidewater Music in Web"_s);
        QCOMPARE(content.accessibleHint, u"Opens this subscription in Orbitledge"_s);
        QCOMPARE(content.accessibleValue, u"$10.99, Mar 14 · Music, urgent renewal"_s);
        QCOMPARE(content.logo.initials, u"TM"_s);
    }

    void shouldShowTheConvertedCost()
    {
        const Subscription subscription
            = SampleSubscription().costs(u"10"_s, u"USD"_s).convertedTo(u"9.2"_s, u"EUR"_s);
        QCOMPARE(row(subscription, {}, u"EUR"_s).cost, u"€9.20"_s);
        QCOMPARE(row(subscription, {}, u"GBP"_s).cost, u"$10.00"_s);
    }

    void shouldTellHowUrgentTheRenewalIs_data()
    {
        QTest::addColumn<qint64>("days");
        QTest::addColumn<Urgency>("urgency");
        QTest::addColumn<QString>("text");
        const auto line = [](qint64 days, Urgency urgency, const QString &text) {
            QTest::addRow("%lld", days) << days << urgency << text;
        };
        line(-400, Urgency::Urgent, u", urgent renewal"_s);
        line(-1, Urgency::Urgent, u", urgent renewal"_s);
        line(0, Urgency::Urgent, u", urgent renewal"_s);
        line(3, Urgency::Urgent, u", urgent renewal"_s);
        line(4, Urgency::Soon, u", renewal within seven days"_s);
        line(7, Urgency::Soon, u", renewal within seven days"_s);
        line(8, Urgency::None, u""_s);
    }
    void shouldTellHowUrgentTheRenewalIs()
    {
        QFETCH(qint64, days);
        QFETCH(Urgency, urgency);
        QFETCH(QString, text);
        const RowContent content = row(SampleSubscription(), days);
        QCOMPARE(content.urgency, urgency);
        QCOMPARE(content.accessibleValue, u"$10.00, Mar 14 · Monthly"_s + text);
    }

    void shouldHaveABarOnlyWhereSomethingIsCharged()
    {
        QCOMPARE(row(SampleSubscription().withStatus(u"paused"_s), 0).urgency, Urgency::None);
        QCOMPARE(row(SampleSubscription().withStatus(u"ACTIVE"_s), 0).urgency, Urgency::Urgent);
        QCOMPARE(row(SampleSubscription().cancelledFrom({2026, 4, 1}), 0).urgency, Urgency::Urgent);
    }

    void shouldOfferWhatCanBeChanged_data()
    {
        using Mutation = RowContent::Mutation;
        QTest::addColumn<Subscription>("subscription");
        QTest::addColumn<Mutation>("mutation");
        QTest::addColumn<QString>("label");
        const auto sample = [] { return SampleSubscription(u"Old Gazette"_s); };
        const auto line
            = [](const char *name, const Subscription &subscription, Mutation mutation,
                  const QString &label) { QTest::newRow(name) << subscription << mutation << label; };
        line("active", sample(), Mutation::Cancel, u"Cancel Old Gazette"_s);
        line("active in capitals", sample().withStatus(u"Active"_s), Mutation::Cancel,
            u"Cancel Old Gazette"_s);
        line("cancelled from a day", sample().cancelledFrom({2026, 4, 1}), Mutation::Uncancel,
            u"Uncancel Old Gazette"_s);
        line("cancelled", sample().withStatus(u"Cancelled"_s), Mutation::Uncancel, u"Uncancel Old Gazette"_s);
        line("neither", sample().withStatus(u"paused"_s), Mutation::None, QString());
    }
    void shouldOfferWhatCanBeChanged()
    {
        QFETCH(Subscription, subscription);
        QFETCH(RowContent::Mutation, mutation);
        QFETCH(QString, label);
        QCOMPARE(row(subscription).mutation, mutation);
        QCOMPARE(row(subscription).mutationLabel, label);
    }

    void shouldLeaveOutWhatIsEmpty()
    {
        // A currency that is none still has a text, and so has a date.
        const RowContent content = row(SampleSubscription(QString()).withStatus(u"paused"_s));
        QCOMPARE(content.accessibleValue, u"$10.00, Mar 14 · Paused"_s);
        QVERIFY(content.logo.initials.isEmpty());
        QVERIFY(!content.isActive);
    }

    void shouldAskBeforeItCancels()
    {
        const CancellationQuestion question = cancellationQuestion(u"100% %1 Fun"_s);
        QCOMPARE(question.title, u"Cancel 100% %1 Fun?"_s);
        QCOMPARE(question.message,
            u"This marks the subscription as cancelled in Orbitledge. It does not contact the merchant."_s);
        QCOMPARE(question.confirm, u"Cancel subscription"_s);
        QCOMPARE(question.keep, u"Keep subscription"_s);
    }
};

ORBITLEDGE_TEST_MAIN(RowContentTest)
#include "RowContentTest.moc"
