#include "demo/Money.h"

#include "demo/ExchangeRates.h"
#include "support/TestMain.h"

#include <rapidcheck.h>

#include <set>

using namespace orbitledge;
using namespace orbitledge::demo;
using namespace Qt::StringLiterals;

class MoneyTest : public QObject {
    Q_OBJECT

    static Decimal decimal(const QString &text)
    {
        return Decimal::fromText(text.toStdString()).value_or(Decimal(-1));
    }

private Q_SLOTS:
    void shouldRoundHalfToEven_data()
    {
        QTest::addColumn<QString>("value");
        QTest::addColumn<int>("digits");
        QTest::addColumn<QString>("expected");
        const auto row = [](const char *name, const char *value, int digits, const char *expected) {
            QTest::newRow(name) << QString::fromLatin1(value) << digits << QString::fromLatin1(expected);
        };
        row("fewer digits stay", "1.5", 2, "1.5");
        row("down", "1.234", 2, "1.23");
        row("up", "1.236", 2, "1.24");
        row("middle to even below", "1.225", 2, "1.22");
        row("middle to even above", "1.235", 2, "1.24");
        row("just over the middle", "1.2250001", 2, "1.23");
        row("carries over", "9.995", 2, "10");
        row("carries far", "99.999", 1, "100");
        row("no digits, even", "2.5", 0, "2");
        row("no digits, odd", "3.5", 0, "4");
        row("below one", "0.005", 2, "0");
        row("negative", "-1.235", 2, "-1.24");
        row("three digits", "0.00051", 3, "0.001");
        row("many digits", "0.33333333333333333333333333333333333333", 4, "0.3333");
    }
    void shouldRoundHalfToEven()
    {
        QFETCH(QString, value);
        QFETCH(int, digits);
        QFETCH(QString, expected);
        QCOMPARE(roundedHalfEven(decimal(value), digits).toString(), expected);
    }

    void shouldWriteMoneyForPeople_data()
    {
        QTest::addColumn<QString>("value");
        QTest::addColumn<QString>("currency");
        QTest::addColumn<QString>("expected");
        QTest::newRow("euro") << u"1234.5"_s << u"EUR"_s << u"€1,234.50"_s;
        QTest::newRow("yen") << u"1280"_s << u"JPY"_s << u"¥1,280"_s;
        QTest::newRow("no symbol") << u"12"_s << u"chf"_s << u"CHF\u00A012.00"_s;
        QTest::newRow("three digits") << u"0.5"_s << u"KWD"_s << u"KWD\u00A00.500"_s;
        QTest::newRow("millions") << u"1000000"_s << u"USD"_s << u"$1,000,000.00"_s;
        QTest::newRow("three figures") << u"999.999"_s << u"USD"_s << u"$1,000.00"_s;
        QTest::newRow("negative") << u"-3"_s << u"GBP"_s << u"−£3.00"_s;
    }
    void shouldWriteMoneyForPeople()
    {
        QFETCH(QString, value);
        QFETCH(QString, currency);
        QFETCH(QString, expected);
        QCOMPARE(moneyText(decimal(value), currency), expected);
    }

    void shouldKnowEnoughCurrenciesOnceEach()
    {
        QVERIFY(currencies().size() >= 25);
        std::set<QString> codes;
        for (const Currency &currency : currencies()) {
            QCOMPARE(currency.code.size(), 3);
            QVERIFY(currency.rate > 0);
            QVERIFY(codes.insert(currency.code).second);
        }
        QCOMPARE(findCurrency(u"usd")->code, "USD"_L1);
        QCOMPARE(findCurrency(u"XXX"), nullptr);
        QCOMPARE(findCurrency(u""), nullptr);
    }

    void shouldConvertToTheDigitsOfTheCurrency_data()
    {
        QTest::addColumn<QString>("amount");
        QTest::addColumn<QString>("from");
        QTest::addColumn<QString>("to");
        QTest::addColumn<QString>("expected");
        const auto row = [](const char *amount, const char *from, const char *to, const char *expected) {
            QTest::addRow("%s %s in %s", amount, from, to)
                << QString::fromLatin1(amount) << QString::fromLatin1(from) << QString::fromLatin1(to)
                << QString::fromLatin1(expected);
        };
        row("100", "EUR", "USD", "108.68");
        row("10.868", "USD", "EUR", "10");
        row("2.99", "USD", "EUR", "2.75"); // 2.7511…
        row("1", "EUR", "JPY", "163"); // 163.4
        row("1280", "JPY", "EUR", "7.83"); // 7.8335…
        row("1", "EUR", "KWD", "0.334"); // 0.33405
        row("0", "GBP", "EUR", "0");
        row("1", "VND", "EUR", "0");
        row("999999999", "KWD", "VND", "82442748009160"); // …160.305
    }
    void shouldConvertToTheDigitsOfTheCurrency()
    {
        QFETCH(QString, amount);
        QFETCH(QString, from);
        QFETCH(QString, to);
        QFETCH(QString, expected);
        QCOMPARE(converted(decimal(amount), *findCurrency(from), *findCurrency(to)).toString(), expected);
    }

    void shouldComeBackWithinOneUnitOfTheLastDigit()
    {
        const bool held = rc::check("there and back through a finer currency", [] {
            const Currency from
                = *rc::gen::elementOf(std::vector<Currency>(currencies().begin(), currencies().end()));
            const Decimal amount = Decimal(*rc::gen::inRange<qint64>(0, 100'000'000)).dividedBy(100);
            const Decimal rounded = roundedHalfEven(amount, from.digits);
            RC_ASSERT(converted(rounded, from, from) == rounded);
            const Decimal there = converted(rounded, from, *findCurrency(u"IDR"));
            const Decimal back = converted(there, *findCurrency(u"IDR"), from);
            const Decimal difference = back - rounded;
            RC_ASSERT((difference.isNegative() ? -difference : difference) <= *Decimal::fromText("0.01"));
        });
        QVERIFY(held);
    }
};

ORBITLEDGE_TEST_MAIN(MoneyTest)
#include "MoneyTest.moc"
