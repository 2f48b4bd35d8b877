#include "model/RecordCodecs.h"

#include "support/JsonDocuments.h"
#include "support/Printing.h"
#include "support/TestMain.h"

#include <algorithm>
#include <random>

using namespace orbitledge;
using namespace orbitledge::testing;
using namespace Qt::StringLiterals;

using Kind = DecodingError::Kind;

namespace {

/// A record type without its type, for tests that go over all of them.
struct Codec {
    const char *name;
    Members members;
    /// The document decoded and encoded again, or why it was refused.
    tl::expected<QByteArray, DecodingError> (*recode)(const QByteArray &);
};

template <typename Record> tl::expected<QByteArray, DecodingError> recode(const QByteArray &json)
{
    return decodeJson<Record>(json).map(encodeJson<Record>);
}

const std::vector<Codec> &codecs()
{
    static const std::vector<Codec> all{
        {"subscription", subscriptionMembers(), &recode<Subscription>},
        {"user profile", userProfileMembers(), &recode<UserProfile>},
        {"template", subscriptionTemplateMembers(), &recode<SubscriptionTemplate>},
        {"create request", createRequestMembers(), &recode<CreateSubscriptionRequest>},
        {"mutation response", mutationResponseMembers(), &recode<SubscriptionMutationResponse>},
        {"authentication response", authenticationResponseMembers(), &recode<AuthenticationResponse>},
    };
    return all;
}

void addRowForEveryMember()
{
    QTest::addColumn<std::size_t>("codec");
    QTest::addColumn<QByteArray>("key");
    for (std::size_t i = 0; i < codecs().size(); ++i) {
        for (const Member &member : codecs()[i].members)
            QTest::addRow("%s of a %s", member.key.constData(), codecs()[i].name) << i << member.key;
    }
}

const Member &memberOf(const Codec &codec, const QByteArray &key)
{
    return *std::ranges::find(codec.members, key, &Member::key);
}

std::vector<DecodingError::PathElement> path(std::initializer_list<DecodingError::PathElement> elements)
{
    return elements;
}

DecodingError::PathElement element(const QByteArray &key)
{
    return QString::fromLatin1(key);
}

/// Fails the running test unless the outcome is this fault at this place.
#define COMPARE_FAULT(outcome, expectedKind, expectedPath)                                                   \
    do {                                                                                                     \
        const auto &fault = (outcome);                                                                       \
        QVERIFY(!fault);                                                                                     \
        QCOMPARE(fault.error().pathText(), QString(expectedPath));                                           \
        QCOMPARE(fault.error().kind, expectedKind);                                                          \
    } while (false)

Decimal decimal(const char *text)
{
    return Decimal::fromText(text).value();
}

Instant instant(const char *text)
{
    return Instant::fromText(text).value();
}

QUuid uuid(const char *text)
{
    return QUuid(QString::fromLatin1(text));
}

QByteArray list(const QByteArrayList &documents)
{
    return '[' + documents.join(',') + ']';
}

} // namespace

class RecordCodecsTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void shouldDecodeEveryFieldOfASubscription();
    void shouldDecodeEveryFieldOfAUserProfile();
    void shouldDecodeEveryFieldOfATemplate();
    void shouldDecodeEveryFieldOfACreateRequest();
    void shouldDecodeBothFieldsOfAMutationResponse();
    void shouldDecodeTheUserOfAnAuthenticationResponse();
    void shouldLeaveEveryOptionalFieldOfASubscriptionAbsent();

    void shouldRefuseARecordWithoutARequiredKey_data() { addRowForEveryMember(); }
    void shouldRefuseARecordWithoutARequiredKey();
    void shouldRefuseNullForARequiredValueOnly_data() { addRowForEveryMember(); }
    void shouldRefuseNullForARequiredValueOnly();
    void shouldRefuseEveryOtherJsonType_data() { addRowForEveryMember(); }
    void shouldRefuseEveryOtherJsonType();
    void shouldRefuseAnEmptyObjectForTheFirstRequiredKey();
    void shouldRefuseADocumentThatIsNoObject_data();
    void shouldRefuseADocumentThatIsNoObject();

    void shouldWriteEveryKeyInTheOrderOfTheFields_data();
    void shouldWriteEveryKeyInTheOrderOfTheFields();
    void shouldWriteOnlyWhatIsPresent_data();
    void shouldWriteOnlyWhatIsPresent();
    void shouldWriteOnlyThreeKeysOfAPlainCreateRequest();

    void shouldReadTheCategoryOfASubscriptionUnderItsOwnKey();
    void shouldWriteTheCategoryOfACreateRequestUnderItsOwnKey();
    void shouldRefuseAQuotedCost();
    void shouldReadACostToItsLastDigit();
    void shouldTakeANullAndAMissingConvertedCostForTheSame();
    void shouldNotComputeAConvertedCost();
    void shouldRefuseAProfileWithoutItsTrialAndOnboardingState();
    void shouldKeepThePlanDatesOfAProfileAsInstants();

    void shouldReadAWholeNumber_data();
    void shouldReadAWholeNumber();
    void shouldRefuseANumberThatIsNoDecimal_data();
    void shouldRefuseANumberThatIsNoDecimal();
    void shouldRefuseAValueWithABadContent_data();
    void shouldRefuseAValueWithABadContent();
    void shouldRepeatABadTimestampOnlyFromTheOwnCache_data();
    void shouldRepeatABadTimestampOnlyFromTheOwnCache();

    void shouldIgnoreUnknownKeys();
    void shouldCountTheFirstOfTwoEqualKeys();
    void shouldNotLookIntoTheSecondOfTwoEqualKeys();
    void shouldReadKeysInAnyOrder_data();
    void shouldReadKeysInAnyOrder();
    void shouldReadEachRecordOfAListInAnOrderOfItsOwn();
    void shouldReadEscapedKeys();
    void shouldNotTakeAKeyForAnotherThatItBeginsWith();
    void shouldReadWhiteSpaceBetweenAllParts();
    void shouldReadEscapesInValues_data();
    void shouldReadEscapesInValues();
    void shouldWriteTextsThatReadBack_data();
    void shouldWriteTextsThatReadBack();

    void shouldReportTheFaultOfTheEarliestField_data();
    void shouldReportTheFaultOfTheEarliestField();
    void shouldSayWhereInAListTheFaultLies();
    void shouldSayWhereInANestedRecordTheFaultLies();
    void shouldSayWhichBillingCycleOfATemplateIsWrong();
    void shouldDecodeLists();
    void shouldPrintAPath_data();
    void shouldPrintAPath();
    void shouldDescribeAFaultToThePerson_data();
    void shouldDescribeAFaultToThePerson();
};

