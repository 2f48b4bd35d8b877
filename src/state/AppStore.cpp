#include "state/AppStore.h"

#include "timeline/TimelineBuilder.h"

#include <QTimer>

#include <chrono>
#include <utility>

namespace orbitledge {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

/// From one change of a network that reaches nobody to the next that has the data fetched.
constexpr std::chrono::milliseconds networkPause = 1min;

} // namespace

/// The timeline, and what it was built from.
struct AppStore::BuiltTimeline {
    QList<Subscription> subscriptions;
    QString currency;
    Calendar calendar;
    Instant today;
    TimelineSnapshot snapshot;

    [[nodiscard]] bool isOf(const QList<Subscription> &otherSubscriptions, const QString &otherCurrency,
        const Calendar &otherCalendar, Instant otherToday) const
    {
        return subscriptions.constData() == otherSubscriptions.constData()
            && subscriptions.size() == otherSubscriptions.size() && currency == otherCurrency
            && calendar == otherCalendar && today == otherToday;
    }
};

AppStore::AppStore(Collaborators collaborators, Identity identity, QObject *parent)
    : QObject(parent)
    , m_with(std::move(collaborators))
    , m_identity(std::move(identity))
    , m_networkPause(new QTimer(this))
{
    connect(m_with.settings.get(), &AppSettings::aboutToChange, this, &AppStore::aboutToChange);
    connect(m_with.settings.get(), &AppSettings::changed, this, &AppStore::changed);
    connect(m_with.refreshTimer.get(), &IntervalTimer::elapsed, this, [this] { refreshNowAndThen(this); });
    connect(m_with.dayAlarm.get(), &WallClockAlarm::rang, this, &AppStore::beginDay);
    connect(m_with.dayAlarm.get(), &WallClockAlarm::clockChanged, this, &AppStore::followClock);
    connect(m_with.connectivity.get(), &Connectivity::changed, this, &AppStore::followNetwork);
    m_networkPause->setSingleShot(true);
    m_networkPause->setInterval(networkPause);
    connect(m_networkPause, &QTimer::timeout, this, &AppStore::followNetwork);
}

AppStore::~AppStore()
{
    if (!m_didStart)
        return;
    m_with.refreshTimer->stop();
    m_with.dayAlarm->set(std::nullopt);
}

// ---- what there is to show -------------------------------------------------------------------------------

QString AppStore::timelineCurrency() const
{
    return m_state.user ? m_state.user->defaultCurrency : u"USD"_s;
}

LocalDate AppStore::today() const
{
    return m_with.calendar().localDate(m_with.clock->now());
}

const TimelineSnapshot &AppStore::timeline() const
{
    const Instant now = m_with.clock->now();
    const Calendar calendar = m_with.calendar();
    const Instant today = calendar.startOfDay(now);
    const QString currency = timelineCurrency();
    if (!m_timeline || !m_timeline->isOf(m_state.subscriptions, currency, calendar, today)) {
        m_timeline = std::make_unique<BuiltTimeline>(BuiltTimeline{m_state.subscriptions, currency, calendar,
            today, buildTimeline(m_state.subscriptions, currency, now, calendar)});
    }
    return m_timeline->snapshot;
}

// ---- starting, and what comes by itself ------------------------------------------------------------------

QCoro::Task<void> AppStore::start()
{
    if (std::exchange(m_didStart, true))
        return refresh();
    return startFirst(this);
}

QCoro::Task<void> AppStore::startFirst(Store store)
{
    store->m_with.refreshTimer->start(durationOf(store->settings().refreshInterval()));
    store->setDayAlarm();
    store->m_wasOffline = store->m_with.connectivity->isOffline();
    lookForUpdateOnce(store);
    // A desktop that is slow to answer does not keep the data from being shown.
    auto learning = learnAuthorization(store);
    co_await showSavedThenFetch(store);
    co_await learning;
}

QCoro::Task<void> AppStore::showSavedThenFetch(Store store)
{
    const quint64 session = store->m_session;
    const auto api = store->m_with.api;
    const auto cache = store->m_with.cache;
    const bool hasSession = co_await api->hasValidSession();
    if (!store || !store->isCurrent(session))
        co_return;
    if (!hasSession) {
        store->change([](AppState &state) { state.authState = AuthState::SignedOut; });
        co_return;
    }
    auto saved = co_await cache->load();
    if (!store || !store->isCurrent(session))
        co_return;
    // Another fetch may have been faster.
    if (saved && !store->m_state.lastUpdatedAt) {
        store->change([&saved](AppState &state) {
            state.user = std::move(saved->profile);
            state.subscriptions = std::move(saved->subscriptions);
            state.lastUpdatedAt = saved->fetchedAt;
            state.authState = AuthState::SignedIn;
        });
    }
    co_await joinFetch(store);
}

QCoro::Task<void> AppStore::refreshNowAndThen(Store store)
{
    co_await joinFetch(store);
    if (!store)
        co_return;
    lookForUpdateOnce(store);
    store->m_with.refreshTimer->start(durationOf(store->settings().refreshInterval()));
}

void AppStore::setDayAlarm()
{
    const Calendar calendar = m_with.calendar();
    const Instant today = calendar.startOfDay(m_with.clock->now());
    m_with.dayAlarm->set(calendar.startOfDay(calendar.addingDays(today, 1)));
}

void AppStore::beginDay()
{
    change([](AppState &) { }); // the timeline is another one
    setDayAlarm();
}

void AppStore::followClock()
{
    if (!m_didStart)
        return;
    beginDay();
    synchroniseReminders();
    // The machine may have slept.
    refresh();
}

void AppStore::followNetwork()
{
    const bool isOffline = m_with.connectivity->isOffline();
    const bool isBack = std::exchange(m_wasOffline, isOffline) && !isOffline;
    if (!m_didStart || isOffline)
        return;
    if (isBack) {
        refresh();
        return;
    }
    // There is a way, and yet nobody was reached: what changed may be what was missing. But where containers
    // come and go something changes all the time.
    if (!m_state.isOffline)
        return;
    if (isTryingPatiently()) {
        if (!m_networkPause->isActive())
            m_networkPause->start();
        return;
    }
    m_networkTry = m_with.clock->now();
    refresh();
}

bool AppStore::isTryingPatiently() const
{
    if (!m_networkTry)
        return false;
    const Instant now = m_with.clock->now();
    const std::chrono::milliseconds since(
        now.millisecondsSinceEpoch() - m_networkTry->millisecondsSinceEpoch());
    return since >= 0ms && since < networkPause;
}

} // namespace orbitledge
