#include "support/DecimalOracle.h"
#include "support/Printing.h"
#include "support/ProcessorTime.h"
#include "support/TestMain.h"
#include "support/TimeLimit.h"

#include <array>
#include <limits>
#include <random>

using namespace orbitledge;
using namespace Qt::StringLiterals;
using orbitledge::testing::Rational;
using orbitledge::testing::rationalFromPlainText;
using orbitledge::testing::textOfNearest;
using orbitledge::testing::timeLimit;
using orbitledge::testing::WorkTimer;

Q_DECLARE_METATYPE(std::string)

namespace {

using ParseError = Decimal::ParseError;

// 2^128 − 1: 39 digits.
const std::string largestSignificand = "340282366920938463463374607431768211455";

Decimal decimal(const std::string &text)
{
    const auto number = Decimal::fromText(text);
    if (!number)
        qFatal("%s is not a decimal", text.c_str());
    return *number;
}

std::string zeros(std::size_t count)
{
    return std::string(count, '0');
}

QString describe(ParseError error)
{
    return error == ParseError::Malformed ? u"malformed"_s : u"exponent out of range"_s;
}

/// The number's text, or why there is none.
QString outcome(const tl::expected<Decimal, ParseError> &number)
{
    return number ? number->toString() : describe(number.error());
}

const QString malformed = describe(ParseError::Malformed);
const QString outOfRange = describe(ParseError::ExponentOutOfRange);

/// Values at every kind of limit, for tests that go over all pairs.
std::vector<Decimal> boundaryValues()
{
    std::vector<Decimal> values;
    for (const std::string text : {"0", "1", "5", "9", "10", "0.1", "0.01", "9.99", "19.99", "1000", "1234.5",
             "1e-128", "2e-128", "3e-127", "5e-128", "1e-90", "1e-64", "7e-65", "1e-38", "1e38", "1e127",
             "9e127", "123456789e100", "18446744073709551615", "18446744073709551616", "9223372036854775807",
             "99999999999999999999999999999999999999", "99999999999999999999999999999999999999e127",
             "99999999999999999999999999999999999999e-128", "12345678901234567890.123456789012345678",
             "340282366920938463463374607431768211455", "340282366920938463463374607431768211454",
             "340282366920938463463374607431768211455e127", "340282366920938463463374607431768211455e-128",
             "136112946768375385385349842972707284582", "170141183460469231731687303715884105728",
             "50000000000000000000000000000000000000.5", "33333333333333333333333333333333333333"}) {
        values.push_back(decimal(text));
        values.push_back(-decimal(text));
    }
    return values;
}

/// Random significands of every length with random exponents, the same in every run.
std::vector<Decimal> scatteredValues(std::size_t count)
{
    std::mt19937_64 random(20260305);
    std::vector<Decimal> values;
    while (values.size() < count) {
        std::string text = random() % 2 == 0 ? "-" : "";
        const std::size_t length = 1 + random() % 39;
        for (std::size_t i = 0; i < length; ++i)
            text += static_cast<char>('0' + random() % 10);
        const auto span = random() % 3 == 0 ? 256U : 40U;
        const auto exponent = static_cast<int>(random() % span) - static_cast<int>(span / 2);
        if (const auto number = Decimal::fromText(text + 'e' + std::to_string(exponent)))
            values.push_back(*number);
    }
    return values;
}

Rational exact(const Decimal &value)
{
    return rationalFromPlainText(value.toAscii());
}

} // namespace

class DecimalTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void shouldReadANumberByTheGrammarOfJson_data();
    void shouldReadANumberByTheGrammarOfJson();
    void shouldReadANumberThatAPersonTyped_data();
    void shouldReadANumberThatAPersonTyped();
    void shouldRefuseATextThatHoldsANullCharacter();
    void shouldReadFromTheViewAndNotBeyondIt();
    void shouldKeepWhatFitsAndRoundTheRestHalfEven_data();
    void shouldKeepWhatFitsAndRoundTheRestHalfEven();
    void shouldKeepTheExponentInItsRange_data();
    void shouldKeepTheExponentInItsRange();
    void shouldReadTenMillionDigitsQuickly_data();
    void shouldReadTenMillionDigitsQuickly();
    void shouldNotSpendMoreOnAHugeExponentThanOnItsText();
    void shouldPrintWithoutExponentAndWithoutTrailingZeros_data();
    void shouldPrintWithoutExponentAndWithoutTrailingZeros();
    void shouldBeConstructedFromAnyInteger_data();
    void shouldBeConstructedFromAnyInteger();
    void shouldBecomeAnIntegerOnlyWhereItIsOne_data();
    void shouldBecomeAnIntegerOnlyWhereItIsOne();
    void shouldBeZeroByDefault();
    void shouldHaveNoNegativeZero();
    void shouldDivideAnAmountByItsMonths_data();
    void shouldDivideAnAmountByItsMonths();
    void shouldComputeOddResultsExactly_data();
    void shouldComputeOddResultsExactly();
    void shouldAddLikeFractions();
    void shouldSubtractLikeFractions();
    void shouldMultiplyLikeFractions();
    void shouldDivideLikeFractions();
    void shouldAddInPlace();
    void shouldOrderLikeFractions();
    void shouldTellNumbersApartThatDifferInTheLastOfManyDigits();
    void shouldCompareByValueAndNotBySpelling_data();
    void shouldCompareByValueAndNotBySpelling();
};

