#pragma once

#include "platform/Keychain.h"
#include "service/SessionCredential.h"
#include "service/SessionCredentialStoreError.h"

#include <QCoroTask>

#include <tl/expected.hpp>

#include <optional>

namespace orbitledge {

/// Keeps the one credential of this person between runs. Operations run one after the other, in the order of
/// the calls.
class SessionCredentialStoring {
public:
    template <typename T> using Task = QCoro::Task<tl::expected<T, SessionCredentialStoreError>>;

    SessionCredentialStoring() = default;
    SessionCredentialStoring(const SessionCredentialStoring &) = delete;
    SessionCredentialStoring &operator=(const SessionCredentialStoring &) = delete;
    virtual ~SessionCredentialStoring() = default;

    /// As it was saved, expired or not; absent where there is none.
    [[nodiscard]] virtual Task<std::optional<SessionCredential>> load() = 0;

    /// Replaces what was saved before.
    [[nodiscard]] virtual Task<void> save(SessionCredential credential) = 0;

    /// Nothing to remove is no error. May the person be asked to unlock the store for it? Not where they did
    /// not ask for anything themselves.
    [[nodiscard]] virtual Task<void> clear(KeychainPrompt prompt) = 0;
};

} // namespace orbitledge
