#pragma once

#include "demo/Html.h"
#include "demo/Subscriptions.h"

namespace orbitledge::demo {

/// The month of a query: "2026-03" or absent.
std::optional<LocalDate> monthFromText(const QString &text);

/// A month as a grid, with everything that renews, ends or has its trial end in it. `month` is its first day.
Html calendarContent(const UserProfile &profile, const QList<StoredSubscription> &subscriptions,
    const LocalDate &month, const LocalDate &today);

} // namespace orbitledge::demo
