#include "model/UuidText.h"
#include "support/DecimalOracle.h"
#include "support/Generators.h"
#include "support/Printing.h"
#include "support/TestMain.h"

#include <algorithm>
#include <random>

using namespace orbitledge;
using namespace Qt::StringLiterals;
using orbitledge::testing::isRepresentable;
using orbitledge::testing::Rational;
using orbitledge::testing::rationalFromPlainText;
using orbitledge::testing::textOfNearest;

namespace {

Rational exact(const Decimal &value)
{
    return rationalFromPlainText(value.toAscii());
}

template <typename Record> bool survivesEncoding()
{
    return rc::check("a record that was encoded decodes to itself", [](const Record &record) {
        const QByteArray json = encodeJson(record);
        const auto decoded = decodeJson<Record>(json);
        if (!decoded)
            RC_LOG() << decoded.error().pathText().toStdString() << ": "
                     << decoded.error().debugDescription.toStdString() << '\n';
        RC_ASSERT(decoded.has_value());
        RC_ASSERT(*decoded == record);
        RC_ASSERT(encodeJson(*decoded) == json);
    });
}

} // namespace

class RecordPropertiesTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void shouldDecodeEverySubscriptionThatWasEncoded() { QVERIFY(survivesEncoding<Subscription>()); }
    void shouldDecodeEveryUserProfileThatWasEncoded() { QVERIFY(survivesEncoding<UserProfile>()); }
    void shouldDecodeEveryTemplateThatWasEncoded() { QVERIFY(survivesEncoding<SubscriptionTemplate>()); }
    void shouldDecodeEveryCreateRequestThatWasEncoded()
    {
        QVERIFY(survivesEncoding<CreateSubscriptionRequest>());
    }
    void shouldDecodeEveryMutationResponseThatWasEncoded()
    {
        QVERIFY(survivesEncoding<SubscriptionMutationResponse>());
    }
    void shouldDecodeEveryAuthenticationResponseThatWasEncoded()
    {
        QVERIFY(survivesEncoding<AuthenticationResponse>());
    }
    void shouldDecodeEveryListOfSubscriptions();
    void shouldDecodeATextHoweverItIsEscaped();
    void shouldKeepOnlyWholeSecondsOfAnInstant();

    void shouldReadEveryDecimalThatWasPrinted();
    void shouldReadTheSameDecimalInEverySpelling();
    void shouldRoundEveryTextLikeTheRule();
    void shouldAddDecimalsInEitherOrder();
    void shouldMultiplyDecimalsInEitherOrder();
    void shouldComputeLikeFractions();
    void shouldSubtractWhatWasAdded();
    void shouldOrderDecimalsLikeFractions();

    void shouldReadEveryDayThatWasPrinted();
    void shouldOrderDaysLikeTheirTexts();
    void shouldReadEveryInstantThatWasPrinted();
    void shouldReadAnInstantInEveryZone();
    void shouldReadEveryIdentifierThatWasPrinted();
};

void RecordPropertiesTest::shouldDecodeEveryListOfSubscriptions()
{
    QVERIFY(rc::check("a list decodes to its records", [] {
        const auto records = *rc::gen::resize(
            20, rc::gen::container<std::vector<Subscription>>(rc::gen::arbitrary<Subscription>()));
        QByteArrayList documents;
        for (const Subscription &record : records)
            documents.append(encodeJson(record));
        const auto decoded = decodeJson<QList<Subscription>>('[' + documents.join(',') + ']');
        RC_ASSERT(decoded.has_value());
        RC_ASSERT(*decoded == QList<Subscription>(records.begin(), records.end()));
    }));
}

void RecordPropertiesTest::shouldDecodeATextHoweverItIsEscaped()
{
    QVERIFY(rc::check("each UTF-16 unit may be escaped or not", [](const QString &text) {
        QByteArray escaped;
        for (qsizetype i = 0; i < text.size(); ++i) {
            const qsizetype units = text[i].isHighSurrogate() ? 2 : 1;
            const bool mustEscape = text[i] < u' ' || text[i] == u'"' || text[i] == u'\\';
            if (mustEscape || *rc::gen::arbitrary<bool>()) {
                for (qsizetype unit = i; unit < i + units; ++unit)
                    escaped += QString::asprintf("\\u%04x", text[unit].unicode()).toLatin1();
            } else {
                escaped += text.sliced(i, units).toUtf8();
            }
            i += units - 1;
        }
        const auto decoded = decodeJson<CreateSubscriptionRequest>(
            R"({"name":")" + escaped + R"(","cost":1,"billing_cycle":""})");
        RC_ASSERT(decoded.has_value());
        RC_ASSERT(decoded->name == text);
    }));
}

