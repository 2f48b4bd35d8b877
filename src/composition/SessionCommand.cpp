#include "composition/SessionCommand.h"

#include "BuildInfo.h"
#include "composition/ProgramLocks.h"
#include "composition/SystemParts.h"
#include "logos/cache/LogoCache.h"
#include "platform/Pause.h"
#include "platform/linux/DetachedProgram.h"
#include "platform/linux/PosixFileStore.h"
#include "platform/linux/XdgDirectories.h"
#include "platform/linux/application/RunningApplication.h"
#include "service/ServiceAddresses.h"

#include <QDeadlineTimer>

#include <chrono>

namespace orbitledge {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

using Performed = tl::expected<SessionOutcome, QString>;

/// Long enough for another command that waits for a slow service.
constexpr auto turnPatience = 60s;

/// Long enough for a notification daemon that is only just starting.
constexpr auto deliveryLimit = 60s;

QByteArray variable(const char *name)
{
    return qgetenv(name);
}

struct WorkDone {
    SessionOutcome outcome;
    /// There are reminders to be shown at once.
    bool isReminderDue = false;
};

/// While it goes on, and its task is there, this process is in charge of the reminders.
QCoro::Task<tl::expected<WorkDone, QString>> work(SessionRequest request)
{
    auto parts = SystemParts::make(Presence::Short);
    if (!parts)
        co_return tl::make_unexpected(std::move(parts.error()));
    const auto store = std::make_shared<AppStore>(parts->store, parts->identity);
    QObject::connect(store.get(), &AppStore::forgotten, store.get(), [] {
        const XdgDirectories directories(variable);
        LogoCache(LogoCache::defaultLocation(directories), std::make_shared<PosixFileStore>()).clear();
    });
    const auto session = parts->makeSession(store);
    auto performing = session->perform(std::move(request));
    const SessionOutcome outcome = co_await performing;
    WorkDone done{.outcome = outcome};
    if (outcome.isDone)
        done.isReminderDue = co_await parts->notifications->prepareDelivery();
    co_return WorkDone(done);
}

QCoro::Task<Performed> performHere(SessionRequest request)
{
    tl::expected<WorkDone, QString> done;
    {
        auto working = work(std::move(request));
        done = co_await working;
    }
    if (!done)
        co_return tl::make_unexpected(done.error());
    // What is due today is shown today. Who shows it stays for the clicks, which this process does not.
    if (done->isReminderDue) {
        auto delivering
            = startDetached({.program = QString::fromStdString(SystemParts::programPath().string()),
                                .arguments = {u"deliver-reminders"_s}},
                {}, deliveryLimit);
        (void)co_await delivering;
    }
    co_return SessionOutcome(done->outcome);
}

} // namespace

SessionPlace sessionPlace(const QUrl &api)
{
    return {
        .api = api.toString(),
        .cacheFile
        = QString::fromStdString(SnapshotCache::defaultLocation(XdgDirectories(variable)).string()),
    };
}

QCoro::Task<Performed> performSession(SessionRequest request)
{
    const auto addresses = ServiceAddresses::fromEnvironment(variable);
    if (!addresses)
        co_return tl::make_unexpected(addresses.error());
    const RunningApplication running(QString::fromLatin1(build::applicationId));
    const QDeadlineTimer deadline(turnPatience);
    while (true) {
        auto asking = running.perform(request, sessionPlace(addresses->api));
        const auto answer = co_await asking;
        if (!answer)
            co_return tl::make_unexpected(answer.error());
        if (const std::optional<SessionOutcome> &done = *answer)
            co_return SessionOutcome(*done);
        // Another command may have it, or a program that is only just starting.
        const ProgramLocks::Attempt turn = ProgramLocks::takeSession();
        // Where no lock can be had there is no folder to share either.
        if (!turn || *turn) {
            auto performing = performHere(std::move(request));
            co_return co_await performing;
        }
        if (deadline.hasExpired())
            co_return tl::make_unexpected(
                u"Another command, or Orbitledge itself, is at work and does not come to an end. Try again later."_s);
        co_await pauseFor(ProgramLocks::pause);
    }
}

} // namespace orbitledge