void DecimalTest::shouldReadANumberByTheGrammarOfJson_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QString>("expected");
    const auto row = [](const char *name, const char *text, const QString &expected) {
        QTest::newRow(name) << QByteArray(text) << expected;
    };
    row("cents", "9.99", u"9.99"_s);
    row("zero", "0", u"0"_s);
    row("negative zero is zero", "-0", u"0"_s);
    row("negative zero with a fraction is zero", "-0.00", u"0"_s);
    row("a digit", "7", u"7"_s);
    row("negative", "-12.5", u"-12.5"_s);
    row("zeros after the point go", "10.500", u"10.5"_s);
    row("zeros before the point stay", "1000", u"1000"_s);
    row("zero before the point", "0.5", u"0.5"_s);
    row("zeros after the point before a digit", "0.0005", u"0.0005"_s);
    row("lower-case exponent", "1e2", u"100"_s);
    row("upper-case exponent", "1E2", u"100"_s);
    row("exponent with plus", "1e+2", u"100"_s);
    row("exponent with minus", "15e-1", u"1.5"_s);
    row("exponent with leading zeros", "1e0002", u"100"_s);
    row("exponent zero", "3e0", u"3"_s);
    row("exponent minus zero", "3e-0", u"3"_s);
    row("fraction and exponent", "1.25e1", u"12.5"_s);
    row("zero with a small exponent", "0e5", u"0"_s);

    row("empty", "", malformed);
    row("a minus alone", "-", malformed);
    row("leading plus", "+1", malformed);
    row("two signs", "--1", malformed);
    row("sign after the number", "1-", malformed);
    row("leading zero", "01", malformed);
    row("two zeros", "00", malformed);
    row("leading zero after a minus", "-01", malformed);
    row("leading zero before a fraction", "00.5", malformed);
    row("no digit after the point", "1.", malformed);
    row("no digit before the point", ".5", malformed);
    row("no digit before the point after a minus", "-.5", malformed);
    row("a point alone", ".", malformed);
    row("two points", "1.2.3", malformed);
    row("no digit after the point before an exponent", "1.e2", malformed);
    row("no digit in the exponent", "1e", malformed);
    row("no digit after the exponent's sign", "1e+", malformed);
    row("no digit after the exponent's minus", "1e-", malformed);
    row("two signs in the exponent", "1e+-1", malformed);
    row("two exponents", "1e1e1", malformed);
    row("fraction in the exponent", "1e1.5", malformed);
    row("an exponent alone", "e5", malformed);
    row("hexadecimal", "0x1", malformed);
    row("not a number", "NaN", malformed);
    row("infinity", "Infinity", malformed);
    row("negative infinity", "-Infinity", malformed);
    row("blank before", " 1", malformed);
    row("blank after", "1 ", malformed);
    row("blank between", "1 000", malformed);
    row("line feed after", "1\n", malformed);
    row("decimal comma", "9,99", malformed);
    row("grouping underscore", "1_000", malformed);
    row("word after", "9.99abc", malformed);
    row("suffix of a float", "1.0f", malformed);
    row("Arabic-Indic digits", "\u0661\u0662", malformed);
    row("full-width digits", "\uff11", malformed);
    row("minus sign of typography", "\u22121", malformed);
    row("null", "null", malformed);
    row("quoted", "\"1\"", malformed);
}

void DecimalTest::shouldReadANumberByTheGrammarOfJson()
{
    QFETCH(QByteArray, text);
    QFETCH(QString, expected);
    QCOMPARE(outcome(Decimal::fromJsonNumber(text.toStdString())), expected);
}

