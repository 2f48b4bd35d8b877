#pragma once

#include "demo/HttpMessages.h"
#include "demo/Renewals.h"
#include "model/CreateSubscriptionRequest.h"

#include <tl/expected.hpp>

namespace orbitledge::demo {

/// What is wrong with one field, in a sentence that says what would be right.
struct FieldProblem {
    /// As it is called in the request.
    QLatin1StringView field;
    QString sentence;

    friend bool operator==(const FieldProblem &, const FieldProblem &) = default;
};
using FieldProblems = QList<FieldProblem>;

/// A subscription's own content, checked and complete.
struct SubscriptionDraft {
    QString name;
    Decimal cost;
    /// In upper case.
    QString currency;
    BillingCycle cycle = BillingCycle::Monthly;
    LocalDate nextBillingDate;
    std::optional<QUuid> categoryID;
    std::optional<LocalDate> trialEndDate;
    std::optional<qint64> trialNotificationDays;
};

inline constexpr qsizetype maximumNameLength = 200;
inline constexpr LocalDate earliestDate{2000, 1, 1};
inline constexpr LocalDate latestDate{2199, 12, 31};

/// Checks every field. What is left out is filled in: the currency from the profile, the next renewal from
/// the cycle, counted from today.
tl::expected<SubscriptionDraft, FieldProblems> checkSubscription(
    const CreateSubscriptionRequest &request, const QString &defaultCurrency, const LocalDate &today);

/// The same for what was typed into a form, whose fields are called alike. A decimal comma is accepted.
tl::expected<SubscriptionDraft, FieldProblems> checkSubscriptionForm(
    const FormFields &form, const QString &defaultCurrency, const LocalDate &today);

} // namespace orbitledge::demo
