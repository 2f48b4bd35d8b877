#include "model/SubscriptionRules.h"

namespace orbitledge {

bool isActive(const Subscription &subscription)
{
    constexpr QLatin1StringView active("active");
    return subscription.status == active || subscription.status.toLower() == active;
}

bool isSameCurrency(QStringView left, QStringView right)
{
    return left.compare(right, Qt::CaseInsensitive) == 0;
}

std::optional<Decimal> amountIn(QStringView currency, const Subscription &subscription)
{
    if (isSameCurrency(subscription.currency, currency))
        return subscription.cost;
    if (subscription.convertedCurrency && isSameCurrency(*subscription.convertedCurrency, currency))
        return subscription.convertedCost;
    return std::nullopt;
}

} // namespace orbitledge
