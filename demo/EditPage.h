#pragma once

#include "demo/PageFrame.h"
#include "demo/SubscriptionInput.h"
#include "model/Subscription.h"

namespace orbitledge::demo {

/// What stands in the fields: the subscription's own, or what was typed and not accepted.
struct EditForm {
    QString name;
    QString cost;
    QString currency;
    QString billingCycle;
    QString nextBillingDate;
    QString trialEndDate;
    FieldProblems problems;
    /// What was just done.
    QString message;
    /// Why something else could not be done.
    QString refusal;

    static EditForm of(const Subscription &subscription);
    static EditForm typed(const FormFields &fields);
};

Html editContent(const Viewer &viewer, const Subscription &subscription, const EditForm &form);

} // namespace orbitledge::demo
