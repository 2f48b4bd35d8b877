#include "platform/linux/keychain/DesktopKeychain.h"

#include "platform/OneShot.h"
#include "platform/SerialQueue.h"
#include "platform/Turns.h"
#include "platform/linux/keychain/BusCalls.h"
#include "platform/linux/keychain/KWallet.h"
#include "platform/linux/keychain/PreferredWallet.h"
#include "platform/linux/keychain/SecretLibrary.h"
#include "platform/linux/keychain/SecretService.h"

#include <QAbstractEventDispatcher>
#include <QDBusConnection>
#include <QElapsedTimer>
#include <QLoggingCategory>
#include <QThread>
#include <qt6keychain/keychain.h>

#include <type_traits>

namespace orbitledge {

using namespace Qt::StringLiterals;
using std::chrono::milliseconds;

namespace {

Q_LOGGING_CATEGORY(lcKeychain, "orbitledge.keychain")

/// What the first operation of all has to do and to load, away from the thread of the windows: to connect to
/// the bus means to wait for it.
struct Desktop {
    bool isKnown = false;
    bool hasBus = false;
    /// Null where it is not installed.
    std::shared_ptr<const SecretLibrary> library = {};
};

Desktop connectToDesktop()
{
    return {.isKnown = true,
        .hasBus = QDBusConnection::sessionBus().isConnected(),
        .library = SecretLibrary::load()};
}

struct JobResult {
    QKeychain::Error error = QKeychain::NoError;
    QByteArray secret;
};

/// Errors where the service does not know more than that it failed.
KeychainStatus statusOfJob(QKeychain::Error error)
{
    switch (error) {
    case QKeychain::NoError:
        return KeychainStatus::Success;
    case QKeychain::EntryNotFound:
        return KeychainStatus::ItemNotFound;
    case QKeychain::AccessDeniedByUser:
        return KeychainStatus::UserCanceled;
    case QKeychain::AccessDenied:
        return KeychainStatus::AuthFailed;
    case QKeychain::NoBackendAvailable:
    case QKeychain::NotImplemented:
        return KeychainStatus::NotAvailable;
    case QKeychain::CouldNotDeleteEntry:
    case QKeychain::OtherError:
        break;
    }
    return KeychainStatus::IoError;
}

/// A job of QtKeychain's that is about to start. It belongs to itself and goes when it has finished: until
/// then libsecret holds its address, and nothing can call it back.
template <typename Job> Job *newJob(const KeychainItem &item)
{
    auto *const job = new Job(item.service);
    job->setKey(item.account);
    job->setInsecureFallback(false);
    job->setAutoDelete(false);
    QObject::connect(job, &QKeychain::Job::finished, job, &QObject::deleteLater);
    return job;
}

} // namespace

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

    /// May the person be asked while a job runs?
    enum class Asking { No, Perhaps };

    /// Starts the job and waits for it, TimedOut where it takes too long. Where a person may be asked, a
    /// service that still answers other calls is not too slow.
    static QCoro::Task<tl::expected<JobResult, KeychainStatus>> finish(
        std::shared_ptr<BusCalls> calls, QKeychain::Job *job, Asking asking);

    /// Waits for what was started, TimedOut where it takes too long.
    template <typename Result>
    static QCoro::Task<tl::expected<Result, KeychainStatus>> wait(
        std::shared_ptr<BusCalls> calls, std::shared_ptr<OneShot<Result>> finished, Asking asking);

    /// Before each job that uses libsecret.
    QCoro::Task<KeychainStatus> prepareSecretLibrary(std::shared_ptr<BusCalls> calls);

    KeychainPatience patience;
    std::shared_ptr<Turns> turns = std::make_shared<Turns>();

