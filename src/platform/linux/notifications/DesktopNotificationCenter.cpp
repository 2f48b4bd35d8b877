#include "platform/linux/notifications/DesktopNotificationCenter.h"

#include "model/FloorDivide.h"
#include "platform/Completion.h"
#include "platform/OneShot.h"
#include "platform/linux/notifications/NotificationQueueStore.h"
#include "platform/linux/notifications/RetryTimer.h"
#include "platform/linux/notifications/UnattendedTimes.h"

#include <QDeadlineTimer>
#include <QLoggingCategory>

#include <algorithm>
#include <utility>

namespace orbitledge {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using std::chrono::milliseconds;

namespace {

Q_LOGGING_CATEGORY(lcNotifications, "orbitledge.notifications")

using Result = tl::expected<void, NotificationError>;

tl::unexpected<NotificationError> failed(const QString &what, const QString &reason)
{
    return tl::make_unexpected(NotificationError{what + u": "_s + reason});
}

} // namespace

/// What the operations share, which they keep alive until the last of them is through.
class DesktopNotificationCenter::State final : public QObject {
public:
    using Self = std::shared_ptr<State>;

    State(DesktopNotificationCenter &center, Parts parts, milliseconds patience, milliseconds pause)
        : m_center(&center)
        , m_parts(std::move(parts))
        , m_patience(patience)
        , m_store(std::make_shared<NotificationQueueStore>(m_parts.file, m_parts.files))
        , m_retry(pause)
    {
    }

    void start(const Self &self);
    /// From now on nothing begins, and nobody is told.
    void close();

    /// Takes charge of the file and reads it, where that was not done. False where it cannot be had.
    static QCoro::Task<bool> opened(Self self, milliseconds patience);
    static QCoro::Task<bool> opened(const Self &self) { return opened(self, self->m_patience); }
    /// Of those who wanted to have it opened.
    [[nodiscard]] tl::unexpected<NotificationError> notOpened() const;

    /// Writes what changed, and has the alarm ring and a delivery started for what comes next.
    static QCoro::Task<Result> save(Self self);

    static QCoro::Task<NotificationDelivery> deliverDue(Self self, milliseconds limit);
    static QCoro::Task<bool> prepareDelivery(Self self);
    static QCoro::Task<void> finish(Self self, milliseconds limit);
    static QCoro::Task<Result> forget(Self self, QString prefix);
    static QCoro::Task<NotificationSettings> settings(Self self);

    [[nodiscard]] Instant now() const { return m_parts.clock->now(); }
    /// Once it is open.
    NotificationQueue &queue() { return m_store->queue(); }
    void setAlarm();
    [[nodiscard]] QList<ShownNotification> shown() const
    {
        return m_store->queue().freshlyShown(m_parts.display->name());
    }

private:
    [[nodiscard]] bool isClosed() const { return m_center == nullptr; }
    [[nodiscard]] LocalDate today() const;
    void lookAgainLater();
    [[nodiscard]] std::optional<Instant> nextDelivery() { return m_unattended.next(queue(), now()); }

    static QCoro::Task<void> choose(Self self, quint32 number, QString token);
    static QCoro::Task<void> begin(Self self);
    static QCoro::Task<bool> deliver(Self self);
    static QCoro::Task<void> settleWhenDelivered(Self self, std::shared_ptr<OneShot<bool>> outcome);
    static QCoro::Task<bool> deliverRound(Self self);
    /// Before the next one is shown it is written down, so that at most one is ever told twice.
    static QCoro::Task<bool> showAndRecord(Self self, NotificationBatch batch);
    static QCoro::Task<bool> showBatch(Self self, NotificationBatch batch);
    static QCoro::Task<void> settleWhenRecorded(
        std::shared_ptr<Completion> recording, std::shared_ptr<OneShot<bool>> outcome);
    static QCoro::Task<bool> awakenDisplay(Self self);
    static QCoro::Task<void> arrangeUnattended(Self self, std::optional<Instant> next);

