#pragma once

#include "model/Decimal.h"
#include "model/Instant.h"

#include <QList>
#include <QString>
#include <QUrl>
#include <QUuid>

#include <optional>

namespace orbitledge {

/// A catalogue entry from which a new subscription can be started.
struct SubscriptionTemplate {
    QUuid id;
    QString name;
    std::optional<QString> companyName;
    std::optional<QUrl> logoURL;
    std::optional<QString> icon;
    std::optional<QString> colorScheme;
    std::optional<QUrl> websiteURL;
    std::optional<QString> description;
    std::optional<QString> category;
    std::optional<Decimal> typicalMonthlyCost;
    std::optional<Decimal> typicalAnnualCost;
    /// 0 to 100.
    std::optional<Decimal> annualDiscountPercentage;
    std::optional<bool> hasFreeTier;
    std::optional<QList<QString>> availableBillingCycles;
    Instant createdAt;
    Instant updatedAt;
    std::optional<qint64> usageCount;

    friend bool operator==(const SubscriptionTemplate &, const SubscriptionTemplate &) = default;
};

} // namespace orbitledge
