#pragma once

#include "platform/SessionService.h"
#include "reminders/RenewalNotifier.h"
#include "service/SessionCredentialStoring.h"
#include "state/AppStore.h"
#include "state/SnapshotCache.h"

#include <filesystem>
#include <memory>

namespace orbitledge {

/// The session that a store of this process has. User-interface thread only.
class StoreSession final : public SessionService {
public:
    /// The store, and those of its parts that can be asked what its state does not tell.
    struct Parts {
        std::shared_ptr<AppStore> store;
        std::shared_ptr<SnapshotCache> cache;
        std::shared_ptr<RenewalNotifier> notifier;
        std::shared_ptr<SessionCredentialStoring> credentials;
        /// As people are told of it.
        std::filesystem::path cacheFile;
    };

    explicit StoreSession(Parts parts);

    QCoro::Task<SessionOutcome> perform(SessionRequest request) override;

private:
    std::shared_ptr<const Parts> m_parts;
};

} // namespace orbitledge