void RecordCodecsTest::shouldDecodeEveryFieldOfASubscription()
{
    const auto decoded = decodeJson<Subscription>(object(subscriptionMembers()));
    QVERIFY(decoded);
    QCOMPARE(decoded->id, uuid("6d3a1c6e-29f4-4e0b-9f3d-0c8b8a6a1e01"));
    QCOMPARE(decoded->userID, uuid("b2f0e8b4-5d8e-4c6f-8a54-7b1c9d2e3f02"));
    QCOMPARE(decoded->name, u"Streaming"_s);
    QCOMPARE(decoded->cost, decimal("9.99"));
    QCOMPARE(decoded->currency, u"EUR"_s);
    QVERIFY(decoded->convertedCost == decimal("10.84"));
    QVERIFY(decoded->convertedCurrency == u"USD"_s);
    QCOMPARE(decoded->billingCycle, u"monthly"_s);
    QCOMPARE(decoded->nextBillingDate, (LocalDate{2026, 3, 5}));
    QVERIFY(decoded->categoryID == uuid("00000000-0000-4000-8000-00000000ca7e"));
    QVERIFY(decoded->categoryName == u"Entertainment"_s);
    QCOMPARE(decoded->status, u"active"_s);
    QVERIFY(decoded->templateID == uuid("ffffffff-ffff-4fff-bfff-ffffffffffff"));
    QVERIFY(decoded->logoURL == QUrl(u"https://cdn.example.com/logos/streaming.png"_s));
    QVERIFY(decoded->cancelledAt == instant("2026-02-01T10:11:12Z"));
    QVERIFY(decoded->cancellationDate == (LocalDate{2026, 4, 5}));
    QVERIFY(decoded->trialEndDate == (LocalDate{2026, 1, 15}));
    QVERIFY(decoded->trialNotificationDays == 3);
    QVERIFY(decoded->trialNotificationSent == true);
    QCOMPARE(decoded->createdAt, instant("2025-12-31T23:59:59Z"));
    QCOMPARE(decoded->updatedAt, instant("2026-02-01T10:11:13Z"));
}

void RecordCodecsTest::shouldDecodeEveryFieldOfAUserProfile()
{
    const auto decoded = decodeJson<UserProfile>(object(userProfileMembers()));
    QVERIFY(decoded);
    QCOMPARE(decoded->id, uuid("b2f0e8b4-5d8e-4c6f-8a54-7b1c9d2e3f02"));
    QCOMPARE(decoded->email, u"ada@example.com"_s);
    QCOMPARE(decoded->firstName, u"Ada"_s);
    QCOMPARE(decoded->lastName, u"Lovelace"_s);
    QCOMPARE(decoded->isVerified, true);
    QCOMPARE(decoded->planType, u"premium"_s);
    QVERIFY(decoded->stripeSubscriptionStatus == u"trialing"_s);
    QVERIFY(decoded->planExpiresAt == instant("2027-01-01T00:00:00Z"));
    QVERIFY(decoded->planCancelledAt == instant("2026-02-02T02:02:02Z"));
    QVERIFY(decoded->trialStartDate == instant("2026-01-01T00:00:01Z"));
    QVERIFY(decoded->trialEndDate == instant("2026-01-15T00:00:02Z"));
    QCOMPARE(decoded->cancelAtTrialEnd, false);
    QCOMPARE(decoded->onboardingStatus, u"completed"_s);
    QCOMPARE(decoded->defaultCurrency, u"EUR"_s);
    QVERIFY(decoded->monthlyBudget == decimal("150.5"));
    QCOMPARE(decoded->createdAt, instant("2025-06-07T08:09:10Z"));
    QCOMPARE(decoded->updatedAt, instant("2026-02-03T04:05:06Z"));

    const Members others
        = with(with(userProfileMembers(), "is_verified", "false"), "cancel_at_trial_end", "true");
    const auto other = decodeJson<UserProfile>(object(others));
    QVERIFY(other);
    QCOMPARE(other->isVerified, false);
    QCOMPARE(other->cancelAtTrialEnd, true);
}

void RecordCodecsTest::shouldDecodeEveryFieldOfATemplate()
{
    const auto decoded = decodeJson<SubscriptionTemplate>(object(subscriptionTemplateMembers()));
    QVERIFY(decoded);
    QCOMPARE(decoded->id, uuid("0c8b8a6a-1e01-4e0b-9f3d-6d3a1c6e29f4"));
    QCOMPARE(decoded->name, u"Music"_s);
    QVERIFY(decoded->companyName == u"Music Ltd."_s);
    QVERIFY(decoded->logoURL == QUrl(u"https://cdn.example.com/logos/music.png"_s));
    QVERIFY(decoded->icon == u"music.note"_s);
    QVERIFY(decoded->colorScheme == u"#1DB954"_s);
    QVERIFY(decoded->websiteURL == QUrl(u"https://music.example.com/"_s));
    QVERIFY(decoded->description == u"Music without end"_s);
    QVERIFY(decoded->category == u"Entertainment"_s);
    QVERIFY(decoded->typicalMonthlyCost == decimal("10.99"));
    QVERIFY(decoded->typicalAnnualCost == decimal("109.9"));
    QVERIFY(decoded->annualDiscountPercentage == decimal("16.7"));
    QVERIFY(decoded->hasFreeTier == false);
    QVERIFY(decoded->availableBillingCycles == (QList<QString>{u"monthly"_s, u"yearly"_s}));
    QCOMPARE(decoded->createdAt, instant("2024-02-29T12:00:00Z"));
    QCOMPARE(decoded->updatedAt, instant("2025-03-01T13:14:15Z"));
    QVERIFY(decoded->usageCount == 1234);

    const auto noCycles = decodeJson<SubscriptionTemplate>(
        object(with(subscriptionTemplateMembers(), "available_billing_cycles", "[]")));
    QVERIFY(noCycles);
    QVERIFY(noCycles->availableBillingCycles == QList<QString>());
}

void RecordCodecsTest::shouldDecodeEveryFieldOfACreateRequest()
{
    const auto decoded = decodeJson<CreateSubscriptionRequest>(object(createRequestMembers()));
    QVERIFY(decoded);
    QCOMPARE(decoded->name, u"Streaming"_s);
    QCOMPARE(decoded->cost, decimal("9.99"));
    QVERIFY(decoded->currency == u"EUR"_s);
    QCOMPARE(decoded->billingCycle, u"monthly"_s);
    QVERIFY(decoded->nextBillingDate == (LocalDate{2026, 3, 5}));
    QVERIFY(decoded->categoryID == uuid("00000000-0000-4000-8000-00000000ca7e"));
    QVERIFY(decoded->trialEndDate == (LocalDate{2026, 1, 15}));
    QVERIFY(decoded->trialNotificationDays == 3);
}

