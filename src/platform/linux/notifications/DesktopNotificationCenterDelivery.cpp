#include "model/FloorDivide.h"
#include "platform/linux/notifications/DesktopNotificationCenterState.h"

#include <QDeadlineTimer>

#include <utility>

namespace orbitledge {

using namespace std::chrono_literals;
using std::chrono::milliseconds;

LocalDate DesktopNotificationCenter::State::today() const
{
    constexpr qint64 perDay = 86'400'000;
    return LocalDate::fromDaysSinceEpoch(floorDivide(m_parts.timeZone().wallClock(now()), perDay));
}

/// Shows what is due until nothing is, or nobody is there to show it: false in that case.
QCoro::Task<bool> DesktopNotificationCenter::State::deliver(Self self)
{
    if (self->m_isDelivering) {
        self->m_isToLookAgain = true;
        co_return true;
    }
    self->m_isDelivering = true;
    self->m_isToLookAgain = true;
    bool isDone = true;
    while (self->m_isToLookAgain) {
        self->m_isToLookAgain = false;
        isDone = co_await deliverRound(self);
    }
    self->m_isDelivering = false;
    if (self->isClosed())
        co_return isDone;
    self->m_isUnshown = !isDone;
    if (isDone && self->m_isSaved)
        self->m_retry.reset();
    else
        self->lookAgainLater(); // also to save it, where only that failed
    self->setAlarm();
    if (!isDone)
        arrangeUnattended(self, self->nextDelivery());
    co_return isDone;
}

QCoro::Task<bool> DesktopNotificationCenter::State::deliverRound(Self self)
{
    // Who waited too long for the display has left the file to another process.
    while (!self->isClosed() && self->m_store->isOpen()) {
        self->queue().followClock(self->now());
        self->queue().expire(self->now(), self->today());
        if (!self->queue().hasDue(self->now())) {
            (void)co_await save(self);
            break;
        }
        const bool isAwake = co_await awakenDisplay(self);
        if (!isAwake)
            co_return false;
        // Another one shows nothing yet of what could have been replaced: it counts as done.
        self->queue().expire(self->now(), self->today());
        const auto batch = self->queue().nextBatch(self->now(), self->m_startOfRun.value_or(self->now()));
        if (!batch || self->isClosed() || !self->m_store->isOpen())
            continue; // taken away meanwhile
        const bool isShown = co_await showAndRecord(self, *batch);
        if (!isShown)
            co_return false;
    }
    co_return true;
}

QCoro::Task<bool> DesktopNotificationCenter::State::showAndRecord(Self self, NotificationBatch batch)
{
    const auto recording = std::make_shared<Completion>();
    self->m_recording = recording;
    const bool isShown = co_await showBatch(self, std::move(batch));
    // Where it cannot be saved, it is still known until this process ends. Another one may be in charge by
    // now.
    if (isShown && self->m_store->isOpen())
        (void)co_await save(self);
    self->m_recording.reset();
    recording->complete();
    co_return isShown;
}

QCoro::Task<bool> DesktopNotificationCenter::State::showBatch(Self self, NotificationBatch batch)
{
    NotificationDisplay &display = *self->m_parts.display;
    const QString name = display.name();
    const bool isReplacing = batch.replaced && batch.replaced->display == name;
    const auto number = co_await display.show(batch.content, isReplacing ? batch.replaced->number : 0);
    if (!number)
        co_return false;
    const bool isWanted = self->queue().recordShown(batch, self->now(), name, *number, display.sender());
    if (!isWanted && display.name() == name)
        display.close(*number);
    co_return true;
}

QCoro::Task<bool> DesktopNotificationCenter::State::awakenDisplay(Self self)
{
    const bool isAwake = co_await self->m_parts.display->awaken();
    if (isAwake)
        self->queue().recordDisplay(self->m_parts.display->name());
    co_return isAwake;
}

QCoro::Task<NotificationDelivery> DesktopNotificationCenter::State::deliverDue(Self self, milliseconds limit)
{
    const bool isOpen = co_await opened(self, 0ms);
    if (!isOpen)
        co_return self->m_store->failure().isEmpty() ? NotificationDelivery::Elsewhere
                                                     : NotificationDelivery::Unreadable;
    // Who shows them may not see whose they are, and then cannot follow the switch.
    const NotificationSwitchPositions switches = co_await self->m_parts.switches->read();
    if (!switches.allows) {
        // It may be on by then.
        co_await arrangeUnattended(self, self->queue().nextDue(self->now()));
        co_return NotificationDelivery::Done;
    }
    // Also in case that this process does not live to show them.
    co_await arrangeUnattended(self, self->nextDelivery());
    const QDeadlineTimer deadline(limit);
    bool isDone = true;
    bool isStillShowing = false;
    while (isDone && self->queue().hasDue(self->now()) && !deadline.hasExpired()) {
        auto outcome = std::make_shared<OneShot<bool>>();
        settleWhenDelivered(self, outcome);
        const std::optional<bool> answer
            = co_await outcome->settledWithin(milliseconds(deadline.remainingTime()));
        isDone = answer.value_or(false);
        isStillShowing = !answer.has_value();
        // What started this process starts no second one beside it: what comes due before the next one is
        // arranged is for this one. And nobody else looks again while nothing runs.
        co_await arrangeUnattended(self, self->nextDelivery());
    }
    // What waits for the display keeps the file, and this process may stay for clicks on what it has shown.
    if (isStillShowing)
        co_await NotificationQueueStore::release(self->m_store);
    co_return isDone ? NotificationDelivery::Done : NotificationDelivery::NoDisplay;
}

QCoro::Task<bool> DesktopNotificationCenter::State::prepareDelivery(Self self)
{
    const bool isOpen = co_await opened(self, 0ms);
    if (!isOpen)
        co_return false;
    co_await arrangeUnattended(self, self->nextDelivery());
    co_return self->queue().hasDue(self->now());
}

QCoro::Task<void> DesktopNotificationCenter::State::settleWhenDelivered(
    Self self, std::shared_ptr<OneShot<bool>> outcome)
{
    outcome->settle(co_await deliver(self));
}

} // namespace orbitledge
