#include "platform/linux/notifications/DesktopNotificationCenter.h"

#include "platform/linux/notifications/DesktopNotificationCenterState.h"

#include <QLoggingCategory>

#include <utility>

namespace orbitledge {

using namespace Qt::StringLiterals;
using std::chrono::milliseconds;

namespace {

Q_LOGGING_CATEGORY(lcNotifications, "orbitledge.notifications")

using Result = tl::expected<void, NotificationError>;

tl::unexpected<NotificationError> failed(const QString &what, const QString &reason)
{
    return tl::make_unexpected(NotificationError{what + u": "_s + reason});
}

} // namespace

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
    // Also in case that this process does not live to show it: what was arranged for this moment is over.
    if (self->queue().hasDue(self->now()))
        arrangeUnattended(self, self->nextDelivery());
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
    const auto end = std::make_shared<Completion>();
    self->m_saving = end;
    auto saving = NotificationQueueStore::save(self->m_store);
    const auto written = co_await saving;
    self->m_isSaved = written.has_value();
    if (!self->m_isSaved && !self->m_isDelivering)
        self->lookAgainLater();
    self->setAlarm();
    // Nobody waits for systemd to be done with it.
    arrangeUnattended(self, self->nextDelivery());
    if (self->m_saving == end)
        self->m_saving.reset();
    end->complete();
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
    const auto arranging = std::make_shared<Completion>();
    self->m_arranging = arranging;
    const auto arranged = co_await self->m_parts.unattended->arrange(next);
    if (!arranged)
        qCWarning(lcNotifications, "%ls", qUtf16Printable(arranged.error()));
    if (self->m_arranging == arranging)
        self->m_arranging.reset();
    arranging->complete();
}

QCoro::Task<void> DesktopNotificationCenter::State::finish(Self self, milliseconds limit)
{
    self->close();
    if (!self->m_recording && !self->m_saving && !self->m_arranging)
        co_return;
    auto outcome = std::make_shared<OneShot<bool>>();
    settleWhenThrough(self, outcome);
    (void)co_await outcome->settledWithin(limit);
}

QCoro::Task<void> DesktopNotificationCenter::State::settleWhenThrough(
    Self self, std::shared_ptr<OneShot<bool>> outcome)
{
    if (self->m_recording)
        co_await Completion::wait(self->m_recording);
    // Each begins the next, and they are done in turn, so that the last one is enough.
    if (self->m_saving)
        co_await Completion::wait(self->m_saving);
    if (self->m_arranging)
        co_await Completion::wait(self->m_arranging);
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
