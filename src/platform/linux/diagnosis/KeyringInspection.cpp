#include "platform/linux/diagnosis/KeyringInspection.h"

#include "platform/linux/keychain/KWallet.h"
#include "platform/linux/keychain/PreferredWallet.h"
#include "platform/linux/keychain/SecretService.h"

namespace orbitledge {

using namespace Qt::StringLiterals;
using findings::Keyring;
using findings::Presence;
using std::chrono::milliseconds;

namespace {

using Collection = Keyring::Collection;

Presence presenceAfter(KeychainStatus failure)
{
    return failure == KeychainStatus::TimedOut ? Presence::Mute : Presence::Refusing;
}

QCoro::Task<Keyring> inspectSecretService(Presence presence, KeychainItem item, milliseconds limit)
{
    Keyring keyring;
    keyring.presence = presence;
    if (presence != Presence::Present)
        co_return keyring;

    BusCalls calls(limit);
    SecretService service(calls);
    const auto standard = co_await service.defaultCollection();
    if (!standard) {
        keyring.presence = presenceAfter(standard.error());
        co_return keyring;
    }
    keyring.collection = Collection::None;
    if (standard->path() != "/"_L1) {
        const auto locked = co_await service.isCollectionLocked(*standard);
        if (locked)
            keyring.collection = *locked ? Collection::Locked : Collection::Unlocked;
        else
            keyring.collection = Collection::Unknown;
        if (!locked && locked.error() == KeychainStatus::TimedOut)
            keyring.presence = Presence::Mute;
    }
    const auto found = co_await service.search(item);
    if (found)
        keyring.hasItem = !found->isEmpty();
    else
        keyring.presence = presenceAfter(found.error());
    co_return keyring;
}

QCoro::Task<Keyring> inspectWallet(QString daemon, Presence presence, KeychainItem item, milliseconds limit)
{
    Keyring keyring;
    keyring.kind = Keyring::Kind::KWallet;
    keyring.presence = presence;
    if (presence != Presence::Present)
        co_return keyring;
    BusCalls calls(limit);
    KWallet wallets(calls, daemon);
    const auto wallet = co_await wallets.wallet();
    if (!wallet) {
        keyring.isEnabled = wallet.error() != KeychainStatus::NotAvailable;
        if (keyring.isEnabled)
            keyring.presence = presenceAfter(wallet.error());
        co_return keyring;
    }
    const auto isOpen = co_await wallets.isOpen(*wallet);
    const auto isAbsent = co_await wallets.isSurelyAbsent(*wallet, item);
    if (isOpen)
        keyring.collection = *isOpen ? Collection::Unlocked : Collection::Locked;
    if (isAbsent)
        keyring.hasItem = !*isAbsent;
    else
        keyring.presence = presenceAfter(isAbsent.error());
    co_return keyring;
}

} // namespace

QCoro::Task<Keyring> inspectKeyring(BusNames names, KeychainItem item, milliseconds limit)
{
    const QString daemon = preferredWalletDaemon();
    const Presence wallet = daemon.isEmpty() ? Presence::Absent : names.presenceOf(daemon);
    const Presence secretService = names.presenceOf(SecretService::name);
    if (wallet != Presence::Absent) {
        Keyring keyring = co_await inspectWallet(daemon, wallet, item, limit);
        if (keyring.isEnabled || secretService == Presence::Absent)
            co_return keyring;
    }
    Keyring keyring = co_await inspectSecretService(secretService, item, limit);
    co_return keyring;
}

} // namespace orbitledge
