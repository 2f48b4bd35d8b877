#include "platform/linux/keychain/DesktopKeychain.h"

#include "platform/linux/bus/SessionBusCall.h"
#include "platform/linux/keychain/DesktopKeychainState.h"
#include "platform/linux/keychain/KWallet.h"
#include "platform/linux/keychain/PreferredWallet.h"

#include <array>

namespace orbitledge {

using namespace Qt::StringLiterals;
using std::chrono::milliseconds;

DesktopKeychain::DesktopKeychain(KeychainPatience patience)
    : m_state(std::make_shared<State>(patience))
{
}

DesktopKeychain::~DesktopKeychain() = default;

QCoro::Task<tl::expected<QByteArray, KeychainStatus>> DesktopKeychain::read(KeychainItem item)
{
    return State::inTurn(m_state, [item](State &state) { return state.read(item); });
}

QCoro::Task<KeychainStatus> DesktopKeychain::write(KeychainItem item, QByteArray secret)
{
    return State::inTurn(m_state, [item, secret](State &state) { return state.write(item, secret); });
}

QCoro::Task<KeychainStatus> DesktopKeychain::remove(KeychainItem item, KeychainPrompt prompt)
{
    return State::inTurn(m_state, [item, prompt](State &state) { return state.remove(item, prompt); });
}

// ---- common ----------------------------------------------------------------------------------------------

QCoro::Task<tl::expected<QString, KeychainStatus>> DesktopKeychain::State::summonKeyring(
    std::shared_ptr<BusCalls> calls)
{
    if (!hasBus)
        hasBus = co_await reachSessionBus();
    if (!*hasBus)
        co_return tl::unexpected(KeychainStatus::NotAvailable);

    if (const QString daemon = preferredWalletDaemon(); !daemon.isEmpty()) {
        const KeychainStatus summoned = co_await calls->summon(daemon);
        if (summoned != KeychainStatus::Success && summoned != KeychainStatus::ItemNotFound)
            co_return tl::unexpected(summoned);
        if (summoned == KeychainStatus::Success) {
            KWallet wallets(*calls, daemon);
            const auto enabled = co_await wallets.isEnabled();
            if (!enabled)
                co_return tl::unexpected(enabled.error());
            // Who does without wallets may have another keyring in their place.
            if (*enabled)
                co_return daemon;
        }
    }
    const milliseconds comingUp = hasWaitedInVain ? milliseconds::zero() : patience.serviceStart;
    const KeychainStatus summoned = co_await calls->summon(SecretService::name, comingUp);
    hasWaitedInVain = summoned == KeychainStatus::NotAvailable;
    if (summoned != KeychainStatus::Success)
        co_return tl::unexpected(summoned);
    co_return QString();
}

// ---- read ------------------------------------------------------------------------------------------------

QCoro::Task<DesktopKeychain::State::Secret> DesktopKeychain::State::read(KeychainItem item)
{
    const auto calls = std::make_shared<BusCalls>(patience.answer);
    const auto keyring = co_await summonKeyring(calls);
    if (!keyring)
        co_return tl::unexpected(keyring.error());
    Secret secret;
    if (keyring->isEmpty())
        secret = co_await readFromService(calls, item);
    else
        secret = co_await readFromWallet(calls, item, *keyring);
    co_return secret;
}

QCoro::Task<DesktopKeychain::State::Secret> DesktopKeychain::State::readFromService(
    std::shared_ptr<BusCalls> calls, KeychainItem item)
{
    SecretService service(*calls);
    auto found = co_await service.search(item);
    if (found && found->unlocked.isEmpty() && !found->locked.isEmpty()) {
        const KeychainStatus unlocked = co_await unlockCollection(calls, found->locked);
        if (unlocked != KeychainStatus::Success)
            co_return tl::unexpected(unlocked);
        found = co_await service.search(item);
    }
    if (!found)
        co_return tl::unexpected(found.error());
    if (found->isEmpty())
        co_return tl::unexpected(KeychainStatus::ItemNotFound);
    if (found->unlocked.isEmpty()) {
        // Locked in a collection that is not: the service asks the person for each item, and remembers the
        // consent for one connection to the bus.
        const QList<QDBusObjectPath> items{found->locked.constFirst()};
        const KeychainStatus unlocked = co_await service.unlock(items);
        if (unlocked != KeychainStatus::Success)
            co_return tl::unexpected(unlocked);
    }
    Secret secret = co_await readFound(calls, item);
    co_return secret;
}

/// Where an item is locked, asks for the collection in which new ones are, or else for the first one's.
QCoro::Task<KeychainStatus> DesktopKeychain::State::unlockCollection(
    std::shared_ptr<BusCalls> calls, QList<QDBusObjectPath> items)
{
    SecretService service(*calls);
    const auto standard = co_await service.defaultCollection();
    if (!standard)
        co_return standard.error();
    QDBusObjectPath collection = SecretService::collectionOf(items.constFirst());
    for (const QDBusObjectPath &path : std::as_const(items)) {
        if (SecretService::collectionOf(path) == *standard)
            collection = *standard;
    }
    const auto locked = co_await service.isCollectionLocked(collection);
    if (!locked)
        co_return locked.error();
    if (!*locked)
        co_return KeychainStatus::Success;
    const QList<QDBusObjectPath> collections{collection};
    const KeychainStatus unlocked = co_await service.unlock(collections);
    co_return unlocked;
}

/// The item is there, and unlocked by now where the service tells the truth.
QCoro::Task<DesktopKeychain::State::Secret> DesktopKeychain::State::readFound(
    std::shared_ptr<BusCalls> calls, KeychainItem item)
{
    SecretService service(*calls);
    const auto opened = co_await service.session(session);
    if (!opened)
        co_return tl::unexpected(opened.error());
    session = *opened;
    static constexpr std::array encodings{SecretService::Encoding::Base64, SecretService::Encoding::Text};
    for (const auto encoding : encodings) {
        const auto found = co_await service.search(item, encoding);
        if (!found)
            co_return tl::unexpected(found.error());
        for (const QDBusObjectPath &path : std::as_const(found->unlocked)) {
            Secret secret = co_await service.secret(path, encoding, session);
            if (!secret && secret.error() == KeychainStatus::IoError)
                session.reset(); // which may be what is wrong
            if (secret || secret.error() != KeychainStatus::ItemNotFound)
                co_return secret;
        }
    }
    const auto stillThere = co_await service.search(item);
    if (!stillThere)
        co_return tl::unexpected(stillThere.error());
    co_return tl::unexpected(
        stillThere->isEmpty() ? KeychainStatus::ItemNotFound : KeychainStatus::AuthFailed);
}

QCoro::Task<DesktopKeychain::State::Secret> DesktopKeychain::State::readFromWallet(
    std::shared_ptr<BusCalls> calls, KeychainItem item, QString daemon)
{
    KWallet keyring(*calls, daemon);
    const auto wallet = co_await keyring.wallet();
    if (!wallet)
        co_return tl::unexpected(wallet.error());
    const auto absent = co_await keyring.isSurelyAbsent(*wallet, item);
    if (!absent)
        co_return tl::unexpected(absent.error());
    if (*absent)
        co_return tl::unexpected(KeychainStatus::ItemNotFound);
    const auto handle = co_await keyring.open(*wallet, item.service);
    if (!handle)
        co_return tl::unexpected(handle.error());
    Secret secret = co_await keyring.read(*handle, item);
    co_return secret;
}

// ---- write -----------------------------------------------------------------------------------------------

QCoro::Task<KeychainStatus> DesktopKeychain::State::write(KeychainItem item, QByteArray secret)
{
    const auto calls = std::make_shared<BusCalls>(patience.answer);
    const auto keyring = co_await summonKeyring(calls);
    if (!keyring)
        co_return keyring.error();
    KeychainStatus status = KeychainStatus::Success;
    if (keyring->isEmpty())
        status = co_await writeToService(calls, item, secret);
    else
        status = co_await writeToWallet(calls, item, secret, *keyring);
    // There is no item that has to be there before it is written.
    co_return status == KeychainStatus::ItemNotFound ? KeychainStatus::IoError : status;
}

QCoro::Task<KeychainStatus> DesktopKeychain::State::writeToService(
    std::shared_ptr<BusCalls> calls, KeychainItem item, QByteArray secret)
{
    SecretService service(*calls);
    auto collection = co_await service.defaultCollection();
    if (!collection)
        co_return collection.error();
    if (collection->path() == "/"_L1) {
        const KeychainStatus created = co_await service.createDefaultCollection();
        if (created != KeychainStatus::Success)
            co_return created;
        collection = co_await service.defaultCollection();
        if (!collection)
            co_return collection.error();
    }
    const auto locked = co_await service.isCollectionLocked(*collection);
    if (!locked)
        co_return locked.error();
    if (*locked) {
        const QList<QDBusObjectPath> collections{*collection};
        const KeychainStatus unlocked = co_await service.unlock(collections);
        if (unlocked != KeychainStatus::Success)
            co_return unlocked;
    }

    const auto opened = co_await service.session(session);
    if (!opened)
        co_return opened.error();
    session = *opened;
    const KeychainStatus written = co_await service.write(*collection, item, secret, session);
    if (written == KeychainStatus::Success)
        co_await tidyUpAfterWrite(calls, item, *collection);
    co_return written;
}

/// Takes away what else has the new item's name, lest it be read one day. The secret is safe by now, so
/// nothing here is a failure of the write.
QCoro::Task<void> DesktopKeychain::State::tidyUpAfterWrite(
    std::shared_ptr<BusCalls> calls, KeychainItem item, QDBusObjectPath collection)
{
    SecretService service(*calls);
    const auto found = co_await service.search(item);
    const auto written = co_await service.searchWritten(item);
    if (!found || !written)
        co_return;
    for (const QDBusObjectPath &path : found->unlocked + found->locked) {
        const bool isWritten = written->unlocked.contains(path) || written->locked.contains(path);
        const bool isNew = isWritten && SecretService::collectionOf(path) == collection;
        if (!isNew && found->unlocked.contains(path))
            co_await service.deleteItem(path, KeychainPrompt::Forbidden);
    }
}

QCoro::Task<KeychainStatus> DesktopKeychain::State::writeToWallet(
    std::shared_ptr<BusCalls> calls, KeychainItem item, QByteArray secret, QString daemon)
{
    KWallet keyring(*calls, daemon);
    const auto wallet = co_await keyring.wallet();
    if (!wallet)
        co_return wallet.error();
    const auto handle = co_await keyring.open(*wallet, item.service);
    if (!handle)
        co_return handle.error();
    const KeychainStatus written = co_await keyring.write(*handle, item, secret);
    co_return written;
}

// ---- remove ----------------------------------------------------------------------------------------------

QCoro::Task<KeychainStatus> DesktopKeychain::State::remove(KeychainItem item, KeychainPrompt prompt)
{
    const auto calls = std::make_shared<BusCalls>(patience.answer);
    const auto keyring = co_await summonKeyring(calls);
    if (!keyring)
        co_return keyring.error();
    KeychainStatus status = KeychainStatus::Success;
    if (keyring->isEmpty())
        status = co_await removeFromService(calls, item, prompt);
    else
        status = co_await removeFromWallet(calls, item, prompt, *keyring);
    co_return status;
}

QCoro::Task<KeychainStatus> DesktopKeychain::State::removeFromService(
    std::shared_ptr<BusCalls> calls, KeychainItem item, KeychainPrompt prompt)
{
    SecretService service(*calls);
    auto found = co_await service.search(item);
    if (!found)
        co_return found.error();
    if (found->isEmpty())
        co_return KeychainStatus::ItemNotFound;

    if (prompt == KeychainPrompt::Allowed) {
        QList<QDBusObjectPath> collections;
        for (const QDBusObjectPath &path : std::as_const(found->locked)) {
            const QDBusObjectPath collection = SecretService::collectionOf(path);
            if (!collections.contains(collection))
                collections.append(collection);
        }
        if (!collections.isEmpty()) {
            const KeychainStatus unlocked = co_await service.unlock(collections);
            if (unlocked != KeychainStatus::Success)
                co_return unlocked;
        }
        // What is still locked the service wants to ask about one by one, which it does when it deletes.
        found->unlocked += std::exchange(found->locked, {});
    }

    KeychainStatus worst
        = found->locked.isEmpty() ? KeychainStatus::Success : KeychainStatus::InteractionNotAllowed;
    for (const QDBusObjectPath &path : std::as_const(found->unlocked)) {
        const KeychainStatus deleted = co_await service.deleteItem(path, prompt);
        // One that is gone is what was asked for.
        if (deleted != KeychainStatus::Success && deleted != KeychainStatus::ItemNotFound)
            worst = deleted;
        if (worst == KeychainStatus::UserCanceled || worst == KeychainStatus::TimedOut)
            break;
    }
    co_return worst;
}

QCoro::Task<KeychainStatus> DesktopKeychain::State::removeFromWallet(
    std::shared_ptr<BusCalls> calls, KeychainItem item, KeychainPrompt prompt, QString daemon)
{
    KWallet keyring(*calls, daemon);
    const auto wallet = co_await keyring.wallet();
    if (!wallet)
        co_return wallet.error();
    const auto absent = co_await keyring.isSurelyAbsent(*wallet, item);
    if (!absent)
        co_return absent.error();
    if (*absent)
        co_return KeychainStatus::ItemNotFound;
    if (prompt == KeychainPrompt::Forbidden) {
        const auto ours = co_await keyring.isOpenForUs(*wallet, item.service);
        if (!ours)
            co_return ours.error();
        if (!*ours)
            co_return KeychainStatus::InteractionNotAllowed;
    }
    const auto handle = co_await keyring.open(*wallet, item.service);
    if (!handle)
        co_return handle.error();
    const KeychainStatus removed = co_await keyring.remove(*handle, item);
    co_return removed;
}

} // namespace orbitledge