void RecordCodecsTest::shouldDecodeBothFieldsOfAMutationResponse()
{
    const auto decoded = decodeJson<SubscriptionMutationResponse>(object(mutationResponseMembers()));
    QVERIFY(decoded);
    QCOMPARE(decoded->message, u"Subscription cancelled"_s);
    QVERIFY(decoded->subscription == decodeJson<Subscription>(object(subscriptionMembers())).value());
}

void RecordCodecsTest::shouldDecodeTheUserOfAnAuthenticationResponse()
{
    const auto decoded = decodeJson<AuthenticationResponse>(object(authenticationResponseMembers()));
    QVERIFY(decoded);
    QVERIFY(decoded->user == decodeJson<UserProfile>(object(userProfileMembers())).value());
}

void RecordCodecsTest::shouldLeaveEveryOptionalFieldOfASubscriptionAbsent()
{
    const auto decoded = decodeJson<Subscription>(object(requiredOnly(subscriptionMembers())));
    QVERIFY(decoded);
    QVERIFY(!decoded->convertedCost);
    QVERIFY(!decoded->convertedCurrency);
    QVERIFY(!decoded->categoryID);
    QVERIFY(!decoded->categoryName);
    QVERIFY(!decoded->templateID);
    QVERIFY(!decoded->logoURL);
    QVERIFY(!decoded->cancelledAt);
    QVERIFY(!decoded->cancellationDate);
    QVERIFY(!decoded->trialEndDate);
    QVERIFY(!decoded->trialNotificationDays);
    QVERIFY(!decoded->trialNotificationSent);
    QCOMPARE(decoded->name, u"Streaming"_s);
}

void RecordCodecsTest::shouldRefuseARecordWithoutARequiredKey()
{
    QFETCH(std::size_t, codec);
    QFETCH(QByteArray, key);
    const Codec &record = codecs()[codec];
    const Members rest = without(record.members, key);
    const auto outcome = record.recode(object(rest));
    if (memberOf(record, key).required) {
        QVERIFY(!outcome);
        QCOMPARE(outcome.error().kind, Kind::KeyNotFound);
        QVERIFY(outcome.error().codingPath == path({element(key)}));
    } else {
        // Nothing but the key is gone from what is written again.
        QVERIFY2(outcome, outcome ? "" : qPrintable(outcome.error().debugDescription));
        QCOMPARE(*outcome, object(rest));
    }
}

void RecordCodecsTest::shouldRefuseNullForARequiredValueOnly()
{
    QFETCH(std::size_t, codec);
    QFETCH(QByteArray, key);
    const Codec &record = codecs()[codec];
    const auto outcome = record.recode(object(with(record.members, key, "null")));
    if (memberOf(record, key).required) {
        QVERIFY(!outcome);
        QCOMPARE(outcome.error().kind, Kind::ValueNotFound);
        QVERIFY(outcome.error().codingPath == path({element(key)}));
    } else {
        QVERIFY2(outcome, outcome ? "" : qPrintable(outcome.error().debugDescription));
        QCOMPARE(*outcome, object(without(record.members, key)));
    }
}

void RecordCodecsTest::shouldRefuseEveryOtherJsonType()
{
    QFETCH(std::size_t, codec);
    QFETCH(QByteArray, key);
    const Codec &record = codecs()[codec];
    const std::pair<JsonType, QByteArrayList> values[]{
        {JsonType::String, {R"("")", R"("text")", R"("1")", R"("true")", R"("a\nb")"}},
        {JsonType::Number, {"0", "1", "-9.99", "1e3", "1e999999999"}},
        {JsonType::Boolean, {"true", "false"}},
        {JsonType::Array, {"[]", "[null]", R"(["text"])", "[[1,{}]]"}},
        {JsonType::Object, {"{}", R"({"a":1})", R"({"a":{"b":[]}})"}},
    };
    for (const auto &[type, texts] : values) {
        if (type == memberOf(record, key).type)
            continue;
        for (const QByteArray &text : texts) {
            const auto outcome = record.recode(object(with(record.members, key, text)));
            QVERIFY2(!outcome, text.constData());
            QCOMPARE(outcome.error().kind, Kind::TypeMismatch);
            QVERIFY(outcome.error().codingPath == path({element(key)}));
        }
    }
}

void RecordCodecsTest::shouldRefuseAnEmptyObjectForTheFirstRequiredKey()
{
    for (const Codec &record : codecs())
        COMPARE_FAULT(
            record.recode("{}"), Kind::KeyNotFound, QString::fromLatin1(record.members.first().key));
}

void RecordCodecsTest::shouldRefuseADocumentThatIsNoObject_data()
{
    QTest::addColumn<QByteArray>("json");
    QTest::addColumn<Kind>("kind");
    QTest::newRow("an array") << QByteArray("[]") << Kind::TypeMismatch;
    QTest::newRow("a record in an array") << list({object(subscriptionMembers())}) << Kind::TypeMismatch;
    QTest::newRow("a string") << QByteArray("\"text\"") << Kind::TypeMismatch;
    QTest::newRow("a number") << QByteArray("12") << Kind::TypeMismatch;
    QTest::newRow("true") << QByteArray("true") << Kind::TypeMismatch;
    QTest::newRow("null") << QByteArray("null") << Kind::ValueNotFound;
    QTest::newRow("null with white space") << QByteArray(" \n null \t ") << Kind::ValueNotFound;
    QTest::newRow("a word") << QByteArray("text") << Kind::DataCorrupted;
    QTest::newRow("a web page") << QByteArray("<!DOCTYPE html><html></html>") << Kind::DataCorrupted;
}

void RecordCodecsTest::shouldRefuseADocumentThatIsNoObject()
{
    QFETCH(QByteArray, json);
    QFETCH(Kind, kind);
    for (const Codec &record : codecs())
        COMPARE_FAULT(record.recode(json), kind, QString());
}

void RecordCodecsTest::shouldWriteEveryKeyInTheOrderOfTheFields_data()
{
    QTest::addColumn<std::size_t>("codec");
    for (std::size_t i = 0; i < codecs().size(); ++i)
        QTest::newRow(codecs()[i].name) << i;
}

void RecordCodecsTest::shouldWriteEveryKeyInTheOrderOfTheFields()
{
    QFETCH(std::size_t, codec);
    const QByteArray document = object(codecs()[codec].members);
    const auto written = codecs()[codec].recode(document);
    QVERIFY(written);
    QCOMPARE(*written, document);
}

void RecordCodecsTest::shouldWriteOnlyWhatIsPresent_data()
{
    shouldWriteEveryKeyInTheOrderOfTheFields_data();
}

