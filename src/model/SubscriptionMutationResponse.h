#pragma once

#include "model/Subscription.h"

namespace orbitledge {

/// The service's answer to marking a subscription cancelled and to taking that back.
struct SubscriptionMutationResponse {
    QString message;
    Subscription subscription;

    friend bool operator==(const SubscriptionMutationResponse &, const SubscriptionMutationResponse &)
        = default;
};

} // namespace orbitledge
