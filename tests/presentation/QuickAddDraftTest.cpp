#include "presentation/QuickAddDraft.h"

#include "support/SampleRecords.h"
#include "support/TestMain.h"

using namespace orbitledge;
using namespace orbitledge::testing;
using namespace Qt::StringLiterals;

namespace {

QuickAddDraft validDraft()
{
    return {
        .name = u"Tidewater Music"_s,
        .price = u"10,99"_s,
        .currency = u"EUR"_s,
        .billingCycle = u"monthly"_s,
        .renewalDate = {2026, 3, 20},
    };
}

SubscriptionTemplate suggestion(const QString &name)
{
    SubscriptionTemplate result;
    result.name = name;
    return result;
}

} // namespace

class QuickAddDraftTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void shouldBeginEmpty()
    {
        AppState state;
        QuickAddDraft expected{.name = {},
            .price = {},
            .currency = u"EUR"_s,
            .billingCycle = u"monthly"_s,
            .renewalDate = {2026, 3, 18}};
        QCOMPARE(emptyDraft(state, {2026, 3, 18}), expected);
        state.user = sampleProfile();
        state.user->defaultCurrency = u"CHF"_s;
        expected.currency = u"CHF"_s;
        QCOMPARE(emptyDraft(state, {2026, 3, 18}), expected);
        QVERIFY(!requestOf(expected));
    }

    void shouldReadPricesAsPeopleTypeThem_data()
    {
        QTest::addColumn<QString>("typed");
        QTest::addColumn<QString>("price");
        const auto row = [](const char *name, const QString &typed, const QString &price) {
            QTest::newRow(name) << typed << price;
        };
        const QString none;
        row("a comma", u"9,99"_s, u"9.99"_s);
        row("a point", u"9.99"_s, u"9.99"_s);
        row("whole", u"12"_s, u"12"_s);
        row("zeros behind", u"9.90"_s, u"9.9"_s);
        row("zeros before", u"009.99"_s, u"9.99"_s);
        row("no digit before", u".5"_s, u"0.5"_s);
        row("no digit before a comma", u",5"_s, u"0.5"_s);
        row("no digit behind", u"5,"_s, u"5"_s);
        row("an exponent", u"1e3"_s, u"1000"_s);
        row("a plus", u"+9.99"_s, u"9.99"_s);
        row("forty digits", u"1111111111111111111111111111111111111111"_s,
            u"1111111111111111111111111111111111111100"_s);
        row("very little", u"0,000001"_s, u"0.000001"_s);
        row("nothing", none, none);
        row("zero", u"0"_s, none);
        row("zero, written long", u"-0,00"_s, none);
        row("below zero", u"-1"_s, none);
        row("blanks around", u" 9.99 "_s, none);
        row("a blank inside", u"1 234"_s, none);
        row("only a blank", u" "_s, none);
        row("something behind", u"9.99abc"_s, none);
        row("a word", u"ten"_s, none);
        row("a sign of money", u"€9.99"_s, none);
        row("full-width digits", u"９.９９"_s, none);
        row("Arabic digits", u"٩٫٩٩"_s, none);
        row("thousands and a fraction", u"1,234.56"_s, none);
        row("thousands and a fraction, in Germany", u"1.234,56"_s, none);
        row("only a comma", u","_s, none);
        row("two signs", u"--1"_s, none);
        row("no end", u"1e999999999"_s, none);
        row("infinity", u"inf"_s, none);
        row("no number", u"nan"_s, none);
        row("hexadecimal", u"0x10"_s, none);
        row("a null inside", u"9"_s + QChar(u'\0') + u"9"_s, none);
    }
    void shouldReadPricesAsPeopleTypeThem()
    {
        QFETCH(QString, typed);
        QFETCH(QString, price);
        const auto read = priceOf(typed);
        QCOMPARE(read ? read->toString() : QString(), price);
        QuickAddDraft draft = validDraft();
        draft.price = typed;
        QCOMPARE(requestOf(draft).has_value(), !price.isEmpty());
    }

    void shouldAskForWhatWasTyped()
    {
        QuickAddDraft draft = validDraft();
        draft.name = u" \n Tidewater  Music\t"_s;
        const CreateSubscriptionRequest expected{
            .name = u"Tidewater  Music"_s,
            .cost = *Decimal::fromText("10.99"),
            .currency = u"EUR"_s,
            .billingCycle = u"monthly"_s,
            .nextBillingDate = LocalDate{2026, 3, 20},
            .categoryID = {},
            .trialEndDate = {},
            .trialNotificationDays = {},
        };
        QCOMPARE(requestOf(draft), expected);
    }

    void shouldAskForNothingWhereSomethingIsMissing_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("currency");
        QTest::addColumn<bool>("isValid");
        QTest::newRow("all there") << u"N"_s << u"EUR"_s << true;
        QTest::newRow("no name") << QString() << u"EUR"_s << false;
        QTest::newRow("a name of blanks") << u" \t\n\u00a0\u2003"_s << u"EUR"_s << false;
        QTest::newRow("no currency") << u"N"_s << QString() << false;
        QTest::newRow("two letters") << u"N"_s << u"EU"_s << false;
        QTest::newRow("four letters") << u"N"_s << u"EURO"_s << false;
        QTest::newRow("small letters") << u"N"_s << u"eur"_s << true;
        QTest::newRow("three characters of more units") << u"N"_s << u"e\u0301uŕ"_s << true;
        QTest::newRow("three units that are two characters") << u"N"_s << u"e\u0301u"_s << false;
    }
    void shouldAskForNothingWhereSomethingIsMissing()
    {
        QFETCH(QString, name);
        QFETCH(QString, currency);
        QFETCH(bool, isValid);
        QuickAddDraft draft = validDraft();
        draft.name = name;
        draft.currency = currency;
        QCOMPARE(requestOf(draft).has_value(), isValid);
    }

    void shouldSearchForNamesOfTwoCharacters_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<std::optional<QString>>("query");
        const auto row = [](const char *name, const QString &typed, const std::optional<QString> &query) {
            QTest::newRow(name) << typed << query;
        };
        row("nothing", QString(), std::nullopt);
        row("one", u"N"_s, std::nullopt);
        row("one among blanks", u"  N \n"_s, std::nullopt);
        row("one of four units", u"🇩🇪"_s, std::nullopt);
        row("two", u"Ne"_s, u"Ne"_s);
        row("two of one unit each", u"日本"_s, u"日本"_s);
        row("blanks around", u" Ne \n"_s, u"Ne"_s);
        row("a blank between", u"N e"_s, u"N e"_s);
    }
    void shouldSearchForNamesOfTwoCharacters()
    {
        QFETCH(QString, name);
        QFETCH(std::optional<QString>, query);
        QuickAddDraft draft;
        draft.name = name;
        QCOMPARE(catalogueQuery(draft), query);
    }

    void shouldOfferTheFirstFive()
    {
        AppState state;
        QVERIFY(suggestionsOf(state).isEmpty());
        for (int i = 0; i < 7; ++i)
            state.templates.append(suggestion(QString::number(i)));
        QCOMPARE(suggestionsOf(state), state.templates.first(5));
        state.templates = state.templates.first(2);
        QCOMPARE(suggestionsOf(state), state.templates);
    }

    void shouldTakeWhatASuggestionTells()
    {
        SubscriptionTemplate chosen = suggestion(u"Tidewater Music"_s);
        chosen.typicalMonthlyCost = Decimal::fromText("9.990").value();
        chosen.typicalAnnualCost = Decimal(99);
        chosen.availableBillingCycles = QList<QString>{u"Daily"_s, u"YEARLY"_s, u"monthly"_s};
        QuickAddDraft draft = validDraft();
        draft.name = u"tide"_s;
        draft.price.clear();
        const QuickAddDraft expected{
            .name = u"Tidewater Music"_s,
            .price = u"9.99"_s,
            .currency = u"EUR"_s,
            .billingCycle = u"yearly"_s,
            .renewalDate = {2026, 3, 20},
        };
        QCOMPARE(applied(chosen, draft), expected);
    }

    void shouldKeepAPriceThatWasTyped()
    {
        SubscriptionTemplate chosen = suggestion(u"Tidewater Music"_s);
        chosen.typicalMonthlyCost = Decimal(5);
        for (const QString &typed : {u"10,99"_s, u"abc"_s, u" "_s}) {
            QuickAddDraft draft = validDraft();
            draft.price = typed;
            QCOMPARE(applied(chosen, draft).price, typed);
        }
    }

    void shouldKeepWhatASuggestionDoesNotTell()
    {
        SubscriptionTemplate chosen = suggestion(u"Tidewater Music"_s);
        QuickAddDraft draft = validDraft();
        draft.price.clear();
        draft.billingCycle = u"weekly"_s;
        QCOMPARE(applied(chosen, draft), ([&] {
            QuickAddDraft expected = draft;
            expected.name = chosen.name;
            return expected;
        }()));
        chosen.availableBillingCycles = QList<QString>{u"daily"_s, u"biennial"_s, u" monthly"_s};
        QCOMPARE(applied(chosen, draft).billingCycle, u"weekly"_s);
        chosen.availableBillingCycles = QList<QString>();
        QCOMPARE(applied(chosen, draft).billingCycle, u"weekly"_s);
    }
};

ORBITLEDGE_TEST_MAIN(QuickAddDraftTest)
#include "QuickAddDraftTest.moc"
