#include "platform/linux/notifications/SystemdDelivery.h"

#include "platform/SerialQueue.h"
#include "platform/Turns.h"
#include "platform/linux/notifications/SystemdManager.h"
#include "platform/linux/notifications/SystemdUnitFiles.h"
#include "platform/linux/notifications/SystemdUnits.h"

namespace orbitledge {

using namespace Qt::StringLiterals;

namespace {

using Outcome = tl::expected<void, QString>;

} // namespace

/// What the calls share, which they keep alive until the last of them is through.
struct SystemdDelivery::State {
    explicit State(Settings someSettings)
        : settings(std::move(someSettings))
        , name(unitName(settings.applicationId))
        , files(std::make_shared<SystemdUnitFiles>(name,
              SystemdUnitFiles::Folders{
                  .configuration = settings.configurationFolder, .data = settings.dataFolder},
              settings.files))
    {
    }

    static QCoro::Task<Outcome> arrange(std::shared_ptr<State> state, std::optional<Instant> next);
    QCoro::Task<Outcome> start(Instant next);
    QCoro::Task<Outcome> clear();

    Settings settings;
    QString name;
    // Handed to the jobs, which must not hold the queue that they run on.
    std::shared_ptr<const SystemdUnitFiles> files;
    std::shared_ptr<Turns> turns = std::make_shared<Turns>();
    SerialQueue background;
    /// That systemd has the timer, and not only the files: somebody may have stopped it, or systemd started
    /// before the person's folder was there. Once in a run is enough.
    bool hasLooked = false;
};

SystemdDelivery::SystemdDelivery(Settings settings)
    : m_state(std::make_shared<State>(std::move(settings)))
{
}

SystemdDelivery::~SystemdDelivery() = default;

QString SystemdDelivery::unitName(const QString &applicationId)
{
    return applicationId + u".reminders"_s;
}

QCoro::Task<tl::expected<void, QString>> SystemdDelivery::arrange(std::optional<Instant> next)
{
    return Turns::take(m_state->turns, [state = m_state, next] { return State::arrange(state, next); });
}

QCoro::Task<Outcome> SystemdDelivery::State::arrange(
    std::shared_ptr<State> state, std::optional<Instant> next)
{
    Outcome outcome;
    if (next)
        outcome = co_await state->start(*next);
    else
        outcome = co_await state->clear();
    if (outcome)
        co_return {};
    const QString sentence = next ? u"Reminders cannot be delivered while Orbitledge is not running: %1."_s
                                  : u"Orbitledge cannot take back that it is started for reminders: %1."_s;
    co_return tl::make_unexpected(sentence.arg(outcome.error()));
}

QCoro::Task<Outcome> SystemdDelivery::State::start(Instant next)
{
    const auto units = unitsForReminders(next, settings.programPath, settings.variable);
    if (!units)
        co_return tl::make_unexpected(units.error());

    const auto look = [there = files, wanted = *units] { return there->areInForce(wanted); };
    auto looking = background.run(look);
    const bool areInForce = co_await looking;
    if (areInForce && hasLooked)
        co_return {};

    const auto manager = co_await SystemdManager::find(settings.patience);
    if (!manager)
        co_return tl::make_unexpected(manager.error());
    if (*manager == nullptr)
        co_return {};
    if (areInForce) {
        const auto isWaiting = co_await (*manager)->isActive(name + u".timer"_s);
        if (!isWaiting)
            co_return tl::make_unexpected(isWaiting.error());
        hasLooked = *isWaiting;
        if (hasLooked)
            co_return {};
    }

    const auto write = [there = files, wanted = *units] { return there->write(wanted); };
    auto writing = background.run(write);
    const Outcome written = co_await writing;
    if (!written)
        co_return written;
    const Outcome reloaded = co_await (*manager)->reload();
    if (!reloaded)
        co_return reloaded;
    const Outcome restarted = co_await (*manager)->restart(name + u".timer"_s);
    if (!restarted)
        co_return restarted;
    const auto mark = [there = files] { return there->markInForce(); };
    auto marking = background.run(mark);
    const Outcome marked = co_await marking;
    hasLooked = marked.has_value();
    co_return marked;
}

/// The files go also where systemd fails, so that nothing comes back with the next login.
QCoro::Task<Outcome> SystemdDelivery::State::clear()
{
    const auto look = [there = files] { return there->leaveTraces(); };
    auto looking = background.run(look);
    const bool leavesTraces = co_await looking;
    if (!leavesTraces)
        co_return {};

    const auto manager = co_await SystemdManager::find(settings.patience);
    Outcome stopped;
    if (!manager)
        stopped = tl::make_unexpected(manager.error());
    else if (*manager != nullptr)
        stopped = co_await (*manager)->stop(name + u".timer"_s);

    const auto remove = [there = files, isStopped = stopped.has_value()] {
        const Outcome removed = there->removeTimer();
        return removed && isStopped ? there->removeService() : removed;
    };
    auto removing = background.run(remove);
    const Outcome removed = co_await removing;
    if (!stopped)
        co_return stopped;
    if (!removed)
        co_return removed;
    if (*manager == nullptr)
        co_return {};
    const Outcome reloaded = co_await (*manager)->reload();
    co_return reloaded;
}

} // namespace orbitledge