void DecimalTest::shouldReadANumberThatAPersonTyped_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QString>("expected");
    const auto row = [](const char *name, const char *text, const QString &expected) {
        QTest::newRow(name) << QByteArray(text) << expected;
    };
    row("cents", "9.99", u"9.99"_s);
    row("no digit before the point", ".5", u"0.5"_s);
    row("no digit before the point after a minus", "-.5", u"-0.5"_s);
    row("no digit after the point", "5.", u"5"_s);
    row("no digit after the point before an exponent", "5.e1", u"50"_s);
    row("leading plus", "+1", u"1"_s);
    row("leading minus", "-1", u"-1"_s);
    row("leading zeros", "007.50", u"7.5"_s);
    row("exponent", "1e3", u"1000"_s);
    row("upper-case exponent", "1E-3", u"0.001"_s);
    row("zero", "0", u"0"_s);
    row("only zeros", "000.000", u"0"_s);
    row("negative zero is zero", "-0", u"0"_s);

    row("empty", "", malformed);
    row("word after", "9.99abc", malformed);
    row("decimal comma", "9,99", malformed);
    row("grouping comma", "1,000.00", malformed);
    row("an exponent alone", "e5", malformed);
    row("a sign and an exponent", "+e5", malformed);
    row("a point and an exponent", ".e5", malformed);
    row("a point alone", ".", malformed);
    row("a sign and a point", "-.", malformed);
    row("a minus alone", "-", malformed);
    row("a plus alone", "+", malformed);
    row("two signs", "--1", malformed);
    row("two different signs", "+-1", malformed);
    row("two points", "1..2", malformed);
    row("no digit in the exponent", "1e", malformed);
    row("blank alone", " ", malformed);
    row("blank before", " 1", malformed);
    row("blank after", "1 ", malformed);
    row("blank after the sign", "- 1", malformed);
    row("currency sign", "$9.99", malformed);
    row("hexadecimal", "0x1", malformed);
    row("not a number", "nan", malformed);
    row("Arabic-Indic digits", "\u0661", malformed);
}

void DecimalTest::shouldReadANumberThatAPersonTyped()
{
    QFETCH(QByteArray, text);
    QFETCH(QString, expected);
    QCOMPARE(outcome(Decimal::fromText(text.toStdString())), expected);
}

void DecimalTest::shouldRefuseATextThatHoldsANullCharacter()
{
    using namespace std::string_view_literals;
    for (const std::string_view text : {"\0"sv, "1\0"sv, "1\0002"sv, "\0001"sv, "1.\0005"sv, "1e\0005"sv}) {
        QCOMPARE(outcome(Decimal::fromJsonNumber(text)), malformed);
        QCOMPARE(outcome(Decimal::fromText(text)), malformed);
    }
}

void DecimalTest::shouldReadFromTheViewAndNotBeyondIt()
{
    const std::string_view text = "12.5e3";
    QCOMPARE(outcome(Decimal::fromJsonNumber(text.substr(0, 1))), u"1"_s);
    QCOMPARE(outcome(Decimal::fromJsonNumber(text.substr(0, 2))), u"12"_s);
    QCOMPARE(outcome(Decimal::fromJsonNumber(text.substr(0, 3))), malformed);
    QCOMPARE(outcome(Decimal::fromJsonNumber(text.substr(0, 4))), u"12.5"_s);
    QCOMPARE(outcome(Decimal::fromJsonNumber(text.substr(0, 5))), malformed);
    QCOMPARE(outcome(Decimal::fromJsonNumber({})), malformed);
    QCOMPARE(outcome(Decimal::fromText({})), malformed);
}