    Desktop desktop;
    bool hasWaitedInVain = false;
    /// The unique name of the service that libsecret used last for this store.
    QString lastService;
};

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
    if (!desktop.isKnown) {
        SerialQueue background;
        desktop = co_await background.run([] { return connectToDesktop(); });
    }
    if (!desktop.hasBus)
        co_return tl::unexpected(KeychainStatus::NotAvailable);

    if (const QString daemon = preferredWalletDaemon(); !daemon.isEmpty()) {
        const KeychainStatus summoned = co_await calls->summon(daemon);
        if (summoned == KeychainStatus::Success)
            co_return daemon;
        if (summoned != KeychainStatus::ItemNotFound)
            co_return tl::unexpected(summoned);
    }
    const milliseconds comingUp = hasWaitedInVain ? milliseconds::zero() : patience.serviceStart;
    const KeychainStatus summoned = co_await calls->summon(SecretService::name, comingUp);
    hasWaitedInVain = summoned == KeychainStatus::NotAvailable;
    if (summoned != KeychainStatus::Success)
        co_return tl::unexpected(summoned);
    co_return QString();
}

QCoro::Task<KeychainStatus> DesktopKeychain::State::prepareSecretLibrary(std::shared_ptr<BusCalls> calls)
{
    if (!desktop.library) {
        qCWarning(lcKeychain, "libsecret is not installed: the keyring cannot be used");
        co_return KeychainStatus::NotAvailable;
    }
    const QAbstractEventDispatcher *const dispatcher = QAbstractEventDispatcher::instance();
    if (dispatcher == nullptr || !dispatcher->inherits("QEventDispatcherGlib")) {
        qCWarning(lcKeychain, "the event loop is not GLib's (QT_NO_GLIB?): the keyring cannot be used");
        co_return KeychainStatus::IoError;
    }
    const auto service = co_await calls->owner(SecretService::name);
    if (!service)
        co_return service.error();
    // The library goes on with the encrypted session that it has, also where the service was started anew
    // since and knows nothing of it.
    if (*service != std::exchange(lastService, *service))
        desktop.library->disconnectFromService();
    co_return KeychainStatus::Success;
}

QCoro::Task<tl::expected<JobResult, KeychainStatus>> DesktopKeychain::State::finish(
    std::shared_ptr<BusCalls> calls, QKeychain::Job *job, Asking asking)
{
    const auto finished = std::make_shared<OneShot<JobResult>>();
    auto *const shot = finished.get();
    QObject::connect(job, &QKeychain::Job::finished, shot, [shot](QKeychain::Job *done) {
        const auto *const reading = qobject_cast<QKeychain::ReadPasswordJob *>(done);
        shot->settle({done->error(), reading != nullptr ? reading->binaryData() : QByteArray()});
    });
    job->start();
    const auto result = co_await wait<JobResult>(calls, finished, asking);
    co_return result;
}