    DesktopNotificationCenter *m_center;
    Parts m_parts;
    milliseconds m_patience;
    std::shared_ptr<NotificationQueueStore> m_store;
    /// When it was opened.
    std::optional<Instant> m_startOfRun;
    RetryTimer m_retry;
    UnattendedTimes m_unattended;
    bool m_isStarted = false;
    bool m_isDelivering = false;
    /// Of what is being shown.
    std::shared_ptr<Completion> m_recording;
    bool m_isToLookAgain = false;
    /// Nobody was there to show what is due.
    bool m_isUnshown = false;
    bool m_isSaved = true;
};

// ---- starting and ending ---------------------------------------------------------------------------------

void DesktopNotificationCenter::State::start(const Self &self)
{
    if (std::exchange(m_isStarted, true))
        return;
    // Connections do not keep it alive: that is the center's part, and that of what runs.
    const auto look = [weak = std::weak_ptr<State>(self)] {
        if (const Self state = weak.lock())
            begin(state);
    };
    connect(&m_retry, &RetryTimer::rang, this, look);
    connect(m_parts.alarm.get(), &WallClockAlarm::rang, this, look);
    connect(m_parts.alarm.get(), &WallClockAlarm::clockChanged, this, look);
    const NotificationDisplay *const display = m_parts.display.get();
    connect(display, &NotificationDisplay::appeared, this, look);
    connect(display, &NotificationDisplay::closed, this, [this](quint32 number) {
        if (m_store->isOpen())
            queue().recordClosed(m_parts.display->name(), number);
    });
    connect(display, &NotificationDisplay::chosen, this,
        [weak = std::weak_ptr<State>(self)](quint32 number, const QString &token) {
            if (const Self state = weak.lock())
                choose(state, number, token);
        });
    begin(self);
}

/// Some displays tell everybody of a click, and some the one who has shown it. So that it has one effect, it
/// is for the one who has shown it, as long as that is there.
QCoro::Task<void> DesktopNotificationCenter::State::choose(Self self, quint32 number, QString token)
{
    const auto shown = self->queue().shown(self->m_parts.display->name(), number);
    if (!shown)
        co_return;
    if (!shown->isFresh && !shown->sender.isEmpty()) {
        const bool isForAnother = co_await self->m_parts.display->isSenderThere(shown->sender);
        if (isForAnother)
            co_return;
    }
    if (!self->isClosed())
        Q_EMIT self->m_center->chosen(shown->userInfo, token);
}

void DesktopNotificationCenter::State::close()
{
    m_center = nullptr;
    m_store->abandon();
    m_retry.stop();
    if (m_isStarted)
        m_parts.alarm->set(std::nullopt);
    m_isStarted = false;
    disconnect(m_parts.alarm.get(), nullptr, this, nullptr);
    disconnect(m_parts.display.get(), nullptr, this, nullptr);
}

QCoro::Task<void> DesktopNotificationCenter::State::begin(Self self)
{
    const bool isOpen = co_await opened(self);
    if (self->isClosed())
        co_return;
    if (!isOpen) {
        self->lookAgainLater();
        co_return;
    }
    // People may still choose what an earlier run has shown.
    if (self->queue().hasShown() && self->m_parts.display->name().isEmpty())
        (void)co_await awakenDisplay(self);
    (void)co_await deliver(self);
}

void DesktopNotificationCenter::State::lookAgainLater()
{
    if (m_isStarted)
        m_retry.start();
}

// ---- the file --------------------------------------------------------------------------------------------

QCoro::Task<bool> DesktopNotificationCenter::State::opened(Self self, milliseconds patience)
{
    auto opening = NotificationQueueStore::open(self->m_store, patience);
    const bool isOpen = co_await opening;
    if (isOpen && !self->m_startOfRun)
        self->m_startOfRun = self->now();
    co_return isOpen;
}

tl::unexpected<NotificationError> DesktopNotificationCenter::State::notOpened() const
{
    return failed(u"Reminders cannot be kept"_s,
        m_store->failure().isEmpty() ? u"Another process is in charge of them"_s : m_store->failure());
}

QCoro::Task<Result> DesktopNotificationCenter::State::save(Self self)
{
    auto saving = NotificationQueueStore::save(self->m_store);
    const auto written = co_await saving;
    self->m_isSaved = written.has_value();
    if (!self->m_isSaved && !self->m_isDelivering)
        self->lookAgainLater();
    self->setAlarm();
    // Nobody waits for systemd to be done with it.
    arrangeUnattended(self, self->nextDelivery());
    if (!written)
        co_return failed(u"Reminders could not be saved"_s, written.error().errorDescription);
    co_return Result();
}

void DesktopNotificationCenter::State::setAlarm()
{
    if (!m_isStarted)
        return;
    // What came due since the alarm was set last: to set it anew keeps it from ringing for that. What is
    // being delivered, or waits for the next attempt, needs no alarm.
    const bool isMissed = !m_isDelivering && !m_isUnshown && queue().hasDue(now());
    m_parts.alarm->set(isMissed ? now() : queue().nextDue(now()));
}

QCoro::Task<void> DesktopNotificationCenter::State::arrangeUnattended(Self self, std::optional<Instant> next)
{
    if (const auto arranged = co_await self->m_parts.unattended->arrange(next); !arranged)
        qCWarning(lcNotifications, "%ls", qUtf16Printable(arranged.error()));
}

// ---- delivering ------------------------------------------------------------------------------------------

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
    while (!self->isClosed()) {
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
        if (!batch || self->isClosed())
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
    // Where it cannot be saved, it is still known until this process ends.
    if (isShown)
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
    while (isDone && self->queue().hasDue(self->now()) && !deadline.hasExpired()) {
        auto outcome = std::make_shared<OneShot<bool>>();
        settleWhenDelivered(self, outcome);
        const std::optional<bool> answer
            = co_await outcome->settledWithin(milliseconds(deadline.remainingTime()));
        isDone = answer.value_or(false);
        // What started this process starts no second one beside it: what comes due before the next one is
        // arranged is for this one. And nobody else looks again while nothing runs.
        co_await arrangeUnattended(self, self->nextDelivery());
    }
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

QCoro::Task<void> DesktopNotificationCenter::State::finish(Self self, milliseconds limit)
{
    self->close();
    if (!self->m_recording)
        co_return;
    auto outcome = std::make_shared<OneShot<bool>>();
    settleWhenRecorded(self->m_recording, outcome);
    (void)co_await outcome->settledWithin(limit);
}

QCoro::Task<void> DesktopNotificationCenter::State::settleWhenRecorded(
    std::shared_ptr<Completion> recording, std::shared_ptr<OneShot<bool>> outcome)
{
    co_await Completion::wait(recording);
    outcome->settle(true);
}

QCoro::Task<Result> DesktopNotificationCenter::State::forget(Self self, QString prefix)
{
    const QList<ShownNotification> takenBack = self->queue().forget(prefix);
    // First, so that nothing of it comes back where this process ends while it waits for the display.
    auto saved = co_await save(self);
    if (!takenBack.isEmpty()) {
        const bool isAwake = co_await self->m_parts.display->awaken();
        for (const ShownNotification &shown : takenBack) {
            // Only who showed it knows it by this number.
            if (isAwake && shown.display == self->m_parts.display->name())
                self->m_parts.display->close(shown.number);
        }
    }
    co_return saved;
}

QCoro::Task<NotificationSettings> DesktopNotificationCenter::State::settings(Self self)
{
    const bool isOpen = co_await opened(self);
    const NotificationSwitchPositions switches = co_await self->m_parts.switches->read();
    const bool isAwake = co_await self->m_parts.display->awaken();
    const bool isAllowed = isAwake && switches.allows;
    NotificationSettings settings;
    if (isOpen && self->queue().wasAsked()) {
        settings.authorization
            = isAllowed ? NotificationAuthorization::Authorized : NotificationAuthorization::Denied;
    }
    settings.alertsEnabled = isAllowed && switches.popsUp;
    settings.notificationCenterEnabled = isAllowed;
    co_return settings;
}

// ---- the center ------------------------------------------------------------------------------------------

DesktopNotificationCenter::DesktopNotificationCenter(Parts parts, milliseconds patience, milliseconds pause)
    : m_state(std::make_shared<State>(*this, std::move(parts), patience, pause))
{
}

DesktopNotificationCenter::~DesktopNotificationCenter()
{
    m_state->close();
}

void DesktopNotificationCenter::start()
{
    m_state->start(m_state);
}

QCoro::Task<NotificationDelivery> DesktopNotificationCenter::deliverDue(milliseconds limit)
{
    return State::deliverDue(m_state, limit);
}

QCoro::Task<bool> DesktopNotificationCenter::prepareDelivery()
{
    return State::prepareDelivery(m_state);
}

QCoro::Task<void> DesktopNotificationCenter::finish(milliseconds limit)
{
    return State::finish(m_state, limit);
}

QList<ShownNotification> DesktopNotificationCenter::shown() const
{
    return m_state->shown();
}

QCoro::Task<NotificationSettings> DesktopNotificationCenter::settings()
{
    return State::settings(m_state);
}

QCoro::Task<tl::expected<bool, NotificationError>> DesktopNotificationCenter::requestAuthorization(
    NotificationOptions /*options*/) // of all that the desktop decides
{
    const auto state = m_state;
    const bool isOpen = co_await State::opened(state);
    if (!isOpen)
        co_return state->notOpened();
    state->queue().setAsked();
    const auto saved = co_await State::save(state);
    if (!saved)
        co_return tl::make_unexpected(saved.error());
    const NotificationSettings settings = co_await State::settings(state);
    co_return settings.authorization == NotificationAuthorization::Authorized;
}

QCoro::Task<tl::expected<QList<PendingNotification>, NotificationError>>
DesktopNotificationCenter::pendingRequests()
{
    const auto state = m_state;
    const bool isOpen = co_await State::opened(state);
    if (!isOpen)
        co_return state->notOpened();
    co_return state->queue().pending(state->now());
}

QCoro::Task<void> DesktopNotificationCenter::removePendingRequests(QStringList identifiers)
{
    const auto state = m_state;
    const bool isOpen = co_await State::opened(state);
    if (isOpen)
        state->queue().remove(identifiers);
}

QCoro::Task<Result> DesktopNotificationCenter::add(NotificationRequest request)
{
    const auto state = m_state;
    const bool isOpen = co_await State::opened(state);
    if (!isOpen)
        co_return state->notOpened();
    if (!state->queue().add(std::move(request), state->now()))
        co_return failed(u"A reminder cannot be kept"_s, u"There is no such day or time"_s);
    state->setAlarm();
    co_return Result();
}

QCoro::Task<Result> DesktopNotificationCenter::save()
{
    const auto state = m_state;
    const bool isOpen = co_await State::opened(state);
    if (!isOpen)
        co_return state->notOpened();
    co_return co_await State::save(state);
}

QCoro::Task<Result> DesktopNotificationCenter::forget(QString prefix)
{
    const auto state = m_state;
    const bool isOpen = co_await State::opened(state);
    if (!isOpen)
        co_return state->notOpened();
    co_return co_await State::forget(state, std::move(prefix));
}

} // namespace orbitledge
