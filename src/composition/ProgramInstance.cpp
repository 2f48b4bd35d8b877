#include "composition/ProgramInstance.h"

#include "BuildInfo.h"
#include "composition/ProgramLocks.h"
#include "platform/Pause.h"
#include "platform/linux/application/RunningApplication.h"

#include <chrono>
#include <utility>

namespace orbitledge {

using namespace Qt::StringLiterals;

namespace {

/// True where this process has the name, or there is no bus to have it on; false where another one has it and
/// was told.
QCoro::Task<tl::expected<bool, QString>> takeName(
    std::shared_ptr<DesktopApplication> application, std::optional<ApplicationAction> action, QString token)
{
    const RunningApplication running(QString::fromLatin1(build::applicationId));
    while (true) {
        const DesktopApplication::Claim end = co_await application->claim();
        if (end != DesktopApplication::Claim::Elsewhere)
            co_return true;
        if (!action)
            co_return false;
        auto asking = running.request(*action, token);
        const auto heard = co_await asking;
        if (!heard)
            co_return tl::make_unexpected(heard.error());
        if (*heard)
            co_return false;
        co_await pauseFor(ProgramLocks::pause); // it has just ended
    }
}

} // namespace

ProgramInstance::ProgramInstance(
    std::shared_ptr<DesktopApplication> application, std::optional<ProcessLock> lock)
    : m_application(std::move(application))
    , m_lock(std::move(lock))
{
}

QCoro::Task<tl::expected<std::optional<ProgramInstance>, QString>> ProgramInstance::begin(
    std::optional<ApplicationAction> action, QString activationToken)
{
    const auto application = std::make_shared<DesktopApplication>(QString::fromLatin1(build::applicationId));
    auto takingName = takeName(application, action, activationToken);
    const auto hasName = co_await takingName;
    if (!hasName)
        co_return tl::make_unexpected(hasName.error());
    if (!*hasName || action == ApplicationAction::Quit)
        co_return std::optional<ProgramInstance>();

    constexpr auto patience = std::chrono::seconds(3);
    auto takingLock = ProgramLocks::takeInstance(QDeadlineTimer(patience));
    ProgramLocks::Attempt lock = co_await takingLock;
    const bool isElsewhere = lock && !*lock;
    if (isElsewhere && action)
        co_return tl::make_unexpected(
            u"Orbitledge is running already, but cannot be reached over the session bus."_s);
    if (isElsewhere)
        co_return std::optional<ProgramInstance>();
    co_return std::optional(
        ProgramInstance(application, lock ? *std::move(lock) : std::optional<ProcessLock>()));
}

} // namespace orbitledge