void DecimalTest::shouldKeepWhatFitsAndRoundTheRestHalfEven_data()
{
    QTest::addColumn<std::string>("text");
    QTest::addColumn<std::string>("expected");
    const auto row = [](const char *name, const std::string &text, const std::string &expected) {
        QTest::newRow(name) << text << expected;
    };
    const std::string digits38 = "56789012345678901234567890123456789012";
    row("38 digits", digits38, digits38);
    row("38 digits around a point", "12345678901234567890.123456789012345678",
        "12345678901234567890.123456789012345678");
    row("38 nines", std::string(38, '9'), std::string(38, '9'));
    row("39 digits that fit", "300000000000000000000000000000000000001",
        "300000000000000000000000000000000000001");
    row("39 digits behind the point that fit", "0.300000000000000000000000000000000000001",
        "0.300000000000000000000000000000000000001");
    row("39 digits that do not fit", "999999999999999999999999999999999999991",
        "999999999999999999999999999999999999990");
    row("the largest significand", largestSignificand, largestSignificand);
    row("the largest significand, negative", "-" + largestSignificand, "-" + largestSignificand);
    row("one above the largest significand", "340282366920938463463374607431768211456",
        "340282366920938463463374607431768211460");
    row("one above the largest significand, rounded down", "340282366920938463463374607431768211461",
        "340282366920938463463374607431768211460");
    row("a zero after the largest significand", largestSignificand + "0", largestSignificand + "0");
    row("a zero fraction after the largest significand", largestSignificand + ".0", largestSignificand);
    row("a digit after the largest significand", largestSignificand + "1",
        "3402823669209384634633746074317682114600");
    row("zeros and a digit after the largest significand", largestSignificand + ".0000001",
        "340282366920938463463374607431768211460");
    row("rounded down", digits38 + "4", digits38 + "0");
    row("rounded down, close to the tie", digits38 + "4" + std::string(60, '9'), digits38 + zeros(61));
    row("rounded up", digits38 + "6", "567890123456789012345678901234567890130");
    row("tie to even, down", "99999999999999999999999999999999999998.5",
        "99999999999999999999999999999999999998");
    row("tie to even, up", "99999999999999999999999999999999999997.5",
        "99999999999999999999999999999999999998");
    row("tie to even, down, negative", "-99999999999999999999999999999999999998.5",
        "-99999999999999999999999999999999999998");
    row("no tie because of a digit far behind", "99999999999999999999999999999999999998.5" + zeros(300) + "1",
        "99999999999999999999999999999999999999");
    row("tie with zeros far behind", "99999999999999999999999999999999999998.5" + zeros(300),
        "99999999999999999999999999999999999998");
    row("tie of a 39-digit significand, to even down", "200000000000000000000000000000000000005" + zeros(2),
        "200000000000000000000000000000000000005" + zeros(2));
    row("a digit behind turns a 39-digit tie up", "200000000000000000000000000000000000005.0001",
        "200000000000000000000000000000000000010");
    row("39-digit tie by a zero and a digit, to even down", "340282366920938463463374607431768211450.0000",
        "340282366920938463463374607431768211450");
    row("a zero between the last kept digit and the rest", digits38 + "0" + zeros(40) + "1",
        digits38 + zeros(42));
    row("all nines carry into a new digit", std::string(39, '9'), "1" + zeros(39));
    row("all nines of a fraction carry", "0." + std::string(60, '9'), "1");
    row("leading zeros are no digits", zeros(500) + digits38, digits38);
    row("zeros after the point are no digits", "0." + zeros(80) + digits38, "0." + zeros(80) + digits38);
    row("zeros in front of the point are no digits", digits38 + zeros(100), digits38 + zeros(100));
    row("trailing zeros of a fraction are no digits", "1." + zeros(500), "1");
    row("many digits of a fraction", "3." + std::string(500, '3'), "3." + std::string(37, '3'));
}

void DecimalTest::shouldKeepWhatFitsAndRoundTheRestHalfEven()
{
    QFETCH(std::string, text);
    QFETCH(std::string, expected);
    const auto number = Decimal::fromText(text);
    QVERIFY(number);
    QCOMPARE(number->toString(), QString::fromStdString(expected));
    // The row itself must agree with the rule.
    QCOMPARE(
        QString::fromStdString(textOfNearest(rationalFromPlainText(text))), QString::fromStdString(expected));
}

void DecimalTest::shouldKeepTheExponentInItsRange_data()
{
    QTest::addColumn<std::string>("text");
    QTest::addColumn<QString>("expected");
    const auto row = [](const char *name, const std::string &text, const QString &expected) {
        QTest::newRow(name) << text << expected;
    };
    const auto fraction = [](int exponent, const char *digits) {
        return QString::fromStdString(
            "0." + zeros(static_cast<std::size_t>(exponent) - std::string_view(digits).size()) + digits);
    };
    row("least exponent", "1e-128", fraction(128, "1"));
    row("one below the least exponent", "1e-129", outOfRange);
    row("below the least exponent but for a zero", "10e-129", fraction(128, "1"));
    row("below the least exponent by a fraction", "1.5e-128", outOfRange);
    row("least exponent by a fraction", "1.5e-127", fraction(128, "15"));
    row("128 digits behind the point", "0." + zeros(127) + "1", fraction(128, "1"));
    row("129 digits behind the point", "0." + zeros(128) + "1", outOfRange);
    row("greatest exponent", "1e127", QString::fromStdString("1" + zeros(127)));
    row("one above the greatest exponent", "1e128", outOfRange);
    row("above the greatest exponent but for a fraction", "1.5e128",
        QString::fromStdString("15" + zeros(127)));
    row("above the greatest exponent by a zero", "10e127", outOfRange);
    row("127 zeros", "1" + zeros(127), QString::fromStdString("1" + zeros(127)));
    row("128 zeros", "1" + zeros(128), outOfRange);
    row("greatest magnitude", largestSignificand + "e127",
        QString::fromStdString(largestSignificand + zeros(127)));
    row("greatest magnitude, negative", "-" + largestSignificand + "e127",
        QString::fromStdString("-" + largestSignificand + zeros(127)));
    row("an exponent that rounding pushes past the greatest", std::string(39, '9') + "e127", outOfRange);
    row("an exponent that a zero made by rounding pushes past the greatest",
        "567890123456789012345678901234567890199e126", outOfRange);
    row("an exponent that a zero made by rounding leaves at the greatest",
        "567890123456789012345678901234567890199e125",
        QString::fromStdString("56789012345678901234567890123456789020" + zeros(126)));
    row("an exponent of a billion", "1e999999999", outOfRange);
    row("an exponent of minus a billion", "-1e-999999999", outOfRange);
    row("an exponent beyond 64 bits", "1e99999999999999999999999999999", outOfRange);
    row("an exponent beyond 64 bits downwards", "1e-99999999999999999999999999999", outOfRange);
    row("an exponent that wraps a 32-bit integer to zero", "1e4294967296", outOfRange);
    row("an exponent that wraps a 64-bit integer to zero", "1e18446744073709551616", outOfRange);
    row("zero with the least exponent", "0e-128", u"0"_s);
    row("zero with an exponent below the least", "0e-129", outOfRange);
    row("zero with the greatest exponent", "0e127", u"0"_s);
    row("zero with an exponent above the greatest", "0e128", outOfRange);
    row("zero with an exponent of a billion", "0e999999999", outOfRange);
    row("zero with many zeros behind the point", "0." + zeros(500), u"0"_s);
}

