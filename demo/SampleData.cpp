#include "demo/SampleData.h"

#include "demo/Categories.h"

#include <array>

using namespace Qt::StringLiterals;

namespace orbitledge::demo {

namespace {

enum class Then { Nothing, Cancel, Pause };

struct Sample {
    QStringView name;
    std::string_view cost;
    QLatin1StringView currency;
    BillingCycle cycle = BillingCycle::Monthly;
    qint64 daysFromToday = 0;
    QLatin1StringView category;
    std::optional<qint64> trialEndsInDays = std::nullopt;
    Then then = Then::Nothing;
};

constexpr std::array samples{
    Sample{u"Quiet Meadow", "12.50", "EUR"_L1, BillingCycle::Monthly, -1, "Health"_L1},
    Sample{u"Northlight Video", "15.99", "EUR"_L1, BillingCycle::Monthly, 0, "Streaming"_L1},
    Sample{u"Tidewater Music", "10.99", "EUR"_L1, BillingCycle::Monthly, 1, "Music"_L1},
    Sample{u"Paper Post", "7.50", "EUR"_L1, BillingCycle::Weekly, 3, "News"_L1},
    Sample{u"Arcade Cellar", "9.99", "USD"_L1, BillingCycle::Monthly, 4, "Games"_L1, 4},
    Sample{u"Kettle & Bean", "18", "EUR"_L1, BillingCycle::Monthly, 6, "Food"_L1},
    Sample{u"Cloud Attic", "2.99", "USD"_L1, BillingCycle::Monthly, 9, "Storage"_L1},
    Sample{u"日本語の庭", "1280", "JPY"_L1, BillingCycle::Monthly, 13, "Education"_L1},
    Sample{u"Bolt Mobile", "19.90", "EUR"_L1, BillingCycle::Monthly, 17, "Phone"_L1},
    Sample{u"The Complete and Unabridged Society of Friends of Very Long Subscription Names", "4.20",
        "GBP"_L1, BillingCycle::Monthly, 24, "Reading"_L1},
    Sample{u"Harbour Gym", "39", "EUR"_L1, BillingCycle::Monthly, 33, {}},
    Sample{u"Boulangerie à Vélo", "12", "CHF"_L1, BillingCycle::Weekly, 5, "Food"_L1},
    Sample{u"Lighthouse Insurance", "89.40", "EUR"_L1, BillingCycle::Quarterly, 41, "Insurance"_L1},
    Sample{u"Compiler Weekly", "120", "USD"_L1, BillingCycle::Yearly, 160, "Education"_L1},
    Sample{u"Old Gazette", "4", "EUR"_L1, BillingCycle::Monthly, 10, "News"_L1, {}, Then::Cancel},
    Sample{u"Puzzle Club", "3.49", "EUR"_L1, BillingCycle::Monthly, 15, "Games"_L1, {}, Then::Pause},
};

SubscriptionDraft draftOf(const Sample &sample, const LocalDate &today)
{
    SubscriptionDraft draft;
    draft.name = sample.name.toString();
    draft.cost = Decimal::fromText(sample.cost).value_or(Decimal());
    draft.currency = sample.currency;
    draft.cycle = sample.cycle;
    draft.nextBillingDate = addDays(today, sample.daysFromToday);
    if (!sample.category.isEmpty())
        draft.categoryID = categoryId(sample.category);
    if (sample.trialEndsInDays) {
        draft.trialEndDate = addDays(today, *sample.trialEndsInDays);
        draft.trialNotificationDays = 2;
    }
    return draft;
}

tl::expected<UserProfile, QString> findOrMakeSample(Accounts &accounts, Subscriptions &subscriptions)
{
    if (const auto existing = accounts.idOf(sampleEmail))
        return accounts.find(*existing).value_or(UserProfile());
    const auto id = accounts.add({.email = sampleEmail,
        .password = samplePassword,
        .firstName = u"Ada"_s,
        .lastName = u"Example"_s,
        .currency = u"EUR"_s});
    if (!id)
        return tl::unexpected(id.error());
    UserProfile owner = accounts.find(*id).value_or(UserProfile());
    for (const Sample &sample : samples) {
        const QUuid created = subscriptions.create(owner, draftOf(sample, subscriptions.today())).id;
        if (sample.then == Then::Cancel)
            (void)subscriptions.cancel(owner, created);
        else if (sample.then == Then::Pause)
            subscriptions.setStatus(owner, created, u"paused"_s);
    }
    return owner;
}

} // namespace

tl::expected<UserProfile, QString> ensureSampleAccount(
    Database &database, Accounts &accounts, Subscriptions &subscriptions)
{
    // All or nothing: a start that is interrupted must not leave half a sample.
    return database.write([&] { return findOrMakeSample(accounts, subscriptions); });
}

void populate(Subscriptions &subscriptions, const UserProfile &owner, qint64 count)
{
    static constexpr std::array codes{"EUR"_L1, "USD"_L1, "GBP"_L1, "JPY"_L1, "CHF"_L1};
    const auto pick = [](const auto &choices, qint64 index) {
        return choices[static_cast<std::size_t>(index) % std::size(choices)];
    };
    const LocalDate today = subscriptions.today();
    QList<SubscriptionDraft> drafts;
    for (qint64 i = subscriptions.count(owner); i < count; ++i) {
        SubscriptionDraft draft;
        draft.name = u"Subscription %1"_s.arg(i + 1);
        draft.currency = pick(codes, i);
        const bool isWhole = draft.currency == "JPY"_L1;
        draft.cost = isWhole ? Decimal(100 + i % 900) : Decimal(100 + i % 9'900).dividedBy(100);
        draft.cycle = pick(billingCycles, i / 3);
        draft.nextBillingDate = addDays(today, i % 365);
        draft.categoryID = categoryId(pick(categoryNames(), i));
        drafts.append(draft);
    }
    subscriptions.createAll(owner, drafts);
}

} // namespace orbitledge::demo
