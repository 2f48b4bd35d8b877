#pragma once

#include "model/Decimal.h"
#include "model/LocalDate.h"

#include <QString>
#include <QUuid>

#include <optional>

namespace orbitledge {

/// What the service is asked to create. Absent fields are left to the service.
struct CreateSubscriptionRequest {
    QString name;
    Decimal cost;
    std::optional<QString> currency;
    QString billingCycle;
    std::optional<LocalDate> nextBillingDate;
    std::optional<QUuid> categoryID;
    std::optional<LocalDate> trialEndDate;
    /// Days before the end of the trial.
    std::optional<qint64> trialNotificationDays;

    friend bool operator==(const CreateSubscriptionRequest &, const CreateSubscriptionRequest &) = default;
};

} // namespace orbitledge