void DecimalTest::shouldKeepTheExponentInItsRange()
{
    QFETCH(std::string, text);
    QFETCH(QString, expected);
    QCOMPARE(outcome(Decimal::fromJsonNumber(text)), expected);
    QCOMPARE(outcome(Decimal::fromText(text)), expected);
}

void DecimalTest::shouldReadTenMillionDigitsQuickly_data()
{
    QTest::addColumn<std::string>("text");
    QTest::addColumn<QString>("expected");
    constexpr std::size_t many = 10'000'000;
    QTest::newRow("nines before the point") << std::string(many, '9') << outOfRange;
    QTest::newRow("threes behind the point") << "0." + std::string(many, '3') << u"0."_s + QString(38, u'3');
    QTest::newRow("zeros behind the point") << "7." + zeros(many) << u"7"_s;
    QTest::newRow("zeros behind the point and a one") << "7." + zeros(many) + "1" << u"7"_s;
    QTest::newRow("digits of the exponent") << "1e" + std::string(many, '9') << outOfRange;
    QTest::newRow("zeros before the digit of the exponent") << "1e" + zeros(many) + "1" << u"10"_s;
    QTest::newRow("digits and an exponent that makes up for them")
        << std::string(many, '9') + "e-" + std::to_string(many) << u"1"_s;
}

void DecimalTest::shouldReadTenMillionDigitsQuickly()
{
    QFETCH(std::string, text);
    QFETCH(QString, expected);
    const WorkTimer timer;
    QCOMPARE(outcome(Decimal::fromJsonNumber(text)), expected);
    QVERIFY2(timer.elapsed() < timeLimit(1000), "the time must grow with the length alone");
}

