#pragma once

#include "demo/Html.h"
#include "demo/Subscriptions.h"

namespace orbitledge::demo {

/// For who is not signed in: what this is.
Html welcome();
/// For who is: the totals, and what is coming up.
Html overview(
    const UserProfile &profile, const QList<StoredSubscription> &subscriptions, const LocalDate &today);

} // namespace orbitledge::demo
