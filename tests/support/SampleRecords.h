#pragma once

#include "state/CacheSnapshot.h"

namespace orbitledge::testing {

/// A plain record to start from; tests set what they are about.
inline Subscription sampleSubscription(int number = 0)
{
    using namespace Qt::StringLiterals;
    Subscription subscription;
    subscription.id = QUuid(static_cast<uint>(number), 0xAB, 0xCD, 1, 2, 3, 4, 5, 6, 7, 8);
    subscription.userID = QUuid(u"{6f1c2c1e-9f0b-4a6e-8b57-1d4e6a7f9b10}"_s);
    subscription.name = u"Subscription %1"_s.arg(number);
    subscription.cost = *Decimal::fromText("9.99");
    subscription.currency = u"EUR"_s;
    subscription.billingCycle = u"monthly"_s;
    subscription.nextBillingDate = {2026, 3, 18};
    subscription.status = u"active"_s;
    subscription.createdAt = *Instant::fromText("2025-11-05T08:15:30Z");
    subscription.updatedAt = *Instant::fromText("2026-01-05T08:15:30Z");
    return subscription;
}

inline UserProfile sampleProfile()
{
    using namespace Qt::StringLiterals;
    UserProfile profile;
    profile.id = QUuid(u"{6f1c2c1e-9f0b-4a6e-8b57-1d4e6a7f9b10}"_s);
    profile.email = u"ada@example.com"_s;
    profile.firstName = u"Ada"_s;
    profile.lastName = u"Example"_s;
    profile.isVerified = true;
    profile.planType = u"free"_s;
    profile.onboardingStatus = u"completed"_s;
    profile.defaultCurrency = u"EUR"_s;
    profile.createdAt = *Instant::fromText("2025-11-05T08:15:30Z");
    profile.updatedAt = *Instant::fromText("2026-01-05T08:15:30Z");
    return profile;
}

inline CacheSnapshot sampleSnapshot(int subscriptions)
{
    CacheSnapshot snapshot;
    snapshot.profile = sampleProfile();
    for (int i = 0; i < subscriptions; ++i)
        snapshot.subscriptions.append(sampleSubscription(i));
    snapshot.fetchedAt = *Instant::fromText("2026-03-18T09:00:00Z");
    return snapshot;
}

} // namespace orbitledge::testing