void RecordCodecsTest::shouldWriteOnlyWhatIsPresent()
{
    QFETCH(std::size_t, codec);
    const QByteArray document = object(requiredOnly(codecs()[codec].members));
    const auto written = codecs()[codec].recode(document);
    QVERIFY(written);
    QCOMPARE(*written, document);
    QVERIFY(!written->contains("null"));
}

void RecordCodecsTest::shouldWriteOnlyThreeKeysOfAPlainCreateRequest()
{
    const CreateSubscriptionRequest request{
        .name = u"Streaming"_s,
        .cost = decimal("9.90"),
        .currency = {},
        .billingCycle = u"monthly"_s,
        .nextBillingDate = {},
        .categoryID = {},
        .trialEndDate = {},
        .trialNotificationDays = {},
    };
    QCOMPARE(encodeJson(request), QByteArray(R"({"name":"Streaming","cost":9.9,"billing_cycle":"monthly"})"));
}

void RecordCodecsTest::shouldReadTheCategoryOfASubscriptionUnderItsOwnKey()
{
    const QByteArray category = R"("00000000-0000-4000-8000-00000000CA7E")";
    const Members plain = without(subscriptionMembers(), "category");

    const auto own = decodeJson<Subscription>(object(with(plain, "category", category)));
    QVERIFY(own);
    QVERIFY(own->categoryID == uuid("00000000-0000-4000-8000-00000000ca7e"));

    const auto other = decodeJson<Subscription>(object(with(plain, "category_id", category)));
    QVERIFY(other);
    QVERIFY(!other->categoryID);
}

void RecordCodecsTest::shouldWriteTheCategoryOfACreateRequestUnderItsOwnKey()
{
    CreateSubscriptionRequest request;
    request.categoryID = uuid("00000000-0000-4000-8000-00000000ca7e");
    QCOMPARE(encodeJson(request),
        QByteArray(R"({"name":"","cost":0,"billing_cycle":"",)"
                   R"("category_id":"00000000-0000-4000-8000-00000000CA7E"})"));

    const auto other
        = decodeJson<CreateSubscriptionRequest>(object(with(without(createRequestMembers(), "category_id"),
            "category", R"("00000000-0000-4000-8000-00000000CA7E")")));
    QVERIFY(other);
    QVERIFY(!other->categoryID);
}

void RecordCodecsTest::shouldRefuseAQuotedCost()
{
    const auto outcome = decodeJson<Subscription>(object(with(subscriptionMembers(), "cost", "\"9.99\"")));
    COMPARE_FAULT(outcome, Kind::TypeMismatch, u"cost"_s);
}

void RecordCodecsTest::shouldReadACostToItsLastDigit()
{
    const auto cost = [](const QByteArray &text) {
        return decodeJson<Subscription>(object(with(subscriptionMembers(), "cost", text))).value().cost;
    };
    QCOMPARE(cost("9.99"), decimal("9.99"));
    QCOMPARE(cost("9.99").toString(), u"9.99"_s);
    QCOMPARE(cost("0.1").toString(), u"0.1"_s);
    // Neither would survive a binary floating point number.
    QCOMPARE(cost("9007199254740993").toString(), u"9007199254740993"_s);
    QCOMPARE(cost("0.1000000000000000055511151231257827021").toString(),
        u"0.1000000000000000055511151231257827021"_s);
    QCOMPARE(cost("-9.99").toString(), u"-9.99"_s);
    QCOMPARE(cost("-0").toString(), u"0"_s);
    QCOMPARE(cost("1.050e1").toString(), u"10.5"_s);
}

void RecordCodecsTest::shouldTakeANullAndAMissingConvertedCostForTheSame()
{
    const auto null = decodeJson<Subscription>(object(with(subscriptionMembers(), "converted_cost", "null")));
    const auto missing = decodeJson<Subscription>(object(without(subscriptionMembers(), "converted_cost")));
    QVERIFY(null && missing);
    QVERIFY(!null->convertedCost);
    QVERIFY(!missing->convertedCost);
    QVERIFY(*null == *missing);
}

void RecordCodecsTest::shouldNotComputeAConvertedCost()
{
    // Not even where it could be known: the currencies are the same.
    const Members members
        = without(with(subscriptionMembers(), "converted_currency", R"("EUR")"), "converted_cost");
    const auto decoded = decodeJson<Subscription>(object(members));
    QVERIFY(decoded);
    QVERIFY(!decoded->convertedCost);
}

void RecordCodecsTest::shouldRefuseAProfileWithoutItsTrialAndOnboardingState()
{
    for (const QByteArray key : {"cancel_at_trial_end", "onboarding_status"}) {
        const auto outcome = decodeJson<UserProfile>(object(without(userProfileMembers(), key)));
        COMPARE_FAULT(outcome, Kind::KeyNotFound, QString::fromLatin1(key));
    }
}

void RecordCodecsTest::shouldKeepThePlanDatesOfAProfileAsInstants()
{
    for (const QByteArray key :
        {"plan_expires_at", "plan_cancelled_at", "trial_start_date", "trial_end_date"}) {
        const auto day = decodeJson<UserProfile>(object(with(userProfileMembers(), key, R"("2026-01-15")")));
        COMPARE_FAULT(day, Kind::DataCorrupted, QString::fromLatin1(key));
    }
    const auto timestamp = decodeJson<Subscription>(
        object(with(subscriptionMembers(), "trial_end_date", R"("2026-01-15T00:00:00Z")")));
    COMPARE_FAULT(timestamp, Kind::DataCorrupted, u"trial_end_date"_s);
}

void RecordCodecsTest::shouldReadAWholeNumber_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QString>("expected");
    const auto row = [](const char *name, const char *text, const QString &expected) {
        QTest::newRow(name) << QByteArray(text) << expected;
    };
    const QString corrupted = u"corrupted"_s;
    row("plain", "34", u"34"_s);
    row("zero", "0", u"0"_s);
    row("negative zero", "-0", u"0"_s);
    row("negative", "-7", u"-7"_s);
    row("zero fraction", "34.0", u"34"_s);
    row("exponent", "1e2", u"100"_s);
    row("fraction and exponent", "1.5e1", u"15"_s);
    row("negative exponent", "300e-2", u"3"_s);
    row("greatest", "9223372036854775807", u"9223372036854775807"_s);
    row("least", "-9223372036854775808", u"-9223372036854775808"_s);
    row("2^63", "9223372036854775808", corrupted);
    row("below the least", "-9223372036854775809", corrupted);
    row("2^64", "18446744073709551616", corrupted);
    row("one and a half", "1.5", corrupted);
    row("just above a whole number", "3.00000000000000000000000000000000000001", corrupted);
    row("huge exponent", "1e999999999", corrupted);
    row("tiny exponent", "1e-999999999", corrupted);
}

