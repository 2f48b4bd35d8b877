#pragma once

#include "locale/DateFormatter.h"
#include "locale/MoneyFormatter.h"
#include "presentation/LogoContent.h"
#include "timeline/EntryTexts.h"
#include "timeline/TimelineSnapshot.h"

#include <QUuid>

namespace orbitledge {

/// What a row says about a subscription, and what can be done from it.
struct RowContent {
    /// What the row can change at the service.
    enum class Mutation { None, Cancel, Uncancel };

    QUuid id;
    QString name;
    QString subtitle;
    QString cost;
    bool isActive = false;
    /// Of the bar at the row's edge.
    Urgency urgency = Urgency::None;
    Mutation mutation = Mutation::None;
    LogoContent logo;

    /// Everything but the name, for those who do not see the row.
    QString accessibleValue;
    QString accessibleHint;
    QString openLabel;
    /// Also the accessible action's name; empty where there is no mutation.
    QString mutationLabel;
};

RowContent rowOf(
    const TimelineEntry &entry, const QString &profileCurrency, DateFormatter &dates, MoneyFormatter &money);

/// What is asked before a subscription is marked cancelled.
struct CancellationQuestion {
    QString title;
    QString message;
    QString confirm;
    QString keep;
};

CancellationQuestion cancellationQuestion(const QString &name);

} // namespace orbitledge
