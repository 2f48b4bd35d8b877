#include "timeline/EntryTexts.h"

#include "locale/TextCase.h"
#include "model/SubscriptionRules.h"

namespace orbitledge {

using namespace Qt::StringLiterals;

bool isCancelled(const Subscription &subscription)
{
    return subscription.cancellationDate
        || subscription.status.compare("cancelled"_L1, Qt::CaseInsensitive) == 0;
}

QString costText(const Subscription &subscription, const QString &profileCurrency, MoneyFormatter &money)
{
    if (!isSameCurrency(subscription.currency, profileCurrency)) {
        if (const auto converted = amountIn(profileCurrency, subscription))
            return money.text(*converted, profileCurrency);
    }
    return money.text(subscription.cost, subscription.currency);
}

QString daysText(std::optional<qint64> daysUntilRenewal)
{
    if (!daysUntilRenewal)
        return {};
    const qint64 days = *daysUntilRenewal;
    switch (days) {
    case -1:
        return u"yesterday"_s;
    case 0:
        return u"today"_s;
    case 1:
        return u"tomorrow"_s;
    default:
        return days > 0 ? u"in %1 days"_s.arg(days) : u"%1 days ago"_s.arg(-days);
    }
}

QString subtitle(const Subscription &subscription, DateFormatter &dates)
{
    const QString date = dates.monthAndDay(subscription.nextBillingDate);
    if (subscription.cancellationDate)
        return date + u" · cancellation scheduled"_s;
    const QString about = !isActive(subscription)
        ? capitalised(subscription.status)
        : subscription.categoryName.value_or(capitalised(subscription.billingCycle));
    return date + u" · "_s + about;
}

Urgency urgencyOf(std::optional<qint64> daysUntilRenewal)
{
    constexpr qint64 urgentDays = 3;
    constexpr qint64 soonDays = 7;
    if (!daysUntilRenewal || *daysUntilRenewal > soonDays)
        return Urgency::None;
    return *daysUntilRenewal <= urgentDays ? Urgency::Urgent : Urgency::Soon;
}

} // namespace orbitledge