void RecordCodecsTest::shouldReadAWholeNumber()
{
    QFETCH(QByteArray, text);
    QFETCH(QString, expected);
    const auto days
        = decodeJson<Subscription>(object(with(subscriptionMembers(), "trial_notification_days", text)));
    const auto count
        = decodeJson<SubscriptionTemplate>(object(with(subscriptionTemplateMembers(), "usage_count", text)));
    if (expected == u"corrupted"_s) {
        COMPARE_FAULT(days, Kind::DataCorrupted, u"trial_notification_days"_s);
        COMPARE_FAULT(count, Kind::DataCorrupted, u"usage_count"_s);
    } else {
        QVERIFY(days && count);
        QVERIFY(days->trialNotificationDays && count->usageCount);
        QCOMPARE(QString::number(*days->trialNotificationDays), expected);
        QCOMPARE(QString::number(*count->usageCount), expected);
    }
}

void RecordCodecsTest::shouldRefuseANumberThatIsNoDecimal_data()
{
    QTest::addColumn<QByteArray>("text");
    for (const char *text : {"1e128", "1e-129", "1e999999999", "-1e999999999", "1e-999999999", "0e999999999"})
        QTest::newRow(text) << QByteArray(text);
}

void RecordCodecsTest::shouldRefuseANumberThatIsNoDecimal()
{
    QFETCH(QByteArray, text);
    for (const QByteArray key : {"cost", "converted_cost"}) {
        const auto outcome = decodeJson<Subscription>(object(with(subscriptionMembers(), key, text)));
        COMPARE_FAULT(outcome, Kind::DataCorrupted, QString::fromLatin1(key));
    }
}

void RecordCodecsTest::shouldRefuseAValueWithABadContent_data()
{
    QTest::addColumn<QByteArray>("key");
    QTest::addColumn<QByteArray>("value");
    QTest::addColumn<QString>("description");
    const auto row = [](const char *name, const char *key, const char *value, const QString &description) {
        QTest::newRow(name) << QByteArray(key) << QByteArray(value) << description;
    };
    const QString date = u"Expected a valid date in yyyy-MM-dd format"_s;
    const QString timestamp = u"Expected an ISO-8601 timestamp"_s;
    const QString anything;
    row("29 February of a common year", "next_billing_date", R"("2023-02-29")", date);
    row("month 0", "next_billing_date", R"("2026-00-10")", date);
    row("day 32", "next_billing_date", R"("2026-12-32")", date);
    row("month of one digit", "next_billing_date", R"("2026-1-10")", date);
    row("day of one digit", "next_billing_date", R"("2026-01-1")", date);
    row("year of five digits", "next_billing_date", R"("20260-01-01")", date);
    row("empty month", "next_billing_date", R"("2026--01")", date);
    row("empty date", "next_billing_date", R"("")", date);
    row("trailing hyphen", "next_billing_date", R"("2026-01-01-")", date);
    row("a time behind the date", "next_billing_date", R"("2026-03-05T00:00:00Z")", date);
    row("a bad cancellation date", "cancellation_date", R"("2026-13-01")", date);
    row("a bad end of a trial", "trial_end_date", R"("tomorrow")", date);
    row("a timestamp without a zone", "created_at", R"("2026-03-05T08:00:00")", timestamp);
    row("a timestamp without a time", "updated_at", R"("2026-03-05")", timestamp);
    row("a timestamp with a blank", "cancelled_at", R"("2026-03-05 08:00:00Z")", timestamp);
    row("an empty timestamp", "created_at", R"("")", timestamp);
    row("an identifier in braces", "id", R"("{6D3A1C6E-29F4-4E0B-9F3D-0C8B8A6A1E01}")", anything);
    row("an empty identifier", "user_id", R"("")", anything);
    row("an identifier without hyphens", "category", R"("6D3A1C6E29F44E0B9F3D0C8B8A6A1E01")", anything);
    row("an identifier that is a number", "template_id", R"("42")", anything);
    row("an empty address", "logo_url", R"("")", anything);
    row("a relative address", "logo_url", R"("/logos/a.png")", anything);
    row("an address behind a byte order mark", "logo_url", R"("\ufeffhttps:\/\/example.com")", anything);
    row("an address with a bad port", "logo_url", R"("https://example.com:port/")", anything);
}

void RecordCodecsTest::shouldRefuseAValueWithABadContent()
{
    QFETCH(QByteArray, key);
    QFETCH(QByteArray, value);
    QFETCH(QString, description);
    const auto outcome = decodeJson<Subscription>(object(with(subscriptionMembers(), key, value)));
    COMPARE_FAULT(outcome, Kind::DataCorrupted, QString::fromLatin1(key));
    QVERIFY(!outcome.error().debugDescription.isEmpty());
    if (!description.isEmpty())
        QCOMPARE(outcome.error().debugDescription, description);
}

void RecordCodecsTest::shouldRepeatABadTimestampOnlyFromTheOwnCache_data()
{
    QTest::addColumn<QByteArray>("value");
    QTest::addColumn<QString>("repeated");
    const auto row = [](const char *name, const char *value, const QString &repeated) {
        QTest::newRow(name) << QByteArray(value) << repeated;
    };
    row("a word", R"("yesterday")", u"yesterday"_s);
    row("empty", R"("")", u""_s);
    row("a quote", R"("a\"b")", u"a\"b"_s);
    row("an escape", R"("\u00e9")", u"\u00e9"_s);
    row("a timestamp without a zone", R"("2026-03-05T08:00:00")", u"2026-03-05T08:00:00"_s);
}

void RecordCodecsTest::shouldRepeatABadTimestampOnlyFromTheOwnCache()
{
    QFETCH(QByteArray, value);
    QFETCH(QString, repeated);
    const QByteArray json = object(with(subscriptionMembers(), "created_at", value));
    const auto fromService = decodeJson<Subscription>(json, JsonSource::Service);
    COMPARE_FAULT(fromService, Kind::DataCorrupted, u"created_at"_s);
    QCOMPARE(fromService.error().debugDescription, u"Expected an ISO-8601 timestamp"_s);
    const auto fromCache = decodeJson<Subscription>(json, JsonSource::SnapshotCache);
    COMPARE_FAULT(fromCache, Kind::DataCorrupted, u"created_at"_s);
    QCOMPARE(
        fromCache.error().debugDescription, u"Expected an ISO-8601 timestamp, got \""_s + repeated + u'"');
    // Without a word about the source it is the service's.
    QVERIFY(decodeJson<Subscription>(json).error() == fromService.error());
}

