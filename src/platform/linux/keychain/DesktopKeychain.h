#pragma once

#include "platform/Keychain.h"

#include <chrono>
#include <memory>

namespace orbitledge {

/// How long the keyring of the desktop is waited for.
struct KeychainPatience {
    /// For an operation, without the time that a person takes to answer a prompt.
    std::chrono::milliseconds answer = std::chrono::seconds(20);
    /// For a service that is not on the bus and that the bus cannot start: at login it may be about to come.
    /// Where it did not, it is not waited for again before it has been there.
    std::chrono::milliseconds serviceStart = std::chrono::seconds(5);
};

/// The keyring of a Linux desktop: the Secret Service (GNOME Keyring, KeePassXC, and others), or KWallet in a
/// Plasma 5 session. Belongs to the thread that made it.
///
/// The store may be destroyed at any time: operations that run or wait for their turn still run to their end,
/// in order, and those who wait for them get the results, as long as there is an event loop.
///
/// InteractionNotAllowed is also how it ends where the person has to be asked, but the desktop has nothing to
/// ask with, for instance no display.
///
/// An operation that ended as TimedOut may still take effect when the service comes to life again.
///
/// With prompts forbidden, `remove` takes away what lies unlocked even where it has to leave a locked copy
/// behind and so answers InteractionNotAllowed. KWallet does not tell a prompt that was declined from access
/// that was denied: both are AuthFailed. It has no labels.
class DesktopKeychain final : public Keychain {
public:
    explicit DesktopKeychain(KeychainPatience patience = {});
    ~DesktopKeychain() override;

    QCoro::Task<tl::expected<QByteArray, KeychainStatus>> read(KeychainItem item) override;
    QCoro::Task<KeychainStatus> write(KeychainItem item, QByteArray secret) override;
    QCoro::Task<KeychainStatus> remove(KeychainItem item, KeychainPrompt prompt) override;

private:
    struct State;
    std::shared_ptr<State> m_state;
};

} // namespace orbitledge
