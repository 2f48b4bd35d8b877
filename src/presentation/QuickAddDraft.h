#pragma once

#include "model/CreateSubscriptionRequest.h"
#include "model/SubscriptionTemplate.h"
#include "state/AppState.h"

#include <array>
#include <optional>

namespace orbitledge {

/// What the form that adds a subscription holds, as it was typed.
struct QuickAddDraft {
    QString name;
    QString price;
    QString currency;
    /// A key of `billingCycleChoices`.
    QString billingCycle;
    LocalDate renewalDate;

    friend bool operator==(const QuickAddDraft &, const QuickAddDraft &) = default;
};

/// What the form begins with.
QuickAddDraft emptyDraft(const AppState &state, const LocalDate &today);

struct BillingCycleChoice {
    QLatin1StringView key;
    QLatin1StringView label;
};

/// In the order in which they are offered.
inline constexpr std::array<BillingCycleChoice, 4> billingCycleChoices{{
    {.key = QLatin1StringView("monthly"), .label = QLatin1StringView("Monthly")},
    {.key = QLatin1StringView("yearly"), .label = QLatin1StringView("Yearly")},
    {.key = QLatin1StringView("weekly"), .label = QLatin1StringView("Weekly")},
    {.key = QLatin1StringView("quarterly"), .label = QLatin1StringView("Quarterly")},
}};

/// What the catalogue is searched for; absent where the name is too short for that.
std::optional<QString> catalogueQuery(const QuickAddDraft &draft);

inline constexpr qsizetype mostSuggestions = 5;

/// The suggestions to offer, of what was found.
QList<SubscriptionTemplate> suggestionsOf(const AppState &state);

/// The draft with what a suggestion tells. A price that somebody typed stays; so does the currency always,
/// as the catalogue does not say in which one its prices are.
QuickAddDraft applied(const SubscriptionTemplate &suggestion, QuickAddDraft draft);

/// What is to be paid, with a point or a comma before the fraction, and no thousands marked, since which of
/// the two that would be depends on who types. Absent where it is no number or not above zero.
std::optional<Decimal> priceOf(const QString &typed);

/// What the service is asked to create; absent as long as something is missing or cannot be read.
std::optional<CreateSubscriptionRequest> requestOf(const QuickAddDraft &draft);

} // namespace orbitledge
