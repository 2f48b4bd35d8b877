#include "locale/MoneyFormatter.h"

#include "support/TestMain.h"
#include "support/Times.h"

using namespace orbitledge;
using namespace orbitledge::testing;
using namespace Qt::StringLiterals;

// The texts are those of CLDR 42, which ICU 72 carries.

namespace {

Decimal amount(const QString &text)
{
    const auto decimal = Decimal::fromText(text.toStdString());
    if (!decimal)
        qFatal("%s is not an amount", qPrintable(text));
    return *decimal;
}

/// "1234567" as "1,234,567".
QString grouped(QString digits)
{
    for (qsizetype at = digits.size() - 3; at > 0; at -= 3)
        digits.insert(at, u',');
    return digits;
}

} // namespace

class MoneyFormatterTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void shouldWriteAmountsAsTheLocaleDoes_data()
    {
        QTest::addColumn<QByteArray>("locale");
        QTest::addColumn<QString>("number");
        QTest::addColumn<QString>("currency");
        QTest::addColumn<QString>("expected");
        const auto row = [](const char *name, const char *locale, const QString &number,
                             const QString &currency, const QString &expected) {
            QTest::newRow(name) << QByteArray(locale) << number << currency << expected;
        };
        row("dollars", "en_US", u"1234.5"_s, u"USD"_s, u"$1,234.50"_s);
        row("negative", "en_US", u"-9.5"_s, u"USD"_s, u"-$9.50"_s);
        row("zero", "en_US", u"0"_s, u"USD"_s, u"$0.00"_s);
        row("yen, with two digits all the same", "en_US", u"1234"_s, u"JPY"_s, u"¥1,234.00"_s);
        row("dinars, with two digits all the same", "en_US", u"1.2345"_s, u"KWD"_s, u"KWD\u00A01.23"_s);
        row("currency that nobody has", "en_US", u"1234.5"_s, u"XYZ"_s, u"XYZ\u00A01,234.50"_s);
        row("code in lower case", "en_US", u"1234.5"_s, u"usd"_s, u"$1,234.50"_s);
        row("code in mixed case", "en_US", u"1234.5"_s, u"eUr"_s, u"€1,234.50"_s);
        row("Spanish, four digits not grouped", "es_ES", u"1234.5"_s, u"EUR"_s, u"1234,50\u00A0€"_s);
        row("Spanish, five digits grouped", "es_ES", u"12345.5"_s, u"EUR"_s, u"12.345,50\u00A0€"_s);
        row("German", "de_DE", u"1234.5"_s, u"EUR"_s, u"1.234,50\u00A0€"_s);
        row("German, dollars", "de_DE", u"-9.5"_s, u"USD"_s, u"-9,50\u00A0$"_s);
        row("Swiss", "de_CH", u"1234567.5"_s, u"CHF"_s, u"CHF\u00A01’234’567.50"_s);
        row("Swiss, negative", "de_CH", u"-9.5"_s, u"CHF"_s, u"CHF-9.50"_s);
        row("French", "fr_FR", u"1234567.5"_s, u"EUR"_s, u"1\u202F234\u202F567,50\u00A0€"_s);
        row("Hindi, by hundreds of thousands", "hi_IN", u"1234567.5"_s, u"INR"_s, u"₹12,34,567.50"_s);
        row("Japanese", "ja_JP", u"1234"_s, u"JPY"_s, u"￥1,234.00"_s);
        row("Brazilian", "pt_BR", u"1234.5"_s, u"BRL"_s, u"R$\u00A01.234,50"_s);
        row("Swedish, with a minus of its own", "sv_SE", u"-1234.5"_s, u"EUR"_s,
            u"\u22121\u00A0234,50\u00A0€"_s);
        row("Egyptian, in its own digits", "ar_EG", u"1234.5"_s, u"USD"_s,
            u"\u200F\u0661\u066C\u0662\u0663\u0664\u066B\u0665\u0660\u00A0US$"_s);
    }
    void shouldWriteAmountsAsTheLocaleDoes()
    {
        QFETCH(QByteArray, locale);
        QFETCH(QString, number);
        QFETCH(QString, currency);
        QFETCH(QString, expected);
        MoneyFormatter money(localeNamed(locale));
        QCOMPARE(money.text(amount(number), currency), expected);
    }

    void shouldRoundHalfToEven_data()
    {
        QTest::addColumn<QString>("number");
        QTest::addColumn<QString>("expected");
        const auto row = [](const char *name, const QString &number, const QString &expected) {
            QTest::newRow(name) << number << expected;
        };
        row("half, to the even digit below", u"0.125"_s, u"$0.12"_s);
        row("half, to the even digit above", u"0.135"_s, u"$0.14"_s);
        row("half, where binary numbers lie below", u"1.005"_s, u"$1.00"_s);
        row("half, where binary numbers lie above", u"1.115"_s, u"$1.12"_s);
        row("negative half", u"-0.125"_s, u"-$0.12"_s);
        row("negative half, away from zero", u"-0.135"_s, u"-$0.14"_s);
        row("just above half", u"0.12500000000000000000000000000000000001"_s, u"$0.13"_s);
        row("just below half", u"0.13499999999999999999999999999999999999"_s, u"$0.13"_s);
        row("half of a cent", u"0.005"_s, u"$0.00"_s);
        row("three halves of a cent", u"0.015"_s, u"$0.02"_s);
        row("carried through", u"999.995"_s, u"$1,000.00"_s);
        row("a third of ten", u"3.3333333333333333333333333333333333333"_s, u"$3.33"_s);
        row("smaller than any cent", u"1e-128"_s, u"$0.00"_s);
    }
    void shouldRoundHalfToEven()
    {
        QFETCH(QString, number);
        QFETCH(QString, expected);
        MoneyFormatter money(localeNamed("en_US"));
        QCOMPARE(money.text(amount(number), u"USD"_s), expected);
    }

    void shouldKeepEveryDigitOfLongAmounts()
    {
        MoneyFormatter money(localeNamed("en_US"));
        const QString digits = u"12345678901234567890123456789012345678"_s;
        QCOMPARE(money.text(amount(digits), u"USD"_s), u'$' + grouped(digits) + u".00"_s);
        QCOMPARE(money.text(amount(digits.first(36) + u".78"_s), u"USD"_s),
            u'$' + grouped(digits.first(36)) + u".78"_s);
        // 38 digits and 127 zeros
        QCOMPARE(money.text(amount(digits + u"e127"_s), u"USD"_s),
            u'$' + grouped(digits + QString(127, u'0')) + u".00"_s);
    }

    void shouldFallBackToThePlainNumberWhereTheCodeIsNone_data()
    {
        QTest::addColumn<QString>("currency");
        QTest::addColumn<QString>("expected");
        QTest::newRow("empty") << u""_s << u" 1234.5"_s;
        QTest::newRow("two letters") << u"eu"_s << u"EU 1234.5"_s;
        QTest::newRow("four letters") << u"EURO"_s << u"EURO 1234.5"_s;
        QTest::newRow("digit inside") << u"E1R"_s << u"E1R 1234.5"_s;
        QTest::newRow("letters that are not ASCII") << u"äöü"_s << u"ÄÖÜ 1234.5"_s;
        QTest::newRow("blank inside") << u"EU "_s << u"EU  1234.5"_s;
        QTest::newRow("symbol") << u"€"_s << u"€ 1234.5"_s;
        QTest::newRow("emoji") << u"🎉x"_s << u"🎉X 1234.5"_s;
    }
    void shouldFallBackToThePlainNumberWhereTheCodeIsNone()
    {
        QFETCH(QString, currency);
        QFETCH(QString, expected);
        MoneyFormatter money(localeNamed("de_DE"));
        QCOMPARE(money.text(amount(u"1234.50"_s), currency), expected);
    }

    void shouldGiveTheSameTextAgainForCurrenciesInTurn()
    {
        MoneyFormatter money(localeNamed("en_US"));
        for (int round = 0; round < 3; ++round) {
            QCOMPARE(money.text(amount(u"1"_s), u"USD"_s), u"$1.00"_s);
            QCOMPARE(money.text(amount(u"2"_s), u"EUR"_s), u"€2.00"_s);
            QCOMPARE(money.text(amount(u"3"_s), u"EU"_s), u"EU 3"_s);
        }
    }

    void shouldFollowTheMoneysLocaleAlone()
    {
        MoneyFormatter money(Locale{.dates = "de_DE", .money = "en_US", .collation = "de_DE"});
        QCOMPARE(money.text(amount(u"1234.5"_s), u"EUR"_s), u"€1,234.50"_s);
    }
};

ORBITLEDGE_TEST_MAIN(MoneyFormatterTest)
#include "MoneyFormatterTest.moc"
