#pragma once

#include "model/Decimal.h"
#include "model/Instant.h"

#include <QString>
#include <QUuid>

#include <optional>

namespace orbitledge {

/// The signed-in user. The plan's and trial's moments are instants here, unlike a subscription's days.
struct UserProfile {
    QUuid id;
    QString email;
    QString firstName;
    QString lastName;
    bool isVerified = false;
    QString planType;
    std::optional<QString> stripeSubscriptionStatus;
    std::optional<Instant> planExpiresAt;
    std::optional<Instant> planCancelledAt;
    std::optional<Instant> trialStartDate;
    std::optional<Instant> trialEndDate;
    bool cancelAtTrialEnd = false;
    QString onboardingStatus;
    /// ISO 4217 code; totals are in this currency.
    QString defaultCurrency;
    /// In `defaultCurrency`.
    std::optional<Decimal> monthlyBudget;
    Instant createdAt;
    Instant updatedAt;

    friend bool operator==(const UserProfile &, const UserProfile &) = default;
};

} // namespace orbitledge