void DecimalTest::shouldNotSpendMoreOnAHugeExponentThanOnItsText()
{
    const WorkTimer timer;
    for (int i = 0; i < 100'000; ++i)
        QVERIFY(!Decimal::fromJsonNumber("1e999999999"));
    QVERIFY2(timer.elapsed() < timeLimit(1000), "an exponent must not be worked off step by step");
}

void DecimalTest::shouldPrintWithoutExponentAndWithoutTrailingZeros_data()
{
    QTest::addColumn<std::string>("text");
    QTest::addColumn<std::string>("expected");
    const auto row = [](const char *name, const std::string &text, const std::string &expected) {
        QTest::newRow(name) << text << expected;
    };
    row("zero", "0.00", "0");
    row("one", "1", "1");
    row("a thousand", "1e3", "1000");
    row("half", "10.50", "10.5");
    row("negative thousandth", "-1e-3", "-0.001");
    row("as many fraction digits as digits", "123e-3", "0.123");
    row("one digit before the point", "123e-2", "1.23");
    row("least magnitude", "1e-128", "0." + zeros(127) + "1");
    row("negative least magnitude", "-1e-128", "-0." + zeros(127) + "1");
    row("greatest magnitude", largestSignificand + "e127", largestSignificand + zeros(127));
    row("39 digits of which 38 stand behind the point", largestSignificand + "e-38",
        "3.40282366920938463463374607431768211455");
    row("39 digits all behind the point", largestSignificand + "e-39",
        "0.340282366920938463463374607431768211455");
}

void DecimalTest::shouldPrintWithoutExponentAndWithoutTrailingZeros()
{
    QFETCH(std::string, text);
    QFETCH(std::string, expected);
    const Decimal number = decimal(text);
    QCOMPARE(QString::fromStdString(number.toAscii()), QString::fromStdString(expected));
    QCOMPARE(number.toString(), QString::fromStdString(expected));
    QCOMPARE(decimal(number.toAscii()), number);
}

void DecimalTest::shouldBeConstructedFromAnyInteger_data()
{
    QTest::addColumn<qint64>("value");
    QTest::newRow("zero") << qint64{0};
    QTest::newRow("one") << qint64{1};
    QTest::newRow("minus one") << qint64{-1};
    QTest::newRow("ten") << qint64{10};
    QTest::newRow("a million") << qint64{1'000'000};
    QTest::newRow("greatest") << std::numeric_limits<qint64>::max();
    QTest::newRow("least") << std::numeric_limits<qint64>::min();
    QTest::newRow("above least") << std::numeric_limits<qint64>::min() + 1;
    QTest::newRow("greatest power of ten") << qint64{1'000'000'000'000'000'000};
}

void DecimalTest::shouldBeConstructedFromAnyInteger()
{
    QFETCH(qint64, value);
    const Decimal number(value);
    QCOMPARE(number.toString(), QString::number(value));
    QCOMPARE(number, decimal(std::to_string(value)));
    QVERIFY(number.toInteger() == value);
    QCOMPARE(number.isNegative(), value < 0);
    QCOMPARE(number.isZero(), value == 0);
}

void DecimalTest::shouldBecomeAnIntegerOnlyWhereItIsOne_data()
{
    QTest::addColumn<std::string>("text");
    QTest::addColumn<QString>("expected");
    const auto row = [](const char *name, const char *text, const QString &expected) {
        QTest::newRow(name) << std::string(text) << expected;
    };
    const QString absent = u"absent"_s;
    row("zero", "0", u"0"_s);
    row("zero fraction", "34.0", u"34"_s);
    row("exponent", "1e2", u"100"_s);
    row("greatest", "9223372036854775807", u"9223372036854775807"_s);
    row("one above the greatest", "9223372036854775808", absent);
    row("least", "-9223372036854775808", u"-9223372036854775808"_s);
    row("one below the least", "-9223372036854775809", absent);
    row("greatest power of ten", "1e18", u"1000000000000000000"_s);
    row("negative power of ten", "-1e18", u"-1000000000000000000"_s);
    row("power of ten that does not fit", "1e19", absent);
    row("nine times the greatest power of ten", "9e18", u"9000000000000000000"_s);
    row("ten times the greatest power of ten", "10e18", absent);
    row("half", "0.5", absent);
    row("one and a half", "1.5", absent);
    row("least fraction", "1e-128", absent);
    row("beyond 64 bits", "18446744073709551616", absent);
    row("beyond 64 bits, one above", "18446744073709551617", absent);
    row("38 digits and an exponent of 18", "12345678901234567890123456789012345678e18", absent);
    row("beyond all", "1e127", absent);
}

void DecimalTest::shouldBecomeAnIntegerOnlyWhereItIsOne()
{
    QFETCH(std::string, text);
    QFETCH(QString, expected);
    const auto integer = decimal(text).toInteger();
    QCOMPARE(integer ? QString::number(*integer) : u"absent"_s, expected);
}

void DecimalTest::shouldBeZeroByDefault()
{
    QVERIFY(Decimal().isZero());
    QVERIFY(!Decimal().isNegative());
    QCOMPARE(Decimal(), Decimal(0));
    QCOMPARE(Decimal().toString(), u"0"_s);
}

void DecimalTest::shouldHaveNoNegativeZero()
{
    QVERIFY(!(-Decimal()).isNegative());
    QVERIFY(!decimal("-0.0").isNegative());
    QVERIFY(!(decimal("-1") * Decimal()).isNegative());
    QVERIFY(!(decimal("-1") + decimal("1")).isNegative());
    QVERIFY(!(decimal("-1e-128") * decimal("0.1")).isNegative());
    QVERIFY(!decimal("-1e-128").dividedBy(4).isNegative());
    QCOMPARE(decimal("-1e-128").dividedBy(4), Decimal());
}

void DecimalTest::shouldDivideAnAmountByItsMonths_data()
{
    QTest::addColumn<std::string>("amount");
    QTest::addColumn<quint32>("divisor");
    QTest::addColumn<std::string>("expected");
    const auto row = [](const char *name, const char *amount, quint32 divisor, const char *expected) {
        QTest::newRow(name) << std::string(amount) << divisor << std::string(expected);
    };
    row("a year's amount that divides", "120", 12, "10");
    row("a third has 38 digits", "10", 3, "3.3333333333333333333333333333333333333");
    row("two thirds are rounded up", "20", 3, "6.6666666666666666666666666666666666667");
    row("negative third", "-10", 3, "-3.3333333333333333333333333333333333333");
    row("cents of a year", "99.99", 12, "8.3325");
    row("half", "1", 2, "0.5");
    row("zero", "0", 12, "0");
    row("by one", "19.99", 1, "19.99");
    row("by the greatest divisor", "4294967295", 4294967295U, "1");
    row("one by the greatest divisor", "1", 4294967295U, "0.00000000023283064370807973754314699618684756481");
    row("38 nines by nine", "99999999999999999999999999999999999999", 9,
        "11111111111111111111111111111111111111");
    row("38 digits by seven", "12345678901234567890123456789012345678", 7,
        "1763668414462081127160493827001763668.3");
}

void DecimalTest::shouldDivideAnAmountByItsMonths()
{
    QFETCH(std::string, amount);
    QFETCH(quint32, divisor);
    QFETCH(std::string, expected);
    QCOMPARE(decimal(amount).dividedBy(divisor).toString(), QString::fromStdString(expected));
}

void DecimalTest::shouldComputeOddResultsExactly_data()
{
    QTest::addColumn<Decimal>("result");
    QTest::addColumn<std::string>("expected");
    const auto row = [](const char *name, const Decimal &result, const std::string &expected) {
        QTest::newRow(name) << result << expected;
    };
    const std::string largest = largestSignificand + zeros(127);
    const std::string least = "0." + zeros(127) + "1";
    const Decimal greatest = decimal(largestSignificand + "e127");
    row("a tenth and two tenths", decimal("0.1") + decimal("0.2"), "0.3");
    row("a cent taken off", decimal("10") - decimal("0.01"), "9.99");
    row("cancelled to zero", decimal("9.99") - decimal("9.99"), "0");
    row("a sum that reaches the largest significand",
        decimal("340282366920938463463374607431768211454") + decimal("1"), largestSignificand);
    row("a sum just above the largest significand",
        decimal("340282366920938463463374607431768211455") + decimal("1"),
        "340282366920938463463374607431768211460");
    row("a summand far too small to count", decimal("1e127") + decimal("1e-128"), "1" + zeros(127));
    row("a summand far too small that breaks a tie",
        decimal("340282366920938463463374607431768211445") + decimal("1e-128"),
        "340282366920938463463374607431768211450");
    row("a subtrahend far too small that breaks a tie",
        decimal("340282366920938463463374607431768211445") - decimal("1e-128"),
        "340282366920938463463374607431768211440");
    row("the widest numbers that lie 39 digits apart",
        decimal("200000000000000000000000000000000000001") + decimal("1e-39"), "2" + zeros(38));
    row("saturated sum", greatest + greatest, largest);
    row("saturated negative sum", -greatest - greatest, "-" + largest);
    row("saturated sum by a small step", greatest + decimal("1e127"), largest);
    row("saturated product", decimal("1e127") * decimal("1e127"), largest);
    row("saturated negative product", decimal("1e127") * decimal("-1e127"), "-" + largest);
    row("a product that keeps its zeros at the greatest exponent", decimal("3e127") * decimal("1e20"),
        "3" + zeros(147));
    row("a product that just does not overflow", decimal("34e127") * decimal("1e37"), "34" + zeros(164));
    row("a product that just overflows", decimal("35e127") * decimal("1e37"), largest);
    row("a product below all", decimal("1e-128") * decimal("1e-128"), "0");
    row("a product of half the least, to even", decimal("1e-128") * decimal("0.5"), "0");
    row("a product of three halves of the least, to even", decimal("3e-128") * decimal("0.5"),
        "0." + zeros(127) + "2");
    row("a product just above half the least", decimal("1e-128") * decimal("0.50000000001"), least);
    row("a product above half the least by its 38th digit",
        decimal("1e-128") * decimal("0.50000000000000000000000000000000000001"), least);
    row("a wide product just above half the least",
        decimal("50000000000000000000000000000000000001e-90")
            * decimal("10000000000000000000000000000000000001e-113"),
        least);
    row("the widest product, below half the least",
        decimal("330000000000000000000000000000000000001e-103")
            * decimal("330000000000000000000000000000000000001e-103"),
        "0");
    row("a quotient of half the least, to even", decimal("1e-128").dividedBy(2), "0");
    row("a quotient above half the least", decimal("2e-128").dividedBy(3), least);
    row("a quotient that is no tie by its 39th digit",
        decimal("40000000000000000000000000000000200001e-128").dividedBy(400000),
        "0." + zeros(95) + "1" + zeros(31) + "1");
    row("a wide product that fits without its zeros",
        decimal("136112946768375385385349842972707284582") * decimal("25"),
        "3402823669209384634633746074317682114550");
    row("a quotient of 39 digits and a rest of one",
        decimal("340282366920938463463374607431768211453").dividedBy(3),
        "113427455640312821154458202477256070480");
    row("a product halfway between two, to even",
        decimal("80000000000000000000000000000000000005") * decimal("5"),
        "400000000000000000000000000000000000020");
    row("a product halfway between two, to even above",
        decimal("80000000000000000000000000000000000007") * decimal("5"),
        "400000000000000000000000000000000000040");
    row("38 by 38 digits", decimal(std::string(38, '9')) * decimal(std::string(38, '9')),
        "99999999999999999999999999999999999998" + zeros(38));
}

void DecimalTest::shouldComputeOddResultsExactly()
{
    QFETCH(Decimal, result);
    QFETCH(std::string, expected);
    QCOMPARE(result.toString(), QString::fromStdString(expected));
}

void DecimalTest::shouldAddLikeFractions()
{
    const auto check = [](const std::vector<Decimal> &values) {
        for (const Decimal &left : values) {
            for (const Decimal &right : values) {
                const std::string expected = textOfNearest(exact(left) + exact(right));
                QCOMPARE((left + right).toString(), QString::fromStdString(expected));
            }
        }
    };
    check(boundaryValues());
    check(scatteredValues(50));
}

void DecimalTest::shouldSubtractLikeFractions()
{
    const auto check = [](const std::vector<Decimal> &values) {
        for (const Decimal &left : values) {
            for (const Decimal &right : values) {
                const std::string expected = textOfNearest(exact(left) - exact(right));
                QCOMPARE((left - right).toString(), QString::fromStdString(expected));
            }
        }
    };
    check(boundaryValues());
    check(scatteredValues(50));
}

void DecimalTest::shouldMultiplyLikeFractions()
{
    const auto check = [](const std::vector<Decimal> &values) {
        for (const Decimal &left : values) {
            for (const Decimal &right : values) {
                const std::string expected = textOfNearest(exact(left) * exact(right));
                QCOMPARE((left * right).toString(), QString::fromStdString(expected));
            }
        }
    };
    check(boundaryValues());
    check(scatteredValues(50));
}

void DecimalTest::shouldDivideLikeFractions()
{
    constexpr std::array<quint32, 14> divisors{
        1, 2, 3, 4, 5, 7, 10, 12, 52, 365, 400'000, 1'000'000'007, 2'147'483'648, 4'294'967'295};
    const auto check = [&divisors](const std::vector<Decimal> &values) {
        for (const Decimal &value : values) {
            for (const quint32 divisor : divisors) {
                const std::string expected = textOfNearest(exact(value) / Rational(divisor));
                QCOMPARE(value.dividedBy(divisor).toString(), QString::fromStdString(expected));
            }
        }
    };
    check(boundaryValues());
    check(scatteredValues(200));
}

void DecimalTest::shouldAddInPlace()
{
    Decimal total;
    for (int i = 0; i < 1000; ++i)
        total += decimal("0.1");
    QCOMPARE(total, Decimal(100));
}

void DecimalTest::shouldOrderLikeFractions()
{
    std::vector<Decimal> values = boundaryValues();
    for (const Decimal &value : scatteredValues(60))
        values.push_back(value);
    for (const Decimal &left : values) {
        for (const Decimal &right : values) {
            const int expected = exact(left).compare(exact(right));
            QCOMPARE(left < right, expected < 0);
            QCOMPARE(left > right, expected > 0);
            QCOMPARE(left == right, expected == 0);
            QCOMPARE((left <=> right) == 0, expected == 0);
        }
    }
}

void DecimalTest::shouldTellNumbersApartThatDifferInTheLastOfManyDigits()
{
    const Decimal less = decimal("340282366920938463463374607431768211454e-38");
    const Decimal more = decimal("340282366920938463463374607431768211455e-38");
    QVERIFY(less < more);
    QVERIFY(-more < -less);
    QVERIFY(less != more);
    // Their difference could not be told from the greater one.
    QVERIFY(decimal("1e127") > decimal("1e-128"));
    QVERIFY(decimal("-1e127") < decimal("1e-128"));
    QVERIFY(decimal("-1e-128") < Decimal());
    QVERIFY(Decimal() < decimal("1e-128"));
}

void DecimalTest::shouldCompareByValueAndNotBySpelling_data()
{
    QTest::addColumn<std::string>("left");
    QTest::addColumn<std::string>("right");
    const auto row = [](const char *name, const char *left, const char *right) {
        QTest::newRow(name) << std::string(left) << std::string(right);
    };
    row("trailing zero of a fraction", "10.0", "10");
    row("exponent", "1e1", "10");
    row("negative exponent", "1000e-3", "1");
    row("fraction and exponent", "0.01e3", "10");
    row("zeros", "0e50", "-0.000");
    row("zeros of a wide significand", "340282366920938463463374607431768211450.0",
        "34028236692093846346337460743176821145e1");
}

void DecimalTest::shouldCompareByValueAndNotBySpelling()
{
    QFETCH(std::string, left);
    QFETCH(std::string, right);
    QCOMPARE(decimal(left), decimal(right));
    QVERIFY((decimal(left) <=> decimal(right)) == 0);
}

ORBITLEDGE_TEST_MAIN(DecimalTest)
#include "DecimalTest.moc"
