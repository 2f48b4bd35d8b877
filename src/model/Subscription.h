#pragma once

#include "model/Decimal.h"
#include "model/Instant.h"
#include "model/LocalDate.h"

#include <QList>
#include <QString>
#include <QUrl>
#include <QUuid>

#include <optional>

namespace orbitledge {

/// One tracked subscription, as the service holds it. A value: built once, then only read.
///
/// `status` and `billingCycle` are the service's own words; who compares them ignores case.
struct Subscription {
    QUuid id;
    QUuid userID;
    QString name;
    /// The charge of one billing cycle, in `currency`.
    Decimal cost;
    /// ISO 4217 code.
    QString currency;
    /// `cost` in `convertedCurrency`, where the service converted it; never computed here.
    std::optional<Decimal> convertedCost;
    std::optional<QString> convertedCurrency;
    QString billingCycle;
    LocalDate nextBillingDate;
    std::optional<QUuid> categoryID;
    std::optional<QString> categoryName;
    QString status;
    std::optional<QUuid> templateID;
    std::optional<QUrl> logoURL;
    std::optional<Instant> cancelledAt;
    /// The day from which the subscription no longer renews.
    std::optional<LocalDate> cancellationDate;
    std::optional<LocalDate> trialEndDate;
    /// Days before the end of the trial.
    std::optional<qint64> trialNotificationDays;
    std::optional<bool> trialNotificationSent;
    Instant createdAt;
    Instant updatedAt;

    friend bool operator==(const Subscription &, const Subscription &) = default;
};

} // namespace orbitledge

Q_DECLARE_TYPEINFO(orbitledge::Subscription, Q_RELOCATABLE_TYPE);
