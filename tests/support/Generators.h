#pragma once

#include "model/RecordCodecs.h"
#include "model/WebAddress.h"

#include <rapidcheck.h>

#include <ostream>
#include <string>
#include <vector>

// Arbitrary values of the model for property tests: `rc::check("…", [](const Subscription &s) { … })`.
// Every value is one that a decoder can produce, so it must survive being encoded and decoded.

namespace orbitledge::testing {

/// Any Unicode scalar value: all of ASCII with its control characters, the edges, and the astral planes.
inline rc::Gen<char32_t> unicodeScalar()
{
    const auto range = [](int first, int last) {
        return rc::gen::map(
            rc::gen::inRange<int>(first, last + 1), [](int scalar) { return static_cast<char32_t>(scalar); });
    };
    return rc::gen::weightedOneOf<char32_t>({
        {8, range(0x20, 0x7E)},
        {1, range(0x00, 0x1F)},
        {1, rc::gen::element<char32_t>(0x00, 0x22, 0x5C, 0x2F, 0x7F, 0x2028, 0xFEFF, 0xFFFD, 0xFFFF)},
        {2, range(0x80, 0x7FF)},
        {1, range(0x800, 0xD7FF)},
        {1, range(0xE000, 0xFFFF)},
        {2, range(0x10000, 0x10FFFF)},
    });
}

inline rc::Gen<QString> text()
{
    return rc::gen::map(
        rc::gen::container<std::vector<char32_t>>(unicodeScalar()), [](const std::vector<char32_t> &scalars) {
            QString joined; // one by one: QString::fromUcs4 drops a U+FEFF at the start
            for (const char32_t scalar : scalars)
                joined += QChar::fromUcs4(scalar);
            return joined;
        });
}

/// Digits of which the first and the last are not 0, so that each of them counts.
inline rc::Gen<std::string> significantDigits(int longest)
{
    return rc::gen::map(rc::gen::mapcat(rc::gen::inRange(1, longest + 1),
                            [](int length) {
                                return rc::gen::container<std::string>(
                                    static_cast<std::size_t>(length), rc::gen::inRange<char>('0', '9' + 1));
                            }),
        [](std::string digits) {
            if (digits.front() == '0')
                digits.front() = '1';
            if (digits.back() == '0')
                digits.back() = '1';
            return digits;
        });
}

inline Decimal decimalOf(bool negative, const std::string &digits, int exponent)
{
    return Decimal::fromText((negative ? "-" : "") + digits + 'e' + std::to_string(exponent)).value();
}

/// What prices look like: up to seven digits, of which up to three stand behind the point.
inline rc::Gen<Decimal> price()
{
    return rc::gen::map(rc::gen::tuple(rc::gen::inRange(0, 10'000'000), rc::gen::inRange(0, 4)),
        [](const std::tuple<int, int> &parts) {
            return decimalOf(false, std::to_string(std::get<0>(parts)), -std::get<1>(parts));
        });
}

/// Any decimal that is read exactly: up to 38 digits, every exponent, both signs, zero, and the largest.
inline rc::Gen<Decimal> decimal()
{
    const auto any = rc::gen::map(
        rc::gen::tuple(rc::gen::arbitrary<bool>(), significantDigits(38), rc::gen::inRange(-128, 128)),
        [](const std::tuple<bool, std::string, int> &parts) {
            return decimalOf(std::get<0>(parts), std::get<1>(parts), std::get<2>(parts));
        });
    const auto ofManyDigits
        = rc::gen::map(rc::gen::tuple(rc::gen::arbitrary<bool>(),
                           rc::gen::container<std::string>(38, rc::gen::inRange<char>('1', '9' + 1)),
                           rc::gen::inRange(-128, 128)),
            [](const std::tuple<bool, std::string, int> &parts) {
                return decimalOf(std::get<0>(parts), std::get<1>(parts), std::get<2>(parts));
            });
    const std::string largest = "340282366920938463463374607431768211455";
    const auto edges = rc::gen::element(Decimal(), decimalOf(false, "1", -128), decimalOf(true, "1", -128),
        decimalOf(false, "1", 127), decimalOf(false, largest, 0), decimalOf(true, largest, -128),
        decimalOf(false, largest, 127), decimalOf(true, largest, 127));
    return rc::gen::weightedOneOf<Decimal>({{4, price()}, {4, any}, {2, ofManyDigits}, {1, edges}});
}

/// Any day of the years 1 to 9999, often one near the end of a month.
inline rc::Gen<LocalDate> localDate()
{
    const qint64 first = LocalDate{1, 1, 1}.daysSinceEpoch();
    const qint64 last = LocalDate{9999, 12, 31}.daysSinceEpoch();
    const auto any = rc::gen::map(rc::gen::inRange<qint64>(first, last + 1), &LocalDate::fromDaysSinceEpoch);
    const auto recent
        = rc::gen::map(rc::gen::inRange<qint64>(18'000, 24'000), &LocalDate::fromDaysSinceEpoch);
    const auto monthEnd
        = rc::gen::map(rc::gen::tuple(rc::gen::inRange<qint64>(1, 10'000), rc::gen::inRange<qint64>(1, 13)),
            [](const std::tuple<qint64, qint64> &parts) {
                LocalDate date{std::get<0>(parts), std::get<1>(parts), 31};
                while (!date.isValid())
                    --date.day;
                return date;
            });
    return rc::gen::weightedOneOf<LocalDate>({{2, any}, {3, recent}, {2, monthEnd}});
}

/// Any instant of the years 1 to 9999, to the millisecond.
inline rc::Gen<Instant> instant()
{
    constexpr qint64 millisecondsPerDay = 86'400'000;
    const qint64 first = LocalDate{1, 1, 1}.daysSinceEpoch() * millisecondsPerDay;
    const qint64 end = LocalDate{10'000, 1, 1}.daysSinceEpoch() * millisecondsPerDay;
    const qint64 year = 365 * millisecondsPerDay;
    return rc::gen::map(rc::gen::weightedOneOf<qint64>({
                            {2, rc::gen::inRange<qint64>(first, end)},
                            {3, rc::gen::inRange<qint64>(50 * year, 60 * year)},
                            {1, rc::gen::inRange<qint64>(-2000, 2000)},
                            {1, rc::gen::elementOf(std::vector<qint64>{first, end - 1})},
                        }),
        &Instant::fromMillisecondsSinceEpoch);
}

/// As records hold them after they were written once.
inline rc::Gen<Instant> instantOfWholeSecond()
{
    return rc::gen::map(instant(), [](Instant value) {
        const qint64 milliseconds = value.millisecondsSinceEpoch();
        const qint64 beyond = (milliseconds % 1000 + 1000) % 1000;
        return Instant::fromMillisecondsSinceEpoch(milliseconds - beyond);
    });
}

inline rc::Gen<QUuid> uuid()
{
    return rc::gen::map(rc::gen::container<std::vector<quint8>>(16, rc::gen::arbitrary<quint8>()),
        [](const std::vector<quint8> &bytes) {
            return QUuid::fromRfc4122(QByteArrayView(bytes.data(), static_cast<qsizetype>(bytes.size())));
        });
}

/// An absolute address with parts that need encoding and parts that are encoded.
inline rc::Gen<QUrl> webAddress()
{
    const auto host = rc::gen::element<std::string>("example.com", "EXAMPLE.com", "localhost", "127.0.0.1",
        "[::1]", "b\u00fccher.example", "a.b.c.d.example", "user@example.com", "user:word@example.com");
    const auto scheme = rc::gen::element<std::string>("https", "http", "HTTPS", "ftp", "custom+scheme");
    const auto port = rc::gen::oneOf(rc::gen::just(std::string()),
        rc::gen::map(rc::gen::inRange(1, 65536), [](int number) { return ':' + std::to_string(number); }));
    const auto part
        = rc::gen::map(rc::gen::container<std::vector<std::string>>(rc::gen::element<std::string>("a", "B",
                           "7", "/", "-", ".", "_", "~", "%20", "%2F", "%", "%zz", " ", "\u00e9", "\u20ac",
                           "\U0001F600", "\"", "<", "{", "|", "\\", "^", "`", "+", "=", "&", ";", ",", ":",
                           "@", "!", "$", "'", "(", ")", "*", "[", "]", "\t")),
            [](const std::vector<std::string> &pieces) {
                std::string joined;
                for (const std::string &piece : pieces)
                    joined += piece;
                return joined;
            });
    const auto optionalPart = [&part](const char *prefix) {
        return rc::gen::oneOf(rc::gen::just(std::string()),
            rc::gen::map(part, [prefix](const std::string &rest) { return prefix + rest; }));
    };
    const auto whole = rc::gen::map(
        rc::gen::tuple(scheme, host, port, optionalPart("/"), optionalPart("?"), optionalPart("#")),
        [](const auto &parts) {
            const std::string written = std::get<0>(parts) + "://" + std::get<1>(parts) + std::get<2>(parts)
                + std::get<3>(parts) + std::get<4>(parts) + std::get<5>(parts);
            return absoluteUrlFromText(QString::fromStdString(written));
        });
    const auto valid
        = rc::gen::suchThat(whole, [](const std::optional<QUrl> &url) { return url.has_value(); });
    return rc::gen::map(valid, [](const std::optional<QUrl> &url) { return *url; });
}

/// Absent in about a third of the cases.
template <typename T> rc::Gen<std::optional<T>> optionalOf(rc::Gen<T> generator)
{
    return rc::gen::weightedOneOf<std::optional<T>>({
        {1, rc::gen::just(std::optional<T>())},
        {2, rc::gen::map(std::move(generator), [](T value) { return std::optional<T>(std::move(value)); })},
    });
}

inline rc::Gen<QString> currencyCode()
{
    return rc::gen::map(rc::gen::element<std::string>("EUR", "USD", "JPY", "GBP", "CHF", "KWD", "XYZ"),
        &QString::fromStdString);
}

inline rc::Gen<QString> billingCycle()
{
    return rc::gen::map(
        rc::gen::element<std::string>("weekly", "monthly", "quarterly", "yearly", "Monthly", ""),
        &QString::fromStdString);
}

inline rc::Gen<qint64> wholeNumber()
{
    return rc::gen::weightedOneOf<qint64>({
        {3, rc::gen::inRange<qint64>(0, 100)},
        {1, rc::gen::arbitrary<qint64>()},
        {1, rc::gen::element(std::numeric_limits<qint64>::min(), std::numeric_limits<qint64>::max())},
    });
}

inline rc::Gen<Subscription> subscription()
{
    return rc::gen::exec([] {
        Subscription record;
        record.id = *uuid();
        record.userID = *uuid();
        record.name = *text();
        record.cost = *decimal();
        record.currency = *currencyCode();
        record.convertedCost = *optionalOf(decimal());
        record.convertedCurrency = *optionalOf(currencyCode());
        record.billingCycle = *billingCycle();
        record.nextBillingDate = *localDate();
        record.categoryID = *optionalOf(uuid());
        record.categoryName = *optionalOf(text());
        record.status = *text();
        record.templateID = *optionalOf(uuid());
        record.logoURL = *optionalOf(webAddress());
        record.cancelledAt = *optionalOf(instantOfWholeSecond());
        record.cancellationDate = *optionalOf(localDate());
        record.trialEndDate = *optionalOf(localDate());
        record.trialNotificationDays = *optionalOf(wholeNumber());
        record.trialNotificationSent = *optionalOf(rc::gen::arbitrary<bool>());
        record.createdAt = *instantOfWholeSecond();
        record.updatedAt = *instantOfWholeSecond();
        return record;
    });
}

inline rc::Gen<UserProfile> userProfile()
{
    return rc::gen::exec([] {
        UserProfile record;
        record.id = *uuid();
        record.email = *text();
        record.firstName = *text();
        record.lastName = *text();
        record.isVerified = *rc::gen::arbitrary<bool>();
        record.planType = *text();
        record.stripeSubscriptionStatus = *optionalOf(text());
        record.planExpiresAt = *optionalOf(instantOfWholeSecond());
        record.planCancelledAt = *optionalOf(instantOfWholeSecond());
        record.trialStartDate = *optionalOf(instantOfWholeSecond());
        record.trialEndDate = *optionalOf(instantOfWholeSecond());
        record.cancelAtTrialEnd = *rc::gen::arbitrary<bool>();
        record.onboardingStatus = *text();
        record.defaultCurrency = *currencyCode();
        record.monthlyBudget = *optionalOf(decimal());
        record.createdAt = *instantOfWholeSecond();
        record.updatedAt = *instantOfWholeSecond();
        return record;
    });
}

inline rc::Gen<SubscriptionTemplate> subscriptionTemplate()
{
    return rc::gen::exec([] {
        SubscriptionTemplate record;
        record.id = *uuid();
        record.name = *text();
        record.companyName = *optionalOf(text());
        record.logoURL = *optionalOf(webAddress());
        record.icon = *optionalOf(text());
        record.colorScheme = *optionalOf(text());
        record.websiteURL = *optionalOf(webAddress());
        record.description = *optionalOf(text());
        record.category = *optionalOf(text());
        record.typicalMonthlyCost = *optionalOf(decimal());
        record.typicalAnnualCost = *optionalOf(decimal());
        record.annualDiscountPercentage = *optionalOf(decimal());
        record.hasFreeTier = *optionalOf(rc::gen::arbitrary<bool>());
        const auto cycles = *optionalOf(rc::gen::container<std::vector<QString>>(text()));
        if (cycles)
            record.availableBillingCycles = QList<QString>(cycles->begin(), cycles->end());
        record.createdAt = *instantOfWholeSecond();
        record.updatedAt = *instantOfWholeSecond();
        record.usageCount = *optionalOf(wholeNumber());
        return record;
    });
}

inline rc::Gen<CreateSubscriptionRequest> createSubscriptionRequest()
{
    return rc::gen::exec([] {
        CreateSubscriptionRequest record;
        record.name = *text();
        record.cost = *decimal();
        record.currency = *optionalOf(currencyCode());
        record.billingCycle = *billingCycle();
        record.nextBillingDate = *optionalOf(localDate());
        record.categoryID = *optionalOf(uuid());
        record.trialEndDate = *optionalOf(localDate());
        record.trialNotificationDays = *optionalOf(wholeNumber());
        return record;
    });
}

inline rc::Gen<SubscriptionMutationResponse> subscriptionMutationResponse()
{
    return rc::gen::exec([] {
        SubscriptionMutationResponse record;
        record.message = *text();
        record.subscription = *subscription();
        return record;
    });
}

inline rc::Gen<AuthenticationResponse> authenticationResponse()
{
    return rc::gen::exec([] { return AuthenticationResponse{.user = *userProfile()}; });
}

} // namespace orbitledge::testing

namespace rc {

#define ORBITLEDGE_ARBITRARY(Type, generator)                                                                \
    template <> struct Arbitrary<Type> {                                                                     \
        static Gen<Type> arbitrary()                                                                         \
        {                                                                                                    \
            return orbitledge::testing::generator();                                                         \
        }                                                                                                    \
    };

ORBITLEDGE_ARBITRARY(QString, text)
ORBITLEDGE_ARBITRARY(QUuid, uuid)
ORBITLEDGE_ARBITRARY(QUrl, webAddress)
ORBITLEDGE_ARBITRARY(orbitledge::Decimal, decimal)
ORBITLEDGE_ARBITRARY(orbitledge::LocalDate, localDate)
ORBITLEDGE_ARBITRARY(orbitledge::Instant, instant)
ORBITLEDGE_ARBITRARY(orbitledge::Subscription, subscription)
ORBITLEDGE_ARBITRARY(orbitledge::UserProfile, userProfile)
ORBITLEDGE_ARBITRARY(orbitledge::SubscriptionTemplate, subscriptionTemplate)
ORBITLEDGE_ARBITRARY(orbitledge::CreateSubscriptionRequest, createSubscriptionRequest)
ORBITLEDGE_ARBITRARY(orbitledge::SubscriptionMutationResponse, subscriptionMutationResponse)
ORBITLEDGE_ARBITRARY(orbitledge::AuthenticationResponse, authenticationResponse)

#undef ORBITLEDGE_ARBITRARY

} // namespace rc

// Found by rapidcheck, so that a counterexample shows its values.

inline void showValue(const QString &value, std::ostream &stream)
{
    stream << '"' << value.toStdString() << '"';
}

inline void showValue(const QUuid &value, std::ostream &stream)
{
    stream << value.toString().toStdString();
}

inline void showValue(const QUrl &value, std::ostream &stream)
{
    stream << value.toEncoded().toStdString();
}

namespace orbitledge {

inline void showValue(const Decimal &value, std::ostream &stream)
{
    stream << value.toAscii();
}

inline void showValue(const LocalDate &value, std::ostream &stream)
{
    stream << value.text().toStdString();
}

inline void showValue(const Instant &value, std::ostream &stream)
{
    stream << value.text().toStdString() << " (" << value.millisecondsSinceEpoch() << " ms)";
}

#define ORBITLEDGE_SHOW(Record)                                                                              \
    inline void showValue(const Record &record, std::ostream &stream)                                        \
    {                                                                                                        \
        stream << encodeJson(record).toStdString();                                                          \
    }

ORBITLEDGE_SHOW(Subscription)
ORBITLEDGE_SHOW(UserProfile)
ORBITLEDGE_SHOW(SubscriptionTemplate)
ORBITLEDGE_SHOW(CreateSubscriptionRequest)
ORBITLEDGE_SHOW(SubscriptionMutationResponse)
ORBITLEDGE_SHOW(AuthenticationResponse)

#undef ORBITLEDGE_SHOW

} // namespace orbitledge
