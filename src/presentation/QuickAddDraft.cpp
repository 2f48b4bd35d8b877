#include "presentation/QuickAddDraft.h"

#include "locale/Graphemes.h"
#include "presentation/PanelScreen.h"

#include <algorithm>

namespace orbitledge {

namespace {

constexpr qsizetype shortestQuery = 2;
constexpr qsizetype currencyLength = 3;

bool isOffered(const QString &billingCycle)
{
    return std::ranges::any_of(
        billingCycleChoices, [&](const BillingCycleChoice &choice) { return choice.key == billingCycle; });
}

/// In characters as people count them.
qsizetype lengthOf(const QString &text)
{
    return graphemesOf(text).size();
}

} // namespace

QuickAddDraft emptyDraft(const AppState &state, const LocalDate &today)
{
    return {
        .name = {},
        .price = {},
        .currency = panelCurrency(state),
        .billingCycle = billingCycleChoices.front().key,
        .renewalDate = today,
    };
}

std::optional<QString> catalogueQuery(const QuickAddDraft &draft)
{
    const QString query = draft.name.trimmed();
    return lengthOf(query) < shortestQuery ? std::nullopt : std::optional(query);
}

QList<SubscriptionTemplate> suggestionsOf(const AppState &state)
{
    return state.templates.first(std::min(state.templates.size(), mostSuggestions));
}

QuickAddDraft applied(const SubscriptionTemplate &suggestion, QuickAddDraft draft)
{
    draft.name = suggestion.name;
    if (draft.price.isEmpty() && suggestion.typicalMonthlyCost)
        draft.price = suggestion.typicalMonthlyCost->toString();
    const QStringList cycles = suggestion.availableBillingCycles.value_or(QList<QString>());
    const auto known
        = std::ranges::find_if(cycles, [](const QString &cycle) { return isOffered(cycle.toLower()); });
    if (known != cycles.end())
        draft.billingCycle = known->toLower();
    return draft;
}

std::optional<Decimal> priceOf(const QString &typed)
{
    QString text = typed;
    text.replace(u',', u'.');
    const auto price = Decimal::fromText(text.toStdString());
    return price && *price > Decimal() ? std::optional(*price) : std::nullopt;
}

std::optional<CreateSubscriptionRequest> requestOf(const QuickAddDraft &draft)
{
    const QString name = draft.name.trimmed();
    const auto price = priceOf(draft.price);
    if (name.isEmpty() || !price || lengthOf(draft.currency) != currencyLength)
        return std::nullopt;
    return CreateSubscriptionRequest{
        .name = name,
        .cost = *price,
        .currency = draft.currency,
        .billingCycle = draft.billingCycle,
        .nextBillingDate = draft.renewalDate,
        .categoryID = {},
        .trialEndDate = {},
        .trialNotificationDays = {},
    };
}

} // namespace orbitledge
