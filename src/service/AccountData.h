#pragma once

#include "service/APIClientProtocol.h"

#include <memory>

namespace orbitledge {

/// What the program shows of an account.
struct AccountData {
    UserProfile profile;
    QList<Subscription> subscriptions;
};

/// Fetches both at once. Where both fail the profile's failure is the one that is told.
APITask<AccountData> fetchAccountData(std::shared_ptr<APIClientProtocol> client);

} // namespace orbitledge
