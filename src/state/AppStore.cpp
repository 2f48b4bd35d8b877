#include "state/AppStore.h"

#include "model/WebAddress.h"
#include "platform/Completion.h"
#include "service/AccountData.h"
#include "timeline/TimelineBuilder.h"
#include "updates/AvailableUpdate.h"

#include <algorithm>
#include <chrono>
#include <utility>

namespace orbitledge {

using namespace Qt::StringLiterals;
using std::chrono::milliseconds;

namespace {

using SignInResult = tl::expected<void, APIError>;

QString sentenceFor(const APIError::Unauthorized &error)
{
    return error.message.isEmpty() ? u"Your session expired. Please sign in again."_s : error.message;
}

QString sentenceFor(const APIError &error)
{
    const auto *const unauthorized = error.as<APIError::Unauthorized>();
    return unauthorized != nullptr ? sentenceFor(*unauthorized) : error.errorDescription();
}

} // namespace

/// A fetch that is under way, for a session.
struct AppStore::Fetch {
    quint64 session = 0;
    std::shared_ptr<Completion> completion = std::make_shared<Completion>();
};

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
{
    connect(m_with.settings.get(), &AppSettings::aboutToChange, this, &AppStore::aboutToChange);
    connect(m_with.settings.get(), &AppSettings::changed, this, &AppStore::changed);
    connect(m_with.refreshTimer.get(), &IntervalTimer::elapsed, this, [this] { refreshNowAndThen(this); });
    connect(m_with.dayAlarm.get(), &WallClockAlarm::rang, this, &AppStore::beginDay);
    connect(m_with.dayAlarm.get(), &WallClockAlarm::clockChanged, this, &AppStore::followClock);
    connect(m_with.connectivity.get(), &Connectivity::changed, this, &AppStore::followNetwork);
}

AppStore::~AppStore()
{
    if (!m_didStart)
        return;
    m_with.refreshTimer->stop();
    m_with.dayAlarm->set(std::nullopt);
}

template <typename Change> void AppStore::change(const Change &apply)
{
    Q_EMIT aboutToChange();
    apply(m_state);
    Q_EMIT changed();
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
    const bool wasOffline = std::exchange(m_wasOffline, isOffline) || m_state.isOffline;
    if (m_didStart && wasOffline && !isOffline)
        refresh();
}

// ---- fetching --------------------------------------------------------------------------------------------

QCoro::Task<void> AppStore::refresh()
{
    return joinFetch(this);
}

QCoro::Task<void> AppStore::joinFetch(Store store)
{
    // One that began in an earlier session tells nothing of this one.
    while (store && store->m_fetch && store->m_fetch->session != store->m_session)
        co_await Completion::wait(store->m_fetch->completion);
    if (!store)
        co_return;
    if (!store->m_fetch) {
        store->m_fetch = std::make_shared<Fetch>(Fetch{.session = store->m_session});
        fetch(store, store->m_fetch);
    }
    if (store->m_fetch)
        co_await Completion::wait(store->m_fetch->completion);
}

QCoro::Task<void> AppStore::fetchAnew(Store store)
{
    if (store && store->m_fetch)
        co_await Completion::wait(store->m_fetch->completion);
    co_await joinFetch(store); // which somebody else may have begun since
}

QCoro::Task<void> AppStore::fetch(Store store, std::shared_ptr<Fetch> fetch)
{
    co_await fetchForSession(store, fetch->session);
    if (store)
        store->m_fetch.reset();
    fetch->completion->complete();
}

QCoro::Task<void> AppStore::fetchForSession(Store store, quint64 session)
{
    const auto api = store->m_with.api;
    const bool hasSession = co_await api->hasValidSession();
    if (!store || !store->isCurrent(session))
        co_return;
    if (!hasSession) {
        store->change([](AppState &state) {
            state.authState = AuthState::SignedOut;
            state.refreshState = RefreshState::Idle;
        });
        co_return;
    }
    store->change([](AppState &state) {
        state.refreshState = state.subscriptions.isEmpty() ? RefreshState::Loading : RefreshState::Refreshing;
        state.errorMessage.reset();
    });
    auto data = co_await fetchAccountData(api);
    if (!store)
        co_return;
    if (!store->isCurrent(session)) {
        store->change([](AppState &state) { state.refreshState = RefreshState::Idle; });
        co_return;
    }
    if (data)
        co_await keep(store, *std::move(data));
    else
        store->publishFetchFailure(data.error());
}

QCoro::Task<void> AppStore::keep(Store store, AccountData data)
{
    const quint64 session = store->m_session;
    const auto cache = store->m_with.cache;
    const CacheSnapshot snapshot{
        .version = {},
        .profile = data.profile,
        .subscriptions = data.subscriptions,
        .fetchedAt = store->m_with.clock->now(),
    };
    store->change([&snapshot](AppState &state) {
        state.user = snapshot.profile;
        state.subscriptions = snapshot.subscriptions;
        state.lastUpdatedAt = snapshot.fetchedAt;
        state.isOffline = false;
        state.authState = AuthState::SignedIn;
        state.refreshState = RefreshState::Idle;
    });
    (void)co_await cache->save(snapshot); // shown all the same
    if (store && store->isCurrent(session))
        co_await synchronise(store);
}

void AppStore::publishFetchFailure(const APIError &error)
{
    if (const auto *const unauthorized = error.as<APIError::Unauthorized>()) {
        signOutLocally(*unauthorized);
        return;
    }
    change([&error](AppState &state) {
        state.isOffline = error.is<APIError::Transport>();
        state.errorMessage = error.errorDescription();
        if (state.user)
            state.authState = AuthState::SignedIn;
        state.refreshState = RefreshState::Idle;
    });
}

void AppStore::publishFailure(const APIError &error)
{
    if (const auto *const unauthorized = error.as<APIError::Unauthorized>())
        signOutLocally(*unauthorized);
    else
        change([&error](AppState &state) { state.errorMessage = error.errorDescription(); });
}

// ---- sessions --------------------------------------------------------------------------------------------

bool AppStore::isCurrent(quint64 session) const
{
    return session == m_session && !m_isSigningOut;
}

void AppStore::signOutLocally(const APIError::Unauthorized &error)
{
    ++m_session;
    change([&error](AppState &state) {
        state.user.reset();
        state.subscriptions.clear();
        state.templates.clear();
        state.authState = AuthState::SignedOut;
        state.isOffline = false;
        state.errorMessage = sentenceFor(error);
        state.refreshState = RefreshState::Idle;
    });
}

QCoro::Task<SignInResult> AppStore::signIn(QString email, QString password)
{
    auto operation = [store = Store(this), email = std::move(email), password = std::move(password)] {
        return signInTurn(store, email, password);
    };
    return Turns::take(m_sessionTurns, std::move(operation));
}

// Nobody is shown what is another's, also where nothing can be fetched.
void AppStore::beginSessionOf(const UserProfile &profile)
{
    ++m_session; // a fetch of meanwhile may be of the session before
    if (!m_state.user || m_state.user->id == profile.id)
        return;
    change([](AppState &state) {
        state.user.reset();
        state.subscriptions.clear();
        state.templates.clear();
        state.lastUpdatedAt.reset();
        state.isOffline = false;
        state.authState = AuthState::SignedOut;
    });
}

QCoro::Task<tl::expected<AccountData, APIError>> AppStore::openSession(
    Store store, QString email, QString password)
{
    const auto api = store->m_with.api;
    const auto cache = store->m_with.cache;
    auto profile = co_await api->signIn(email, password);
    if (!profile)
        co_return tl::make_unexpected(std::move(profile.error()));
    if (store)
        store->beginSessionOf(*profile);
    const auto saved = co_await cache->load();
    if (saved && saved->profile.id != profile->id) {
        (void)co_await cache->clear();
        if (store)
            Q_EMIT store->forgotten();
    }
    auto subscriptions = co_await api->fetchSubscriptions();
    if (!subscriptions)
        co_return tl::make_unexpected(std::move(subscriptions.error()));
    co_return AccountData{*std::move(profile), *std::move(subscriptions)};
}

QCoro::Task<SignInResult> AppStore::signInTurn(Store store, QString email, QString password)
{
    if (!store)
        co_return tl::make_unexpected(APIError(APIError::InvalidResponse{}));
    ++store->m_session;
    auto data = co_await openSession(store, std::move(email), std::move(password));
    if (!data) {
        if (store) {
            store->change([&data](AppState &state) {
                state.errorMessage = sentenceFor(data.error());
                state.authState = AuthState::SignedOut;
                state.refreshState = RefreshState::Idle;
            });
        }
        co_return tl::make_unexpected(std::move(data.error()));
    }
    if (store) {
        ++store->m_session; // also what was asked for meanwhile
        // Why an earlier attempt failed is of no interest any more.
        store->change([](AppState &state) { state.errorMessage.reset(); });
        co_await keep(store, *std::move(data));
    }
    co_return SignInResult();
}

QCoro::Task<void> AppStore::signOut()
{
    auto operation = [store = Store(this), with = m_with] {
        return signOutTurn(store, with.api, with.cache, with.notifier);
    };
    return Turns::take(m_sessionTurns, std::move(operation));
}

QCoro::Task<void> AppStore::signOutTurn(Store store, std::shared_ptr<APIClientProtocol> api,
    std::shared_ptr<SnapshotCache> cache, std::shared_ptr<RenewalNotifier> notifier)
{
    if (store) {
        store->m_isSigningOut = true;
        ++store->m_session;
    }
    co_await api->signOut();
    (void)co_await cache->clear();
    (void)co_await notifier->removeAll();
    if (!store)
        co_return;
    store->m_isSigningOut = false;
    ++store->m_session;
    store->change([](AppState &state) {
        state.user.reset();
        state.subscriptions.clear();
        state.templates.clear();
        state.lastUpdatedAt.reset();
        state.isOffline = false;
        state.errorMessage.reset();
        state.notificationsSkippedOverBudget = 0;
        state.authState = AuthState::SignedOut;
    });
    Q_EMIT store->forgotten();
}

// ---- what people do --------------------------------------------------------------------------------------

QCoro::Task<void> AppStore::cancelSubscription(QUuid id)
{
    return mutate(this, id, Mutation::Cancel);
}

QCoro::Task<void> AppStore::uncancelSubscription(QUuid id)
{
    return mutate(this, id, Mutation::Uncancel);
}

QCoro::Task<void> AppStore::mutate(Store store, QUuid id, Mutation mutation)
{
    const quint64 session = store->m_session;
    const auto api = store->m_with.api;
    store->change([](AppState &state) { state.errorMessage.reset(); });
    auto mutating
        = mutation == Mutation::Cancel ? api->cancelSubscription(id) : api->uncancelSubscription(id);
    const auto result = co_await mutating;
    if (!store || !store->isCurrent(session))
        co_return;
    if (result)
        co_await fetchAnew(store); // one that began before would not show it
    else
        store->publishFailure(result.error());
}

QCoro::Task<tl::expected<void, APIError>> AppStore::createSubscription(CreateSubscriptionRequest request)
{
    return create(this, std::move(request));
}

QCoro::Task<tl::expected<void, APIError>> AppStore::create(Store store, CreateSubscriptionRequest request)
{
    const quint64 session = store->m_session;
    const auto api = store->m_with.api;
    store->change([](AppState &state) { state.errorMessage.reset(); });
    auto created = co_await api->createSubscription(std::move(request));
    const bool isOfInterest = store && store->isCurrent(session);
    if (!created) {
        if (isOfInterest)
            store->publishFailure(created.error());
        co_return tl::make_unexpected(std::move(created.error()));
    }
    if (isOfInterest) {
        store->publishCreated(*std::move(created));
        co_await fetchAnew(store); // one that began before would not show it
    }
    co_return tl::expected<void, APIError>();
}

// A fetch of meanwhile may have brought it already.
void AppStore::publishCreated(Subscription created)
{
    change([&created](AppState &state) {
        QList<Subscription> &list = state.subscriptions;
        const auto known
            = std::ranges::find_if(list, [&](const Subscription &other) { return other.id == created.id; });
        if (known != list.end())
            *known = std::move(created);
        else
            list.append(std::move(created));
    });
}

QCoro::Task<void> AppStore::searchTemplates(QString query)
{
    return search(this, std::move(query));
}

QCoro::Task<void> AppStore::search(Store store, QString query)
{
    constexpr qint64 limit = 10;
    const quint64 session = store->m_session;
    const quint64 number = ++store->m_search;
    const auto api = store->m_with.api;
    auto found = co_await api->searchTemplates(query, limit);
    if (!store || !store->isCurrent(session))
        co_return;
    const auto *const unauthorized = found ? nullptr : found.error().as<APIError::Unauthorized>();
    if (unauthorized != nullptr)
        store->signOutLocally(*unauthorized);
    else if (number == store->m_search)
        store->change([&found](AppState &state) {
            state.templates = std::move(found).value_or(QList<SubscriptionTemplate>());
        });
}

void AppStore::setQuickAddPresented(bool isPresented)
{
    ++m_search; // also what is still being looked for
    change([isPresented](AppState &state) {
        state.isQuickAddPresented = isPresented;
        state.templates.clear();
    });
}

QCoro::Task<void> AppStore::openWebPage(QString path) const
{
    const auto workspace = m_with.workspace;
    const QUrl page = m_identity.webURL.resolved(QUrl(path, QUrl::StrictMode));
    if (!path.isEmpty() && page.isValid())
        (void)co_await workspace->open(page, QString());
}

// ---- reminders -------------------------------------------------------------------------------------------

QCoro::Task<void> AppStore::synchroniseReminders()
{
    return synchronise(this);
}

QCoro::Task<void> AppStore::synchronise(Store store)
{
    const std::optional<UserProfile> user = store->m_state.user;
    if (!user || store->m_isSigningOut) // which removes them
        co_return;
    const quint64 session = store->m_session;
    const auto notifier = store->m_with.notifier;
    std::optional<QString> failure;
    qint64 skipped = 0;
    if (store->settings().notificationsEnabled()) {
        const auto result = co_await notifier->synchronise(store->m_state.subscriptions,
            store->settings().notificationLeadDays(), store->m_with.clock->now(), user->defaultCurrency,
            store->m_with.calendar());
        if (result.failure)
            failure = u"macOS rejected some reminders: "_s + *result.failure;
        skipped = result.skippedOverBudget;
    } else {
        const auto removed = co_await notifier->removeAll();
        if (!removed)
            failure = removed.error().errorDescription;
    }
    if (!store || !store->isCurrent(session))
        co_return;
    store->change([&](AppState &state) {
        state.notificationFailureMessage = failure;
        state.notificationsSkippedOverBudget = skipped;
    });
}

QCoro::Task<void> AppStore::refreshNotificationAuthorization()
{
    return learnAuthorization(this);
}

QCoro::Task<void> AppStore::learnAuthorization(Store store)
{
    const auto notifier = store->m_with.notifier;
    const NotificationAuthorization authorization = co_await notifier->authorizationStatus();
    if (store)
        store->change([=](AppState &state) { state.notificationAuthorization = authorization; });
}

QCoro::Task<void> AppStore::requestNotificationPermission()
{
    const Store store = this;
    (void)co_await requestPermission(store);
}

QCoro::Task<bool> AppStore::requestPermission(Store store)
{
    const auto notifier = store->m_with.notifier;
    const auto granted = co_await notifier->requestAuthorization();
    if (!store)
        co_return false;
    if (!granted) {
        store->showActionMessage(u"Could not request permission: "_s + granted.error().errorDescription);
        co_return false;
    }
    co_await learnAuthorization(store);
    if (!store)
        co_return false;
    store->settings().setNotificationsEnabled(*granted);
    if (*granted) {
        co_await synchronise(store);
    } else {
        store->showActionMessage(
            u"macOS denied notifications for Orbitledge. Allow them in System Settings, then try again."_s);
    }
    co_return true;
}

QCoro::Task<void> AppStore::openNotificationSettings()
{
    const Store store = this;
    const auto workspace = m_with.workspace;
    const bool isOpened = co_await workspace->openNotificationSettings();
    if (store && !isOpened) {
        store->showActionMessage(
            u"Could not open System Settings. Open it manually and look under Notifications."_s);
    }
}

QCoro::Task<void> AppStore::sendTestNotification()
{
    return sendTest(this);
}

QCoro::Task<void> AppStore::sendTest(Store store)
{
    const auto notifier = store->m_with.notifier;
    co_await learnAuthorization(store);
    if (!store)
        co_return;
    if (store->m_state.notificationAuthorization == NotificationAuthorization::NotDetermined) {
        const bool isAnswered = co_await requestPermission(store);
        if (!store || !isAnswered)
            co_return;
    }
    const NotificationAuthorization authorization = store->m_state.notificationAuthorization;
    if (authorization != NotificationAuthorization::Authorized
        && authorization != NotificationAuthorization::Provisional) {
        store->showActionMessage(
            u"macOS is not allowing notifications from Orbitledge. Turn them on in System "
            "Settings, then try again."_s);
        co_return;
    }
    const auto sent = co_await notifier->sendTestNotification();
    const bool canPresent = co_await notifier->canPresent();
    if (!store)
        co_return;
    if (!sent) {
        store->showActionMessage(u"Could not send a test notification: "_s + sent.error().errorDescription);
    } else if (canPresent) {
        store->showActionMessage(u"Test notification sent \u2014 it should appear in a moment."_s);
    } else {
        store->showActionMessage(u"Queued, but macOS has alerts turned off for Orbitledge, so nothing will "
                                 "appear. Enable them under Notifications in System Settings."_s);
    }
}

void AppStore::showActionMessage(const QString &message)
{
    change([&message](AppState &state) { state.notificationActionMessage = message; });
}

// ---- updates ---------------------------------------------------------------------------------------------

QCoro::Task<void> AppStore::checkForUpdates(UpdateCheck check)
{
    return lookForUpdate(this, check);
}

QCoro::Task<void> AppStore::lookForUpdateOnce(Store store)
{
    if (std::exchange(store->m_isLookingForUpdate, true))
        co_return;
    co_await lookForUpdate(store, UpdateCheck::WhenDue);
    if (store)
        store->m_isLookingForUpdate = false;
}

QCoro::Task<void> AppStore::lookForUpdate(Store store, UpdateCheck check)
{
    const std::optional<QString> version = store->m_identity.currentVersion;
    if (!version)
        co_return;
    constexpr qint64 sixHours = 21'600'000; // milliseconds
    const Instant now = store->m_with.clock->now();
    const auto last = store->settings().lastUpdateCheck();
    const qint64 passed = last ? now.millisecondsSinceEpoch() - last->millisecondsSinceEpoch() : sixHours;
    if (check == UpdateCheck::WhenDue && passed >= 0 && passed < sixHours)
        co_return;
    store->settings().setLastUpdateCheck(now);
    const auto checker = store->m_with.releaseChecker;
    const auto manifest = co_await checker->fetchLatest();
    if (!store || !manifest)
        co_return;
    const RunningRelease running{*version, store->m_identity.currentBuild};
    if (isAvailableUpdate(*manifest, running, store->settings().dismissedUpdateVersion()))
        store->change([&manifest](AppState &state) { state.availableUpdate = *manifest; });
}

void AppStore::dismissUpdate()
{
    if (!m_state.availableUpdate)
        return;
    m_with.settings->setDismissedUpdateVersion(m_state.availableUpdate->version);
    change([](AppState &state) { state.availableUpdate.reset(); });
}

QCoro::Task<void> AppStore::openUpdate()
{
    if (!m_state.availableUpdate)
        co_return;
    const auto workspace = m_with.workspace;
    const QUrl announced = m_state.availableUpdate->url;
    // The manifest is not to open whatever it likes.
    const QUrl page
        = announced.scheme() == u"https" ? announced : m_identity.webURL.resolved(QUrl(u"/download"_s));
    (void)co_await workspace->open(page, QString());
}

} // namespace orbitledge
