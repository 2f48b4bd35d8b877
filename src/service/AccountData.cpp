#include "service/AccountData.h"

namespace orbitledge {

APITask<AccountData> fetchAccountData(std::shared_ptr<APIClientProtocol> client)
{
    // Both run from here on.
    APITask<UserProfile> profileTask = client->fetchProfile();
    APITask<QList<Subscription>> subscriptionsTask = client->fetchSubscriptions();
    auto profile = co_await profileTask;
    auto subscriptions = co_await subscriptionsTask;
    if (!profile)
        co_return tl::make_unexpected(std::move(profile.error()));
    if (!subscriptions)
        co_return tl::make_unexpected(std::move(subscriptions.error()));
    co_return AccountData{*std::move(profile), *std::move(subscriptions)};
}

} // namespace orbitledge
