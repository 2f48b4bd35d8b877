#pragma once

#include "platform/Turns.h"
#include "platform/linux/keychain/BusCalls.h"
#include "platform/linux/keychain/DesktopKeychain.h"
#include "platform/linux/keychain/SecretService.h"

#include <QCoroTask>
#include <QDBusObjectPath>

#include <tl/expected.hpp>

#include <memory>
#include <optional>
#include <type_traits>
#include <utility>

namespace orbitledge {

/// What the operations share, which they keep alive until the last of them is through.
struct DesktopKeychain::State {
    explicit State(KeychainPatience aPatience)
        : patience(aPatience)
    {
    }

    using Secret = tl::expected<QByteArray, KeychainStatus>;

    /// Runs `operation`, a member of State that returns a task, when it is its turn.
    template <typename Operation>
    static std::invoke_result_t<Operation, State &> inTurn(std::shared_ptr<State> state, Operation operation)
    {
        auto turns = state->turns;
        return Turns::take(std::move(turns),
            [state = std::move(state), operation = std::move(operation)] { return operation(*state); });
    }

    /// Finds the keyring of this desktop and waits for it. The daemon's name, or an empty one for the Secret
    /// Service.
    QCoro::Task<tl::expected<QString, KeychainStatus>> summonKeyring(std::shared_ptr<BusCalls> calls);

    QCoro::Task<Secret> read(KeychainItem item);
    QCoro::Task<Secret> readFromService(std::shared_ptr<BusCalls> calls, KeychainItem item);
    static QCoro::Task<KeychainStatus> unlockCollection(
        std::shared_ptr<BusCalls> calls, QList<QDBusObjectPath> items);
    QCoro::Task<Secret> readFound(std::shared_ptr<BusCalls> calls, KeychainItem item);
    QCoro::Task<Secret> readFromWallet(std::shared_ptr<BusCalls> calls, KeychainItem item, QString daemon);

    QCoro::Task<KeychainStatus> write(KeychainItem item, QByteArray secret);
    QCoro::Task<KeychainStatus> writeToService(
        std::shared_ptr<BusCalls> calls, KeychainItem item, QByteArray secret);
    QCoro::Task<KeychainStatus> writeToWallet(
        std::shared_ptr<BusCalls> calls, KeychainItem item, QByteArray secret, QString daemon);
    static QCoro::Task<void> tidyUpAfterWrite(
        std::shared_ptr<BusCalls> calls, KeychainItem item, QDBusObjectPath collection);

    QCoro::Task<KeychainStatus> remove(KeychainItem item, KeychainPrompt prompt);
    QCoro::Task<KeychainStatus> removeFromService(
        std::shared_ptr<BusCalls> calls, KeychainItem item, KeychainPrompt prompt);
    QCoro::Task<KeychainStatus> removeFromWallet(
        std::shared_ptr<BusCalls> calls, KeychainItem item, KeychainPrompt prompt, QString daemon);

    KeychainPatience patience;
    std::shared_ptr<Turns> turns = std::make_shared<Turns>();

    /// Not known before the first operation.
    std::optional<bool> hasBus;
    bool hasWaitedInVain = false;
    /// With the service that was asked last.
    std::shared_ptr<const SecretSession> session;
};

} // namespace orbitledge
