#include "platform/linux/notifications/SystemdManager.h"

#include "platform/OneShot.h"
#include "platform/linux/bus/NameOwner.h"
#include "platform/linux/bus/SessionBusCall.h"
#include "platform/linux/bus/SessionBusSignal.h"

#include <QDBusVariant>

#include <algorithm>

namespace orbitledge {

using namespace Qt::StringLiterals;
using std::chrono::milliseconds;

namespace {

const QString managerPath = u"/org/freedesktop/systemd1"_s;
constexpr QLatin1StringView noSuchUnit("org.freedesktop.systemd1.NoSuchUnit");
const QString managerInterface = u"org.freedesktop.systemd1.Manager"_s;

QString silence()
{
    return u"systemd does not answer"_s;
}

QString reasonOf(const QDBusMessage &error)
{
    if (isSilence(error))
        return silence();
    // Some of its messages have more lines, and their own full stop.
    QString words = error.errorMessage().section(u'\n', 0, 0).trimmed();
    while (words.endsWith(u'.'))
        words.chop(1);
    return words.isEmpty() ? u"systemd answers with %1"_s.arg(error.errorName())
                           : u"systemd says “%1”"_s.arg(words);
}

SystemdManager::Outcome outcomeOf(const QDBusMessage &reply)
{
    if (!isAnswer(reply))
        return tl::make_unexpected(reasonOf(reply));
    return {};
}

} // namespace

QCoro::Task<tl::expected<std::shared_ptr<SystemdManager>, QString>> SystemdManager::find(milliseconds limit)
{
    const bool hasBus = co_await reachSessionBus();
    if (!hasBus)
        co_return std::shared_ptr<SystemdManager>();
    const QDeadlineTimer deadline(limit);
    // A call to the name itself would have the bus start something.
    const auto owner = co_await nameOwner(u"org.freedesktop.systemd1"_s, limit);
    if (!owner)
        co_return tl::make_unexpected(u"the session bus does not tell whether systemd is there"_s);
    if (owner->isEmpty())
        co_return std::shared_ptr<SystemdManager>();
    co_return std::make_shared<SystemdManager>(*owner, deadline);
}

SystemdManager::SystemdManager(QString uniqueName, QDeadlineTimer deadline)
    : m_uniqueName(std::move(uniqueName))
    , m_deadline(deadline)
{
    hearSignal(
        {.sender = m_uniqueName, .path = managerPath, .interface = managerInterface, .name = u"JobRemoved"_s},
        this, &SystemdManager::removeJob);
}

QDBusMessage SystemdManager::method(const QString &name) const
{
    return QDBusMessage::createMethodCall(m_uniqueName, managerPath, managerInterface, name);
}

milliseconds SystemdManager::left() const
{
    return std::max(
        milliseconds(1), std::chrono::duration_cast<milliseconds>(m_deadline.remainingTimeAsDuration()));
}

QCoro::Task<tl::expected<bool, QString>> SystemdManager::isActive(QString unit)
{
    QDBusMessage find = method(u"GetUnit"_s);
    find << unit;
    const QDBusMessage found = co_await callSessionBus(find, left());
    if (found.errorName() == noSuchUnit)
        co_return false;
    if (!isAnswer(found))
        co_return tl::make_unexpected(reasonOf(found));
    const QString path = qvariant_cast<QDBusObjectPath>(found.arguments().value(0)).path();
    QDBusMessage ask
        = QDBusMessage::createMethodCall(m_uniqueName, path, u"org.freedesktop.DBus.Properties"_s, u"Get"_s);
    ask << u"org.freedesktop.systemd1.Unit"_s << u"ActiveState"_s;
    const QDBusMessage answer = co_await callSessionBus(ask, left());
    if (!isAnswer(answer))
        co_return tl::make_unexpected(reasonOf(answer));
    const QString state = qvariant_cast<QDBusVariant>(answer.arguments().value(0)).variant().toString();
    co_return state == "active"_L1 || state == "activating"_L1 || state == "reloading"_L1;
}

QCoro::Task<SystemdManager::Outcome> SystemdManager::reload()
{
    const QDBusMessage reply = co_await callSessionBus(method(u"Reload"_s), left());
    co_return outcomeOf(reply);
}

QCoro::Task<SystemdManager::Outcome> SystemdManager::restart(QString unit)
{
    QDBusMessage message = method(u"RestartUnit"_s);
    message << unit << u"replace"_s;
    const QDBusMessage reply = co_await callSessionBus(message, left());
    if (!isAnswer(reply))
        co_return tl::make_unexpected(reasonOf(reply));
    const Outcome outcome = co_await finish(qvariant_cast<QDBusObjectPath>(reply.arguments().value(0)));
    co_return outcome;
}

QCoro::Task<SystemdManager::Outcome> SystemdManager::stop(QString unit)
{
    QDBusMessage message = method(u"StopUnit"_s);
    message << unit << u"replace"_s;
    const QDBusMessage reply = co_await callSessionBus(message, left());
    if (reply.errorName() == noSuchUnit)
        co_return {};
    if (!isAnswer(reply))
        co_return tl::make_unexpected(reasonOf(reply));
    const Outcome outcome = co_await finish(qvariant_cast<QDBusObjectPath>(reply.arguments().value(0)));
    co_return outcome;
}

QCoro::Task<SystemdManager::Outcome> SystemdManager::finish(QDBusObjectPath job)
{
    OneShot<QString> ended;
    if (m_results.contains(job.path()))
        ended.settle(m_results.value(job.path()));
    m_awaitedJob = job.path();
    m_awaitedResult = &ended;
    const std::optional<QString> result = co_await ended.settledWithin(left());
    m_awaitedResult = nullptr;
    if (!result)
        co_return tl::make_unexpected(silence());
    if (*result != "done"_L1)
        co_return tl::make_unexpected(u"systemd ends the request as “%1”"_s.arg(*result));
    co_return {};
}

void SystemdManager::removeJob(
    uint /*number*/, const QDBusObjectPath &job, const QString & /*unit*/, const QString &result)
{
    m_results.insert(job.path(), result);
    if (m_awaitedResult != nullptr && job.path() == m_awaitedJob)
        m_awaitedResult->settle(result);
}

} // namespace orbitledge
