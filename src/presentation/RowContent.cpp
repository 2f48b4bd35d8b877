#include "presentation/RowContent.h"

#include "model/SubscriptionRules.h"

namespace orbitledge {

using namespace Qt::StringLiterals;

namespace {

QString urgencyText(Urgency urgency)
{
    switch (urgency) {
    case Urgency::Urgent:
        return u"urgent renewal"_s;
    case Urgency::Soon:
        return u"renewal within seven days"_s;
    case Urgency::None:
        break;
    }
    return {};
}

RowContent::Mutation mutationOf(const Subscription &subscription)
{
    if (isCancelled(subscription))
        return RowContent::Mutation::Uncancel;
    return isActive(subscription) ? RowContent::Mutation::Cancel : RowContent::Mutation::None;
}

QString labelOf(RowContent::Mutation mutation, const QString &name)
{
    switch (mutation) {
    case RowContent::Mutation::Cancel:
        return u"Cancel "_s + name;
    case RowContent::Mutation::Uncancel:
        return u"Uncancel "_s + name;
    case RowContent::Mutation::None:
        break;
    }
    return {};
}

} // namespace

RowContent rowOf(
    const TimelineEntry &entry, const QString &profileCurrency, DateFormatter &dates, MoneyFormatter &money)
{
    const Subscription &subscription = *entry.subscription;
    const Urgency urgency = urgencyOf(entry.daysUntilRenewal);
    const auto mutation = mutationOf(subscription);
    RowContent row{
        .id = subscription.id,
        .name = subscription.name,
        .subtitle = subtitle(subscription, dates),
        .cost = costText(subscription, profileCurrency, money),
        .isActive = isActive(subscription),
        .urgency = isActive(subscription) ? urgency : Urgency::None,
        .mutation = mutation,
        .logo = logoOf(subscription.name, subscription.logoURL),
        .accessibleValue = {},
        .accessibleHint = u"Opens this subscription in Orbitledge"_s,
        .openLabel = u"Open %1 in Web"_s.arg(subscription.name),
        .mutationLabel = labelOf(mutation, subscription.name),
    };
    QStringList value{row.cost, row.subtitle, urgencyText(urgency)};
    value.removeAll(QString());
    row.accessibleValue = value.join(u", ");
    return row;
}

CancellationQuestion cancellationQuestion(const QString &name)
{
    return {
        .title = u"Cancel %1?"_s.arg(name),
        .message
        = u"This marks the subscription as cancelled in Orbitledge. It does not contact the merchant."_s,
        .confirm = u"Cancel subscription"_s,
        .keep = u"Keep subscription"_s,
    };
}

} // namespace orbitledge