void RecordCodecsTest::shouldIgnoreUnknownKeys()
{
    for (const Codec &record : codecs()) {
        Members members;
        int number = 0;
        for (const QByteArray value : {"1", "1e999999999", "null", "true", "\"text\"", "\"\\u00e9\"", "[]",
                 "{}", R"({"id":1,"name":[{"cost":null}]})", R"([1,[2,[3,{"a":{}}]]])"}) {
            members.append(Member{.key = "unknown" + QByteArray::number(++number), .value = value});
        }
        members.append(Member{.key = "", .value = "0"});
        members.append(Member{.key = "ID", .value = "0"});
        members.append(Member{.key = "Name", .value = "0"});
        members.append(Member{.key = "\\u0000", .value = "0"});
        const QByteArray document = object(record.members);
        QCOMPARE(record.recode(object(members + record.members)).value(), document);
        QCOMPARE(record.recode(object(record.members + members)).value(), document);

        Members mixed;
        for (qsizetype i = 0; i < std::max(members.size(), record.members.size()); ++i) {
            if (i < record.members.size())
                mixed.append(record.members[i]);
            if (i < members.size())
                mixed.append(members[i]);
        }
        QCOMPARE(record.recode(object(mixed)).value(), document);
    }
}

void RecordCodecsTest::shouldCountTheFirstOfTwoEqualKeys()
{
    const auto name = [](const QByteArray &json) { return decodeJson<Subscription>(json).value().name; };
    Members members = subscriptionMembers();
    members.append(Member{.key = "name", .value = R"("second")"});
    QCOMPARE(name(object(members)), u"Streaming"_s);
    members.prepend(Member{.key = "name", .value = R"("first")"});
    QCOMPARE(name(object(members)), u"first"_s);
    // However it is spelled.
    members.prepend(Member{.key = R"(n\u0061me)", .value = R"("escaped")"});
    QCOMPARE(name(object(members)), u"escaped"_s);

    Members nulls = subscriptionMembers();
    nulls.prepend(Member{.key = "category", .value = "null"});
    const auto decoded = decodeJson<Subscription>(object(nulls));
    QVERIFY(decoded);
    QVERIFY(!decoded->categoryID);

    nulls.prepend(Member{.key = "name", .value = "null"});
    COMPARE_FAULT(decodeJson<Subscription>(object(nulls)), Kind::ValueNotFound, u"name"_s);
}

void RecordCodecsTest::shouldNotLookIntoTheSecondOfTwoEqualKeys()
{
    for (const QByteArray value : {"null", "12", "[]", "{\"a\":[]}", "\"\"", "1e999999999"}) {
        Members members = subscriptionMembers();
        for (const Member &member : subscriptionMembers())
            members.append(Member{.key = member.key, .value = value});
        QCOMPARE(recode<Subscription>(object(members)).value(), object(subscriptionMembers()));
    }
}

void RecordCodecsTest::shouldReadKeysInAnyOrder_data()
{
    shouldWriteEveryKeyInTheOrderOfTheFields_data();
}

void RecordCodecsTest::shouldReadKeysInAnyOrder()
{
    QFETCH(std::size_t, codec);
    const Codec &record = codecs()[codec];
    const QByteArray document = object(record.members);
    Members members = record.members;
    std::ranges::reverse(members);
    QCOMPARE(record.recode(object(members)).value(), document);
    std::mt19937 random(20260305);
    for (int i = 0; i < 200; ++i) {
        std::ranges::shuffle(members, random);
        QCOMPARE(record.recode(object(members)).value(), document);
    }
}

void RecordCodecsTest::shouldReadEachRecordOfAListInAnOrderOfItsOwn()
{
    std::mt19937 random(20260305);
    QByteArrayList documents;
    for (int i = 0; i < 300; ++i) {
        Members members = i % 3 == 0 ? requiredOnly(subscriptionMembers()) : subscriptionMembers();
        members = with(members, "name", '"' + QByteArray::number(i) + '"');
        // Runs of equal order, as a service sends them, between odd ones.
        if (i % 50 > 25)
            std::ranges::shuffle(members, random);
        documents.append(object(members));
    }
    const auto decoded = decodeJson<QList<Subscription>>(list(documents));
    QVERIFY(decoded);
    QCOMPARE(decoded->size(), 300);
    for (int i = 0; i < 300; ++i) {
        const Members members = i % 3 == 0 ? requiredOnly(subscriptionMembers()) : subscriptionMembers();
        QCOMPARE(
            encodeJson(decoded->at(i)), object(with(members, "name", '"' + QByteArray::number(i) + '"')));
    }
}

void RecordCodecsTest::shouldReadEscapedKeys()
{
    for (const Codec &record : codecs()) {
        Members members;
        for (const Member &member : record.members) {
            QByteArray escaped;
            for (const char c : member.key)
                escaped += "\\u00" + QByteArray(1, c).toHex();
            members.append(Member{.key = escaped, .value = member.value});
        }
        QCOMPARE(record.recode(object(members)).value(), object(record.members));
    }
}

void RecordCodecsTest::shouldNotTakeAKeyForAnotherThatItBeginsWith()
{
    for (const Codec &record : codecs()) {
        Members members;
        for (const Member &member : record.members) {
            members.append(Member{.key = member.key + 's', .value = "[]"});
            members.append(Member{.key = member.key.chopped(1), .value = "[]"});
            members.append(Member{.key = ' ' + member.key, .value = "[]"});
            members.append(Member{.key = member.key + "\\u0000", .value = "[]"});
            members.append(Member{.key = member.key + "\\\"", .value = "[]"});
            members.append(Member{.key = member.key.toUpper(), .value = "[]"});
        }
        members.removeIf([&record](const Member &member) {
            return std::ranges::find(record.members, member.key, &Member::key) != record.members.end();
        });
        QCOMPARE(record.recode(object(members + record.members)).value(), object(record.members));
        COMPARE_FAULT(record.recode(object(members)), Kind::KeyNotFound,
            QString::fromLatin1(record.members.first().key));
    }
}

void RecordCodecsTest::shouldReadWhiteSpaceBetweenAllParts()
{
    const QByteArray space = " \t\r\n  ";
    QByteArrayList parts;
    for (const Member &member : createRequestMembers())
        parts.append(space + '"' + member.key + '"' + space + ':' + space + member.value + space);
    const QByteArray json = space + '{' + parts.join(',') + '}' + space;
    QCOMPARE(recode<CreateSubscriptionRequest>(json).value(), object(createRequestMembers()));
}

