#include "presentation/TotalsContent.h"

#include "support/SampleSubscriptions.h"
#include "support/TestMain.h"
#include "support/Times.h"

using namespace orbitledge;
using namespace orbitledge::testing;
using namespace Qt::StringLiterals;

class TotalsContentTest : public QObject {
    Q_OBJECT

private:
    static TotalsContent totals(const TimelineSnapshot &snapshot, const QString &currency, const char *locale)
    {
        const Locale names = localeNamed(locale);
        DateFormatter dates(names);
        MoneyFormatter money(names);
        NumberFormatter numbers(names);
        return totalsOf(snapshot, currency, {2026, 3, 18}, dates, money, numbers);
    }

private Q_SLOTS:
    void shouldSayWhatAMonthCosts()
    {
        TimelineSnapshot snapshot;
        snapshot.monthlyTotal = decimal(u"184.315"_s);
        snapshot.remainingThisMonth = decimal(u"61.47"_s);
        snapshot.activeCount = 14;
        const TotalsContent content = totals(snapshot, u"usd"_s, "en_US");
        QCOMPARE(content.month, u"March 2026"_s);
        QCOMPARE(content.monthlyTotal, u"$184.32"_s);
        QCOMPARE(content.perMonth, u" / month"_s);
        QCOMPARE(content.active, u"14 active"_s);
        QCOMPARE(content.remaining, u"$61.47"_s);
        QCOMPARE(content.remainingCaption, u"left to charge"_s);
        QVERIFY(!content.isPartial);
    }

    void shouldSpeakTheLanguageOfTheRegion()
    {
        TimelineSnapshot snapshot;
        snapshot.monthlyTotal = decimal(u"1234567.8"_s);
        snapshot.activeCount = 12345;
        QCOMPARE(totals(snapshot, u"EUR"_s, "de_DE").month, u"März 2026"_s);
        QCOMPARE(totals(snapshot, u"EUR"_s, "de_DE").monthlyTotal, u"1.234.567,80\u00a0€"_s);
        QCOMPARE(totals(snapshot, u"EUR"_s, "de_DE").active, u"12.345 active"_s);
        QCOMPARE(totals(snapshot, u"JPY"_s, "ja_JP").monthlyTotal, u"￥1,234,567.80"_s);
        QCOMPARE(totals(snapshot, u"EGP"_s, "ar_EG").active, u"١٢٬٣٤٥ active"_s);
    }

    void shouldShowTheCodeOfACurrencyThatIsNone()
    {
        TimelineSnapshot snapshot;
        snapshot.monthlyTotal = decimal(u"9.5"_s);
        QCOMPARE(totals(snapshot, u"euros"_s, "en_US").monthlyTotal, u"EUROS 9.5"_s);
    }

    void shouldWarnOfAPartialTotal()
    {
        TimelineSnapshot snapshot;
        snapshot.totalsArePartial = true;
        const TotalsContent content = totals(snapshot, u"USD"_s, "en_US");
        QVERIFY(content.isPartial);
        QCOMPARE(content.partialLabel, u"Partial total"_s);
        QCOMPARE(
            content.partialHelp, u"Some subscriptions could not be converted to your profile currency."_s);
    }
};

ORBITLEDGE_TEST_MAIN(TotalsContentTest)
#include "TotalsContentTest.moc"
