#include "bench/SampleData.h"

#include "model/RecordCodecs.h"

#include <array>
#include <random>

namespace orbitledge::bench {

using namespace Qt::StringLiterals;

namespace {

QUuid uuid(std::mt19937_64 &random)
{
    const quint64 high = random();
    const quint64 low = random();
    const auto byte = [low](unsigned i) { return static_cast<uchar>(low >> (i * 8U)); };
    return QUuid(static_cast<uint>(high), static_cast<ushort>(high >> 32U), static_cast<ushort>(high >> 48U),
        byte(0), byte(1), byte(2), byte(3), byte(4), byte(5), byte(6), byte(7));
}

template <std::size_t N> QString pick(const std::array<QLatin1StringView, N> &texts, quint64 number)
{
    return texts[number % N];
}

} // namespace

QList<Subscription> sampleSubscriptions(qsizetype count)
{
    constexpr std::array cycles{"monthly"_L1, "monthly"_L1, "yearly"_L1, "quarterly"_L1, "weekly"_L1};
    constexpr std::array categories{
        "Streaming"_L1, "Music"_L1, "Software"_L1, "News and magazines"_L1, "Health"_L1, "Storage"_L1};
    constexpr std::array words{"Northlight"_L1, "Tidewater"_L1, "Paper"_L1, "Harbour"_L1, "Compiler"_L1,
        "Cloud"_L1, "Old"_L1, "Meadow"_L1};

    std::mt19937_64 random(20260318);
    const QUuid user = uuid(random);
    std::array<QUuid, 6> categoryIds;
    for (QUuid &id : categoryIds)
        id = uuid(random);
    const auto created = *Instant::fromText("2024-11-05T08:15:30Z");

    QList<Subscription> subscriptions;
    subscriptions.reserve(count);
    for (qsizetype i = 0; i < count; ++i) {
        const quint64 r = random();
        const bool foreign = r % 5 == 0;
        const bool cancelled = (r >> 8U) % 10 == 0;
        const qint64 cents = static_cast<qint64>((r >> 16U) % 20000) + 99;
        const qint64 renewal = today.daysSinceEpoch() - 5 + static_cast<qint64>((r >> 32U) % 360);
        const quint64 category = (r >> 24U) % categoryIds.size();
        Subscription &subscription = subscriptions.emplaceBack();
        subscription.id = uuid(random);
        subscription.userID = user;
        subscription.name = u"%1 %2 %3"_s.arg(pick(words, r >> 40U), pick(categories, r >> 44U)).arg(i);
        subscription.cost = *Decimal::fromText(std::to_string(cents) + "e-2");
        subscription.currency = foreign ? u"USD"_s : u"EUR"_s;
        subscription.convertedCost = *Decimal::fromText(std::to_string(cents * 9187) + "e-6");
        subscription.convertedCurrency = u"EUR"_s;
        subscription.billingCycle = pick(cycles, r >> 48U);
        subscription.nextBillingDate = LocalDate::fromDaysSinceEpoch(renewal);
        subscription.categoryID = categoryIds[category];
        subscription.categoryName = pick(categories, category);
        subscription.status = cancelled ? u"cancelled"_s : u"active"_s;
        subscription.templateID = uuid(random);
        subscription.logoURL = QUrl(u"https://cdn.orbitledge.example/logos/%1.png"_s.arg(r));
        if (cancelled) {
            subscription.cancelledAt = created;
            subscription.cancellationDate = subscription.nextBillingDate;
        }
        subscription.trialEndDate = LocalDate::fromDaysSinceEpoch(renewal - 30);
        subscription.trialNotificationDays = 3;
        subscription.trialNotificationSent = (r >> 52U) % 2 == 0;
        subscription.createdAt = created;
        subscription.updatedAt = Instant::fromSecondsSinceEpoch(1760000000 + i);
    }
    return subscriptions;
}

QByteArray sampleJson(qsizetype count)
{
    QByteArray json("[");
    for (const Subscription &subscription : sampleSubscriptions(count)) {
        if (json.size() > 1)
            json += ',';
        json += encodeJson(subscription);
    }
    return json + ']';
}

CacheSnapshot sampleSnapshot(qsizetype count)
{
    CacheSnapshot snapshot;
    snapshot.profile.id = QUuid(u"{6f1c2c1e-9f0b-4a6e-8b57-1d4e6a7f9b10}"_s);
    snapshot.profile.email = u"ada@example.com"_s;
    snapshot.profile.firstName = u"Ada"_s;
    snapshot.profile.lastName = u"Example"_s;
    snapshot.profile.planType = u"free"_s;
    snapshot.profile.onboardingStatus = u"completed"_s;
    snapshot.profile.defaultCurrency = u"EUR"_s;
    snapshot.subscriptions = sampleSubscriptions(count);
    snapshot.fetchedAt = *Instant::fromText("2026-03-18T09:00:00Z");
    return snapshot;
}

} // namespace orbitledge::bench
