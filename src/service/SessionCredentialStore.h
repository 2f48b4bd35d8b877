#pragma once

#include "service/SessionCredentialStoring.h"

#include <memory>

namespace orbitledge {

/// The credential as a small JSON document in one item of the desktop's secure store, and nowhere else.
class SessionCredentialStore final : public SessionCredentialStoring {
public:
    /// `service` and `account` identify the item among those of all programs; `label` is what people read
    /// in their keyring manager.
    SessionCredentialStore(
        std::shared_ptr<Keychain> keychain, QString service, QString account, QString label);

    [[nodiscard]] Task<std::optional<SessionCredential>> load() override;
    [[nodiscard]] Task<void> save(SessionCredential credential) override;
    [[nodiscard]] Task<void> clear(KeychainPrompt prompt) override;

private:
    std::shared_ptr<Keychain> m_keychain;
    KeychainItem m_item;
};

} // namespace orbitledge
