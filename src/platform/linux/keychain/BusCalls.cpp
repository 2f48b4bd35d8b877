#include "platform/linux/keychain/BusCalls.h"

#include "platform/OneShot.h"
#include "platform/linux/bus/NameOwner.h"
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

template <typename Answer> QCoro::Task<Answer> BusCalls::timed(QCoro::Task<Answer> asking)
{
    QElapsedTimer elapsed;
    elapsed.start();
    Answer answer = co_await asking;
    m_left -= milliseconds(elapsed.elapsed());
    co_return answer;
}

QCoro::Task<tl::expected<QDBusMessage, KeychainStatus>> BusCalls::call(QDBusMessage message)
{
    if (!hasTime())
        co_return tl::unexpected(KeychainStatus::TimedOut);
    auto calling = timed(callSessionBus(message, m_left));
    const QDBusMessage reply = co_await calling;
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
    if (!hasTime())
        co_return KeychainStatus::TimedOut;
    auto asking = timed(hasNameOwner(name, m_left));
    const auto isThere = co_await asking;
    if (!isThere)
        co_return statusOfError(isThere.error());
    if (*isThere)
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
    if (!hasTime())
        co_return tl::unexpected(KeychainStatus::TimedOut);
    auto asking = timed(nameOwner(name, m_left));
    const auto owner = co_await asking;
    if (!owner)
        co_return tl::unexpected(statusOfError(owner.error()));
    if (owner->isEmpty())
        co_return tl::unexpected(KeychainStatus::IoError);
    co_return *owner;
}

} // namespace orbitledge
