#pragma once

#include "platform/Keychain.h"

#include <QString>

#include <variant>

namespace orbitledge {

/// Why the stored credential could not be read or changed.
class SessionCredentialStoreError {
public:
    struct Keychain {
        KeychainStatus status = KeychainStatus::IoError;
        friend bool operator==(const Keychain &, const Keychain &) = default;
    };
    /// What is stored is no credential.
    struct InvalidStoredData {
        friend bool operator==(const InvalidStoredData &, const InvalidStoredData &) = default;
    };

    // NOLINTNEXTLINE(google-explicit-constructor,hicpp-explicit-conversions): a case is an error
    SessionCredentialStoreError(Keychain error)
        : m_case(error)
    {
    }
    // NOLINTNEXTLINE(google-explicit-constructor,hicpp-explicit-conversions): likewise
    SessionCredentialStoreError(InvalidStoredData error)
        : m_case(error)
    {
    }

    /// A sentence for people.
    [[nodiscard]] QString errorDescription() const;

    friend bool operator==(const SessionCredentialStoreError &, const SessionCredentialStoreError &)
        = default;

private:
    std::variant<Keychain, InvalidStoredData> m_case;
};

} // namespace orbitledge
