#pragma once

#include "model/AuthenticationResponse.h"
#include "model/CreateSubscriptionRequest.h"
#include "model/Subscription.h"
#include "model/SubscriptionMutationResponse.h"
#include "model/SubscriptionTemplate.h"
#include "model/UserProfile.h"

#include <string_view>
#include <tuple>

namespace orbitledge::json {

/// One member of a record and the key under which it travels. `repeats` marks texts that many records of
/// a list have in common.
template <auto Member, bool Repeats = false> struct Field {
    std::string_view key;
    static constexpr auto member = Member;
    static constexpr bool repeats = Repeats;
};

template <auto Member> constexpr Field<Member> field(std::string_view key)
{
    return {key};
}

template <auto Member> constexpr Field<Member, true> repeatingField(std::string_view key)
{
    return {key};
}

/// The one table of a record: which keys there are, in which order they are decoded and encoded.
/// A member of an optional type may be missing or null; all others are required.
template <typename Record> struct RecordFields;

template <> struct RecordFields<Subscription> {
    static constexpr auto table = std::tuple{
        field<&Subscription::id>("id"),
        repeatingField<&Subscription::userID>("user_id"),
        field<&Subscription::name>("name"),
        field<&Subscription::cost>("cost"),
        repeatingField<&Subscription::currency>("currency"),
        field<&Subscription::convertedCost>("converted_cost"),
        repeatingField<&Subscription::convertedCurrency>("converted_currency"),
        repeatingField<&Subscription::billingCycle>("billing_cycle"),
        field<&Subscription::nextBillingDate>("next_billing_date"),
        // "category" here, "category_id" in a request: the service's own asymmetry.
        field<&Subscription::categoryID>("category"),
        repeatingField<&Subscription::categoryName>("category_name"),
        repeatingField<&Subscription::status>("status"),
        field<&Subscription::templateID>("template_id"),
        field<&Subscription::logoURL>("logo_url"),
        field<&Subscription::cancelledAt>("cancelled_at"),
        field<&Subscription::cancellationDate>("cancellation_date"),
        field<&Subscription::trialEndDate>("trial_end_date"),
        field<&Subscription::trialNotificationDays>("trial_notification_days"),
        field<&Subscription::trialNotificationSent>("trial_notification_sent"),
        field<&Subscription::createdAt>("created_at"),
        field<&Subscription::updatedAt>("updated_at"),
    };
};

template <> struct RecordFields<UserProfile> {
    static constexpr auto table = std::tuple{
        field<&UserProfile::id>("id"),
        field<&UserProfile::email>("email"),
        field<&UserProfile::firstName>("first_name"),
        field<&UserProfile::lastName>("last_name"),
        field<&UserProfile::isVerified>("is_verified"),
        field<&UserProfile::planType>("plan_type"),
        field<&UserProfile::stripeSubscriptionStatus>("stripe_subscription_status"),
        field<&UserProfile::planExpiresAt>("plan_expires_at"),
        field<&UserProfile::planCancelledAt>("plan_cancelled_at"),
        field<&UserProfile::trialStartDate>("trial_start_date"),
        field<&UserProfile::trialEndDate>("trial_end_date"),
        field<&UserProfile::cancelAtTrialEnd>("cancel_at_trial_end"),
        field<&UserProfile::onboardingStatus>("onboarding_status"),
        field<&UserProfile::defaultCurrency>("default_currency"),
        field<&UserProfile::monthlyBudget>("monthly_budget"),
        field<&UserProfile::createdAt>("created_at"),
        field<&UserProfile::updatedAt>("updated_at"),
    };
};

template <> struct RecordFields<SubscriptionTemplate> {
    static constexpr auto table = std::tuple{
        field<&SubscriptionTemplate::id>("id"),
        field<&SubscriptionTemplate::name>("name"),
        field<&SubscriptionTemplate::companyName>("company_name"),
        field<&SubscriptionTemplate::logoURL>("logo_url"),
        field<&SubscriptionTemplate::icon>("icon"),
        field<&SubscriptionTemplate::colorScheme>("color_scheme"),
        field<&SubscriptionTemplate::websiteURL>("website_url"),
        field<&SubscriptionTemplate::description>("description"),
        repeatingField<&SubscriptionTemplate::category>("category"),
        field<&SubscriptionTemplate::typicalMonthlyCost>("typical_monthly_cost"),
        field<&SubscriptionTemplate::typicalAnnualCost>("typical_annual_cost"),
        field<&SubscriptionTemplate::annualDiscountPercentage>("annual_discount_percentage"),
        field<&SubscriptionTemplate::hasFreeTier>("has_free_tier"),
        repeatingField<&SubscriptionTemplate::availableBillingCycles>("available_billing_cycles"),
        field<&SubscriptionTemplate::createdAt>("created_at"),
        field<&SubscriptionTemplate::updatedAt>("updated_at"),
        field<&SubscriptionTemplate::usageCount>("usage_count"),
    };
};

template <> struct RecordFields<CreateSubscriptionRequest> {
    static constexpr auto table = std::tuple{
        field<&CreateSubscriptionRequest::name>("name"),
        field<&CreateSubscriptionRequest::cost>("cost"),
        field<&CreateSubscriptionRequest::currency>("currency"),
        field<&CreateSubscriptionRequest::billingCycle>("billing_cycle"),
        field<&CreateSubscriptionRequest::nextBillingDate>("next_billing_date"),
        field<&CreateSubscriptionRequest::categoryID>("category_id"),
        field<&CreateSubscriptionRequest::trialEndDate>("trial_end_date"),
        field<&CreateSubscriptionRequest::trialNotificationDays>("trial_notification_days"),
    };
};

template <> struct RecordFields<SubscriptionMutationResponse> {
    static constexpr auto table = std::tuple{
        field<&SubscriptionMutationResponse::message>("message"),
        field<&SubscriptionMutationResponse::subscription>("subscription"),
    };
};

template <> struct RecordFields<AuthenticationResponse> {
    static constexpr auto table = std::tuple{
        field<&AuthenticationResponse::user>("user"),
    };
};

} // namespace orbitledge::json