void RecordCodecsTest::shouldReadEscapesInValues_data()
{
    QTest::addColumn<QByteArray>("value");
    QTest::addColumn<QString>("expected");
    const auto row = [](const char *name, const QByteArray &value, const QString &expected) {
        QTest::newRow(name) << value << expected;
    };
    row("empty", R"("")", u""_s);
    row("every short escape", R"("\"\\\/\b\f\n\r\t")", u"\"\\/\b\f\n\r\t"_s);
    row("a letter", R"("\u0041")", u"A"_s);
    row("lower-case hexadecimal digits", R"("\u00e9")", u"\u00e9"_s);
    row("upper-case hexadecimal digits", R"("\u00E9")", u"\u00e9"_s);
    row("a null character", R"("a\u0000b")", QString(u"a\0b"_s));
    row("a surrogate pair", R"("\ud83d\ude00")", u"\U0001F600"_s);
    row("the last code point", R"("\udbff\udfff")", u"\U0010FFFF"_s);
    row("the first code point beyond the basic plane", R"("\ud800\udc00")", u"\U00010000"_s);
    row("the code points around the surrogates", R"("\ud7ff\ue000")", u"\xd7ff\xe000"_s);
    row("an escaped byte order mark before a letter", R"("\ufeffa")", u"\ufeffa"_s);
    row("an escaped byte order mark alone", R"("\ufeff")", u"\ufeff"_s);
    row("a noncharacter", R"("\uffff")", QString(QChar(0xFFFF)));
    row("a byte order mark before a letter", "\"\xEF\xBB\xBFz\"", u"\ufeffz"_s);
    row("two byte order marks", "\"\xEF\xBB\xBF\xEF\xBB\xBF\"", u"\ufeff\ufeff"_s);
    row("a byte order mark behind a letter", "\"z\xEF\xBB\xBF\"", u"z\ufeff"_s);
    row("a byte order mark before a text of two blocks", "\"\xEF\xBB\xBF" + QByteArray(80, 'z') + "\"",
        u"\ufeff"_s + QString(80, u'z'));
    row("letters as they are", "\"\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80\"", u"\u00e9\u20ac\U0001F600"_s);
    row("a Korean syllable whose first byte is that of surrogates", "\"\xED\x95\x9C\\n\"", u"\ud55c\n"_s);
    row("delete", "\"\x7F\"", u"\u007f"_s);
    row("brackets and colons in a text", R"("{\"a\":[1,2]}:,")", u"{\"a\":[1,2]}:,"_s);
    row("a backslash at the end", R"("\\")", u"\\"_s);
    row("three backslashes and a quote", R"("\\\\\\\"")", u"\\\\\\\""_s);
}

void RecordCodecsTest::shouldReadEscapesInValues()
{
    QFETCH(QByteArray, value);
    QFETCH(QString, expected);
    // A plain text, a text that records share, and an optional one.
    for (const QByteArray key : {"name", "status", "category_name"}) {
        const auto decoded = decodeJson<Subscription>(object(with(subscriptionMembers(), key, value)));
        QVERIFY(decoded);
        QCOMPARE(key == "name"    ? decoded->name
                : key == "status" ? decoded->status
                                  : decoded->categoryName.value(),
            expected);
    }
}

void RecordCodecsTest::shouldWriteTextsThatReadBack_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QByteArray>("written");
    const auto row = [](const char *name, const QString &text, const char *written) {
        QTest::newRow(name) << text << QByteArray(written);
    };
    row("empty", u""_s, R"("")");
    row("quote and backslash", u"\"\\"_s, R"("\"\\")");
    row("control characters", u"\n\t\u0001\u001f"_s, R"("\u000a\u0009\u0001\u001f")");
    row("a null character", QString(u"a\0b"_s), R"("a\u0000b")");
    row("solidus", u"a/b"_s, R"("a/b")");
    row("letters beyond ASCII", u"\u00e9\u20ac"_s, "\"\xC3\xA9\xE2\x82\xAC\"");
    row("astral character", u"\U0001F600"_s, "\"\xF0\x9F\x98\x80\"");
    row("byte order mark", u"\ufeffa"_s,
        "\"\xEF\xBB\xBF"
        "a\"");
    row("line separator", u"\u2028"_s, "\"\xE2\x80\xA8\"");
    row("delete", u"\u007f"_s, "\"\x7F\"");
}

void RecordCodecsTest::shouldWriteTextsThatReadBack()
{
    QFETCH(QString, text);
    QFETCH(QByteArray, written);
    CreateSubscriptionRequest request;
    request.name = text;
    const QByteArray json = encodeJson(request);
    QCOMPARE(json, "{\"name\":" + written + ",\"cost\":0,\"billing_cycle\":\"\"}");
    QCOMPARE(decodeJson<CreateSubscriptionRequest>(json).value().name, text);
}

void RecordCodecsTest::shouldReportTheFaultOfTheEarliestField_data()
{
    QTest::addColumn<QByteArray>("json");
    QTest::addColumn<Kind>("kind");
    QTest::addColumn<QString>("where");
    const Members good = subscriptionMembers();
    const auto reversed = [](Members members) {
        std::ranges::reverse(members);
        return members;
    };
    const auto both = [&reversed](const char *name, const Members &members, Kind kind, const QString &where) {
        QTest::addRow("%s", name) << object(members) << kind << where;
        QTest::addRow("%s, keys backwards", name) << object(reversed(members)) << kind << where;
    };
    both("a wrong type before a bad content", with(with(good, "name", "1"), "created_at", R"("x")"),
        Kind::TypeMismatch, u"name"_s);
    both("a bad content before a wrong type", with(with(good, "id", R"("x")"), "status", "1"),
        Kind::DataCorrupted, u"id"_s);
    both("a missing key before a wrong type", with(without(good, "user_id"), "name", "1"), Kind::KeyNotFound,
        u"user_id"_s);
    both("a wrong type before a missing key", with(without(good, "updated_at"), "name", "1"),
        Kind::TypeMismatch, u"name"_s);
    both("a null before a missing key", with(without(good, "status"), "cost", "null"), Kind::ValueNotFound,
        u"cost"_s);
    both("the first of two missing keys", without(without(good, "status"), "currency"), Kind::KeyNotFound,
        u"currency"_s);
    both("an optional field before a required one",
        with(with(good, "converted_cost", R"("1")"), "billing_cycle", "null"), Kind::TypeMismatch,
        u"converted_cost"_s);
    Members everything = good;
    for (const Member &member : good)
        everything = with(everything, member.key, member.type == JsonType::Array ? "{}" : "[]");
    both("all fields wrong", everything, Kind::TypeMismatch, u"id"_s);
    Members allButTheFirst = everything;
    allButTheFirst.first() = good.first();
    both("all fields but the first wrong", allButTheFirst, Kind::TypeMismatch, u"user_id"_s);
}

void RecordCodecsTest::shouldReportTheFaultOfTheEarliestField()
{
    QFETCH(QByteArray, json);
    QFETCH(Kind, kind);
    QFETCH(QString, where);
    COMPARE_FAULT(decodeJson<Subscription>(json), kind, where);
}

