#pragma once

#include <QByteArray>
#include <QCoroTask>
#include <QString>

#include <tl/expected.hpp>

#include <optional>

namespace orbitledge {

/// How an operation on the secure store ended. The numbers are stable: they are shown where there is no text
/// for them, and people search for them. A store may report others.
enum class KeychainStatus : qint32 {
    Success = 0,
    /// The person was asked to unlock the store, or to let us in, and declined.
    UserCanceled = -128,
    /// The store could not do it, for instance because it ended in the middle.
    IoError = -36,
    /// The store did not answer in time.
    TimedOut = -1001,
    /// There is no store on this desktop.
    NotAvailable = -25291,
    /// The store does not let us in.
    AuthFailed = -25293,
    ItemNotFound = -25300,
    /// The store is locked, and the caller did not want the person to be asked.
    InteractionNotAllowed = -25308,
};

/// A sentence for people about a status; absent for those that are not in the enumeration.
std::optional<QString> keychainMessage(KeychainStatus status);

/// Which item of the store: there is at most one for a service and an account.
struct KeychainItem {
    QString service;
    QString account;
    /// What people read in their keyring manager.
    QString label;

    friend bool operator==(const KeychainItem &, const KeychainItem &) = default;
};

/// May the store ask the person for a password or for consent, and wait for them?
enum class KeychainPrompt { Allowed, Forbidden };

/// The desktop's secure store for secrets. Operations run one at a time, in the order of the calls, and never
/// block the calling thread, which needs an event loop. What takes a person's time is waited for without
/// limit, everything else ends as TimedOut after a while.
class Keychain {
public:
    Keychain() = default;
    Keychain(const Keychain &) = delete;
    Keychain &operator=(const Keychain &) = delete;
    virtual ~Keychain() = default;

    /// The item's secret. A locked store is unlocked first, with the person's help.
    [[nodiscard]] virtual QCoro::Task<tl::expected<QByteArray, KeychainStatus>> read(KeychainItem item) = 0;

    /// Replaces the item's secret, or adds the item; never leaves half of one. A locked store is unlocked
    /// first, with the person's help.
    [[nodiscard]] virtual QCoro::Task<KeychainStatus> write(KeychainItem item, QByteArray secret) = 0;

    /// ItemNotFound where there is no such item, InteractionNotAllowed where it cannot be told or done
    /// without a prompt that is forbidden.
    [[nodiscard]] virtual QCoro::Task<KeychainStatus> remove(KeychainItem item, KeychainPrompt prompt) = 0;
};

} // namespace orbitledge