void RecordPropertiesTest::shouldKeepOnlyWholeSecondsOfAnInstant()
{
    QVERIFY(rc::check("a written instant is rounded down to the second", [](const Instant &instant) {
        Subscription record = *rc::gen::arbitrary<Subscription>();
        record.cancelledAt = instant;
        const auto decoded = decodeJson<Subscription>(encodeJson(record));
        RC_ASSERT(decoded.has_value());
        const qint64 lost
            = instant.millisecondsSinceEpoch() - decoded->cancelledAt.value().millisecondsSinceEpoch();
        RC_ASSERT(lost >= 0);
        RC_ASSERT(lost < 1000);
        RC_ASSERT(decoded->cancelledAt->millisecondsSinceEpoch() % 1000 == 0);
    }));
}

void RecordPropertiesTest::shouldReadEveryDecimalThatWasPrinted()
{
    QVERIFY(rc::check("the text of a decimal stands for it", [](const Decimal &value) {
        const std::string text = value.toAscii();
        const auto fromText = Decimal::fromText(text);
        const auto fromJson = Decimal::fromJsonNumber(text);
        RC_ASSERT(fromText.has_value());
        RC_ASSERT(fromJson.has_value());
        RC_ASSERT(*fromText == value);
        RC_ASSERT(*fromJson == value);
        RC_ASSERT(fromText->toAscii() == text);
    }));
}

void RecordPropertiesTest::shouldReadTheSameDecimalInEverySpelling()
{
    QVERIFY(rc::check("an exponent moves the point and zeros say nothing", [] {
        const bool negative = *rc::gen::arbitrary<bool>();
        const std::string digits = *orbitledge::testing::significantDigits(30);
        const int exponent = *rc::gen::inRange(-60, 60);
        const int shift = *rc::gen::inRange(-40, 40);
        const auto value = orbitledge::testing::decimalOf(negative, digits, exponent);
        const std::string zeros(*rc::gen::inRange<std::size_t>(0, 100), '0');
        const std::string sign = negative ? "-" : "";
        const std::string exponentText = "e" + std::to_string(exponent);

        RC_ASSERT(Decimal::fromText(sign + zeros + digits + exponentText) == value);
        RC_ASSERT(Decimal::fromText(sign + digits + '.' + zeros + exponentText) == value);
        const std::string moved = orbitledge::testing::plainText(
            negative, orbitledge::testing::Integer(digits), exponent - shift);
        RC_ASSERT(Decimal::fromText(moved + 'e' + std::to_string(shift)) == value);
        RC_ASSERT(
            Decimal::fromJsonNumber(moved + 'E' + (shift < 0 ? "" : "+") + std::to_string(shift)) == value);
    }));
}

void RecordPropertiesTest::shouldRoundEveryTextLikeTheRule()
{
    QVERIFY(rc::check("digits that do not fit are rounded half-even", [] {
        const std::string front = *orbitledge::testing::significantDigits(45);
        // Ties are rare among random digits.
        const std::string middle
            = *rc::gen::element<std::string>("", "5", "50000", "49999", "50000000001", "00000");
        const std::string back = *rc::gen::container<std::string>(rc::gen::inRange<char>('0', '9' + 1));
        const std::string text = front + '.' + middle + back + '1';
        const auto value = Decimal::fromText(text);
        RC_ASSERT(value.has_value());
        RC_ASSERT(value->toAscii() == textOfNearest(rationalFromPlainText(text)));
    }));
}

void RecordPropertiesTest::shouldAddDecimalsInEitherOrder()
{
    QVERIFY(rc::check("a sum does not depend on the order",
        [](const Decimal &left, const Decimal &right) { RC_ASSERT(left + right == right + left); }));
}

void RecordPropertiesTest::shouldMultiplyDecimalsInEitherOrder()
{
    QVERIFY(rc::check("a product does not depend on the order",
        [](const Decimal &left, const Decimal &right) { RC_ASSERT(left * right == right * left); }));
}

void RecordPropertiesTest::shouldComputeLikeFractions()
{
    QVERIFY(rc::check("results are exact or nearest", [](const Decimal &left, const Decimal &right) {
        const auto check = [](const Decimal &result, const Rational &expected) {
            RC_TAG(isRepresentable(expected) ? "exact" : "rounded");
            RC_ASSERT(result.toAscii() == textOfNearest(expected));
            if (isRepresentable(expected))
                RC_ASSERT(exact(result) == expected);
        };
        const auto divisor = *rc::gen::inRange<quint32>(1, std::numeric_limits<quint32>::max());
        check(left + right, exact(left) + exact(right));
        check(left - right, exact(left) - exact(right));
        check(left * right, exact(left) * exact(right));
        check(left.dividedBy(divisor), exact(left) / Rational(divisor));
        RC_ASSERT(exact(-left) == -exact(left));
    }));
}

