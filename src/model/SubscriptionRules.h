#pragma once

#include "model/Subscription.h"

namespace orbitledge {

/// Whether a subscription is charged at all: its status, in lower case, is "active".
bool isActive(const Subscription &subscription);

/// Currency codes are the same in any case.
bool isSameCurrency(QStringView left, QStringView right);

/// The charge of one cycle in `currency`: the cost where it is in that currency, else the converted cost
/// where the service sent it in that currency. Absent otherwise; nothing is ever converted here.
std::optional<Decimal> amountIn(QStringView currency, const Subscription &subscription);

} // namespace orbitledge