void RecordCodecsTest::shouldSayWhereInAListTheFaultLies()
{
    const QByteArray good = object(subscriptionMembers());
    const QByteArray bad = object(with(subscriptionMembers(), "cost", R"("9.99")"));
    const auto outcome = decodeJson<QList<Subscription>>(list({good, good, good, bad, good, bad}));
    COMPARE_FAULT(outcome, Kind::TypeMismatch, u"[3].cost"_s);
    QVERIFY(outcome.error().codingPath == path({qsizetype{3}, u"cost"_s}));

    COMPARE_FAULT(decodeJson<QList<Subscription>>(list({"null"})), Kind::ValueNotFound, u"[0]"_s);
    COMPARE_FAULT(decodeJson<QList<Subscription>>(list({good, "[]"})), Kind::TypeMismatch, u"[1]"_s);
    COMPARE_FAULT(decodeJson<QList<Subscription>>(list({good, "{}"})), Kind::KeyNotFound, u"[1].id"_s);
    COMPARE_FAULT(decodeJson<QList<Subscription>>(good), Kind::TypeMismatch, QString());
    COMPARE_FAULT(decodeJson<QList<SubscriptionTemplate>>(list({"{}"})), Kind::KeyNotFound, u"[0].id"_s);
}

void RecordCodecsTest::shouldSayWhereInANestedRecordTheFaultLies()
{
    const QByteArray badCost = object(with(subscriptionMembers(), "cost", R"("9.99")"));
    COMPARE_FAULT(decodeJson<SubscriptionMutationResponse>(
                      object(with(mutationResponseMembers(), "subscription", badCost))),
        Kind::TypeMismatch, u"subscription.cost"_s);

    const QByteArray noEmail = object(without(userProfileMembers(), "email"));
    const auto outcome
        = decodeJson<AuthenticationResponse>(object(with(authenticationResponseMembers(), "user", noEmail)));
    COMPARE_FAULT(outcome, Kind::KeyNotFound, u"user.email"_s);
    QVERIFY(outcome.error().codingPath == path({u"user"_s, u"email"_s}));

    // The outer record's own earlier fault goes first, wherever it stands.
    Members members = without(with(mutationResponseMembers(), "subscription", badCost), "message");
    COMPARE_FAULT(decodeJson<SubscriptionMutationResponse>(object(members)), Kind::KeyNotFound, u"message"_s);
    members.append(Member{.key = "message", .value = "1"});
    COMPARE_FAULT(
        decodeJson<SubscriptionMutationResponse>(object(members)), Kind::TypeMismatch, u"message"_s);
}

void RecordCodecsTest::shouldSayWhichBillingCycleOfATemplateIsWrong()
{
    const auto outcome = [](const QByteArray &cycles) {
        return decodeJson<SubscriptionTemplate>(
            object(with(subscriptionTemplateMembers(), "available_billing_cycles", cycles)));
    };
    COMPARE_FAULT(outcome(R"(["monthly",12])"), Kind::TypeMismatch, u"available_billing_cycles[1]"_s);
    COMPARE_FAULT(outcome(R"([null])"), Kind::ValueNotFound, u"available_billing_cycles[0]"_s);
    COMPARE_FAULT(outcome(R"(["a","b",["c"]])"), Kind::TypeMismatch, u"available_billing_cycles[2]"_s);
}

void RecordCodecsTest::shouldDecodeLists()
{
    QCOMPARE(decodeJson<QList<Subscription>>("[]").value().size(), 0);
    QCOMPARE(decodeJson<QList<SubscriptionTemplate>>(" [ ] ").value().size(), 0);
    const auto two = decodeJson<QList<Subscription>>(
        list({object(subscriptionMembers()), object(requiredOnly(subscriptionMembers()))}));
    QVERIFY(two);
    QCOMPARE(two->size(), 2);
    QCOMPARE(encodeJson(two->at(0)), object(subscriptionMembers()));
    QCOMPARE(encodeJson(two->at(1)), object(requiredOnly(subscriptionMembers())));
    const auto templates
        = decodeJson<QList<SubscriptionTemplate>>(list({object(subscriptionTemplateMembers())}));
    QVERIFY(templates);
    QCOMPARE(encodeJson(templates->at(0)), object(subscriptionTemplateMembers()));
}

void RecordCodecsTest::shouldPrintAPath_data()
{
    QTest::addColumn<DecodingError>("error");
    QTest::addColumn<QString>("expected");
    const auto row
        = [](const char *name, std::vector<DecodingError::PathElement> codingPath, const QString &expected) {
              const DecodingError error{
                  .kind = Kind::DataCorrupted, .codingPath = std::move(codingPath), .debugDescription = {}};
              QTest::newRow(name) << error << expected;
          };
    row("the root", {}, u""_s);
    row("a key", {u"cost"_s}, u"cost"_s);
    row("an index", {qsizetype{3}}, u"[3]"_s);
    row("a key of an element", {qsizetype{3}, u"cost"_s}, u"[3].cost"_s);
    row("a key of an element of a key", {u"subscriptions"_s, qsizetype{3}, u"cost"_s},
        u"subscriptions[3].cost"_s);
    row("nested keys", {u"user"_s, u"email"_s}, u"user.email"_s);
    row("nested indexes", {qsizetype{0}, qsizetype{12}}, u"[0][12]"_s);
}

void RecordCodecsTest::shouldPrintAPath()
{
    QFETCH(DecodingError, error);
    QFETCH(QString, expected);
    QCOMPARE(error.pathText(), expected);
}

void RecordCodecsTest::shouldDescribeAFaultToThePerson_data()
{
    QTest::addColumn<QByteArray>("json");
    QTest::addColumn<QString>("expected");
    const QString missing = u"The data couldn\u2019t be read because it is missing."_s;
    const QString wrong = u"The data couldn\u2019t be read because it isn\u2019t in the correct format."_s;
    const Members good = subscriptionMembers();
    QTest::newRow("a missing key") << object(without(good, "cost")) << missing;
    QTest::newRow("a null value") << object(with(good, "cost", "null")) << missing;
    QTest::newRow("a wrong type") << object(with(good, "cost", "true")) << wrong;
    QTest::newRow("a bad content") << object(with(good, "id", R"("x")")) << wrong;
    QTest::newRow("broken JSON") << QByteArray("{") << wrong;
}

void RecordCodecsTest::shouldDescribeAFaultToThePerson()
{
    QFETCH(QByteArray, json);
    QFETCH(QString, expected);
    const auto outcome = decodeJson<Subscription>(json);
    QVERIFY(!outcome);
    QCOMPARE(outcome.error().errorDescription(), expected);
}

ORBITLEDGE_TEST_MAIN(RecordCodecsTest)
#include "RecordCodecsTest.moc"