void RecordPropertiesTest::shouldSubtractWhatWasAdded()
{
    QVERIFY(rc::check("prices add up without a trace", [] {
        auto prices = *rc::gen::container<std::vector<Decimal>>(orbitledge::testing::price());
        Decimal total;
        for (const Decimal &price : prices)
            total += price;
        std::ranges::shuffle(prices, std::mt19937(*rc::gen::arbitrary<unsigned>()));
        for (const Decimal &price : prices)
            total = total - price;
        RC_ASSERT(total == Decimal());
    }));
}

void RecordPropertiesTest::shouldOrderDecimalsLikeFractions()
{
    QVERIFY(rc::check("order is that of the values", [](const Decimal &left, const Decimal &right) {
        const int expected = exact(left).compare(exact(right));
        RC_ASSERT((left < right) == (expected < 0));
        RC_ASSERT((left > right) == (expected > 0));
        RC_ASSERT((left == right) == (expected == 0));
        RC_ASSERT((-left < -right) == (expected > 0));
        RC_ASSERT(!(left < left));
    }));
}

void RecordPropertiesTest::shouldReadEveryDayThatWasPrinted()
{
    QVERIFY(rc::check("the text of a day stands for it", [](const LocalDate &date) {
        RC_ASSERT(date.isValid());
        RC_ASSERT(LocalDate::fromText(date.text().toStdString()) == date);
        RC_ASSERT(LocalDate::fromDaysSinceEpoch(date.daysSinceEpoch()) == date);
    }));
}

void RecordPropertiesTest::shouldOrderDaysLikeTheirTexts()
{
    QVERIFY(
        rc::check("order of days, texts and counts agree", [](const LocalDate &left, const LocalDate &right) {
            RC_ASSERT((left < right) == (left.text() < right.text()));
            RC_ASSERT((left < right) == (left.daysSinceEpoch() < right.daysSinceEpoch()));
            RC_ASSERT((left == right) == (left.text() == right.text()));
        }));
}

void RecordPropertiesTest::shouldReadEveryInstantThatWasPrinted()
{
    QVERIFY(rc::check("the text of an instant stands for its second", [](const Instant &instant) {
        const auto read = Instant::fromText(instant.text().toStdString());
        RC_ASSERT(read.has_value());
        RC_ASSERT(read->text() == instant.text());
        RC_ASSERT(*read <= instant);
        RC_ASSERT(instant.millisecondsSinceEpoch() - read->millisecondsSinceEpoch() < 1000);
    }));
}

void RecordPropertiesTest::shouldReadAnInstantInEveryZone()
{
    QVERIFY(rc::check("an offset and its wall time name the same instant", [] {
        const LocalDate day = *rc::gen::suchThat(orbitledge::testing::localDate(),
            [](const LocalDate &date) { return date.year > 1 && date.year < 9999; });
        const int minuteOfDay = *rc::gen::inRange(0, 24 * 60);
        const int offset = *rc::gen::inRange(-(24 * 60 - 1), 24 * 60);
        const int second = *rc::gen::inRange(0, 60);
        const int milliseconds = *rc::gen::inRange(0, 1000);
        const qint64 expected
            = ((day.daysSinceEpoch() * 1440 + minuteOfDay - offset) * 60 + second) * 1000 + milliseconds;
        const QString text = day.text()
            + QString::asprintf("T%02d:%02d:%02d.%03d%c%02d:%02d", minuteOfDay / 60, minuteOfDay % 60, second,
                milliseconds, offset < 0 ? '-' : '+', std::abs(offset) / 60, std::abs(offset) % 60);
        const auto read = Instant::fromText(text.toStdString());
        RC_ASSERT(read.has_value());
        RC_ASSERT(read->millisecondsSinceEpoch() == expected);
    }));
}

void RecordPropertiesTest::shouldReadEveryIdentifierThatWasPrinted()
{
    QVERIFY(rc::check("the text of an identifier stands for it", [](const QUuid &uuid) {
        const QString text = uuidText(uuid);
        RC_ASSERT(text.size() == 36);
        RC_ASSERT(text == text.toUpper());
        RC_ASSERT(uuidFromText(text.toStdString()) == uuid);
        RC_ASSERT(uuidFromText(text.toLower().toStdString()) == uuid);
    }));
}

ORBITLEDGE_TEST_MAIN(RecordPropertiesTest)
#include "RecordPropertiesTest.moc"