template <typename Result>
QCoro::Task<tl::expected<Result, KeychainStatus>> DesktopKeychain::State::wait(
    std::shared_ptr<BusCalls> calls, std::shared_ptr<OneShot<Result>> finished, Asking asking)
{
    while (true) {
        const milliseconds limit = asking == Asking::Perhaps ? calls->limit() : calls->left();
        const std::optional<Result> result = co_await finished->settledWithin(limit);
        if (result)
            co_return *result;
        if (asking == Asking::No)
            co_return tl::unexpected(KeychainStatus::TimedOut);
        calls->restartTime();
        SecretService service(*calls);
        const auto sign = co_await service.defaultCollection();
        if (!sign && sign.error() == KeychainStatus::TimedOut)
            co_return tl::unexpected(KeychainStatus::TimedOut);
    }
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
    const KeychainStatus prepared = co_await prepareSecretLibrary(calls);
    if (prepared != KeychainStatus::Success)
        co_return tl::unexpected(prepared);
    SecretService service(*calls);
    auto found = co_await service.search(item);
    if (!found)
        co_return tl::unexpected(found.error());
    if (found->isEmpty())
        co_return tl::unexpected(KeychainStatus::ItemNotFound);

    // The library takes what is unlocked. It would unlock by itself too, but call it "not found" when the
    // person declines.
    if (found->unlocked.isEmpty()) {
        const auto standard = co_await service.defaultCollection();
        if (!standard)
            co_return tl::unexpected(standard.error());
        QDBusObjectPath collection = SecretService::collectionOf(found->locked.constFirst());
        for (const QDBusObjectPath &path : std::as_const(found->locked)) {
            if (SecretService::collectionOf(path) == *standard)
                collection = *standard;
        }
        const auto locked = co_await service.isCollectionLocked(collection);
        if (!locked)
            co_return tl::unexpected(locked.error());
        if (*locked) {
            const QList<QDBusObjectPath> collections{collection};
            const KeychainStatus unlocked = co_await service.unlock(collections);
            if (unlocked != KeychainStatus::Success)
                co_return tl::unexpected(unlocked);
            found = co_await service.search(item);
            if (!found)
                co_return tl::unexpected(found.error());
            if (found->isEmpty())
                co_return tl::unexpected(KeychainStatus::ItemNotFound);
        }
    }

    // Locked in a collection that is not: the service asks the person for each item, and remembers the
    // consent for one connection to the bus. The library has its own, so it has to raise this prompt.
    const Asking asking = found->unlocked.isEmpty() ? Asking::Perhaps : Asking::No;
    const auto answered = std::make_shared<OneShot<SecretLibrary::Answer>>();
    const std::function<void(SecretLibrary::Answer)> settle
        = [waiting = std::weak_ptr(answered)](SecretLibrary::Answer answer) {
              if (const auto shot = waiting.lock())
                  shot->settle(std::move(answer));
          };
    using enum SecretLibrary::Unlocking;
    SecretLibrary::read(desktop.library, item, asking == Asking::Perhaps ? Yes : No, settle);
    const auto result = co_await wait<SecretLibrary::Answer>(calls, answered, asking);
    if (!result)
        co_return tl::unexpected(result.error());
    if (result->status == KeychainStatus::Success)
        co_return result->secret;
    if (result->status != KeychainStatus::ItemNotFound)
        co_return tl::unexpected(result->status);

    const auto stillThere = co_await service.search(item);
    if (!stillThere)
        co_return tl::unexpected(stillThere.error());
    if (stillThere->isEmpty())
        co_return tl::unexpected(KeychainStatus::ItemNotFound);
    co_return tl::unexpected(
        asking == Asking::Perhaps ? KeychainStatus::UserCanceled : KeychainStatus::AuthFailed);
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
    const KeychainStatus opened = co_await keyring.open(*wallet, item.service);
    if (opened != KeychainStatus::Success)
        co_return tl::unexpected(opened);
    auto *const job = newJob<QKeychain::ReadPasswordJob>(item);
    const auto result = co_await finish(calls, job, Asking::No);
    if (!result)
        co_return tl::unexpected(result.error());
    if (result->error != QKeychain::NoError)
        co_return tl::unexpected(statusOfJob(result->error));
    co_return result->secret;
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
    const KeychainStatus prepared = co_await prepareSecretLibrary(calls);
    if (prepared != KeychainStatus::Success)
        co_return prepared;
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

    auto *const job = newJob<QKeychain::WritePasswordJob>(item);
    job->setBinaryData(secret); // as text, it would end at the first zero byte
    const auto result = co_await finish(calls, job, Asking::Perhaps);
    if (!result)
        co_return result.error();
    if (result->error == QKeychain::NoError)
        co_await tidyUpAfterWrite(calls, item, *collection);
    co_return statusOfJob(result->error);
}

/// Labels the new item, and takes away what else has its name, lest it be read one day. The secret is safe by
/// now, so nothing here is a failure of the write.
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
        if (isWritten && SecretService::collectionOf(path) == collection)
            co_await service.setLabel(path, item.label);
        else if (found->unlocked.contains(path))
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
    const KeychainStatus opened = co_await keyring.open(*wallet, item.service);
    if (opened != KeychainStatus::Success)
        co_return opened;
    auto *const job = newJob<QKeychain::WritePasswordJob>(item);
    job->setBinaryData(secret);
    const auto result = co_await finish(calls, job, Asking::No);
    co_return result ? statusOfJob(result->error) : result.error();
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

/// Without libsecret, which would unlock what it finds.
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
    const KeychainStatus opened = co_await keyring.open(*wallet, item.service);
    if (opened != KeychainStatus::Success)
        co_return opened;
    auto *const job = newJob<QKeychain::DeletePasswordJob>(item);
    const auto result = co_await finish(calls, job, Asking::No);
    co_return result ? statusOfJob(result->error) : result.error();
}

} // namespace orbitledge
