#include "platform/linux/keychain/BusCalls.h"

#include "platform/OneShot.h"
#include "platform/linux/bus/SessionBusCall.h"

#include <QDBusConnection>
#include <QDBusError>
#include <QDBusServiceWatcher>
#include <QElapsedTimer>

namespace orbitledge {

using namespace Qt::StringLiterals;
using std::chrono::milliseconds;

namespace {

KeychainStatus statusOfError(const QDBusMessage &error)
{
    const QString name = error.errorName();
    if (name == "org.freedesktop.Secret.Error.NoSuchObject"_L1)
        return KeychainStatus::ItemNotFound;
    if (name == "org.freedesktop.Secret.Error.IsLocked"_L1)
        return KeychainStatus::InteractionNotAllowed;
    // The bus says so of a service that went away. Where we stopped waiting, nobody said anything.
    if (isSilence(error))
        return error.service().isEmpty() ? KeychainStatus::TimedOut : KeychainStatus::IoError;
    switch (QDBusError(error).type()) {
    case QDBusError::AccessDenied:
        return KeychainStatus::AuthFailed;
    case QDBusError::UnknownObject:
        return KeychainStatus::ItemNotFound;
    default:
        return KeychainStatus::IoError;
    }
}

} // namespace

QCoro::Task<tl::expected<QDBusMessage, KeychainStatus>> BusCalls::call(QDBusMessage message)
{
    if (m_left <= milliseconds::zero())
        co_return tl::unexpected(KeychainStatus::TimedOut);
    QElapsedTimer elapsed;
    elapsed.start();
    const QDBusMessage reply = co_await callSessionBus(message, m_left);
    m_left -= milliseconds(elapsed.elapsed());
    if (isAnswer(reply))
        co_return reply;
    co_return tl::unexpected(statusOfError(reply));
}

QCoro::Task<tl::expected<QDBusMessage, KeychainStatus>> BusCalls::callPatiently(QDBusMessage message)
{
    const QDBusMessage reply = co_await callSessionBusPatiently(message);
    restartTime();
    if (isAnswer(reply))
        co_return reply;
    co_return tl::unexpected(statusOfError(reply));
}

QCoro::Task<KeychainStatus> BusCalls::summon(QString name)
{
    QDBusMessage hasOwner = busMethod(u"NameHasOwner"_s);
    hasOwner << name;
    const auto owned = co_await call(hasOwner);
    if (!owned)
        co_return owned.error();
    if (owned->arguments().value(0).toBool())
        co_return KeychainStatus::Success;

    const auto activatable = co_await call(busMethod(u"ListActivatableNames"_s));
    if (!activatable)
        co_return activatable.error();
    if (!activatable->arguments().value(0).toStringList().contains(name))
        co_return KeychainStatus::ItemNotFound;
    QDBusMessage start = busMethod(u"StartServiceByName"_s);
    start << name << 0U;
    const auto started = co_await call(start);
    if (started)
        co_return KeychainStatus::Success;
    // One that ends at its start is as good as none: the session may be about to start it in its own way.
    co_return started.error() == KeychainStatus::IoError ? KeychainStatus::ItemNotFound : started.error();
}

QCoro::Task<KeychainStatus> BusCalls::summon(QString name, milliseconds comingUp)
{
    // Watches from before the first question on, so that it cannot come in between unseen.
    OneShot<bool> came;
    const QDBusServiceWatcher watcher(
        name, QDBusConnection::sessionBus(), QDBusServiceWatcher::WatchForRegistration);
    QObject::connect(
        &watcher, &QDBusServiceWatcher::serviceRegistered, &came, [&came] { came.settle(true); });

    const KeychainStatus summoned = co_await summon(name);
    if (summoned != KeychainStatus::ItemNotFound)
        co_return summoned;
    const std::optional<bool> here = co_await came.settledWithin(comingUp);
    co_return here ? KeychainStatus::Success : KeychainStatus::NotAvailable;
}

QCoro::Task<tl::expected<QString, KeychainStatus>> BusCalls::owner(QString name)
{
    QDBusMessage ask = busMethod(u"GetNameOwner"_s);
    ask << name;
    const auto reply = co_await call(ask);
    if (!reply)
        co_return tl::unexpected(reply.error());
    co_return reply->arguments().value(0).toString();
}

} // namespace orbitledge
