#pragma once

#include "demo/Accounts.h"
#include "demo/Subscriptions.h"

namespace orbitledge::demo {

// Known to everybody who reads the help: an account to try things with, on this machine only.
inline constexpr QLatin1StringView sampleEmail("ada@example.com");
inline constexpr QLatin1StringView samplePassword("orbit-ledger");

/// Makes the sample account, with subscriptions laid out around today, unless it exists.
tl::expected<UserProfile, QString> ensureSampleAccount(
    Database &database, Accounts &accounts, Subscriptions &subscriptions);

/// Adds made-up subscriptions until there are `count`; for measuring.
void populate(Subscriptions &subscriptions, const UserProfile &owner, qint64 count);

} // namespace orbitledge::demo
