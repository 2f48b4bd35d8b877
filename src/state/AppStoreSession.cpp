#include "platform/Completion.h"
#include "service/AccountData.h"
#include "state/AppStore.h"

#include <utility>

namespace orbitledge {

using namespace Qt::StringLiterals;

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
    m_signingOut.reset();
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

void AppStore::publishSignInFailure(const APIError &error)
{
    // Of who was signed in before nothing is left then either: the service's refusal ended that session.
    if (const auto *const unauthorized = error.as<APIError::Unauthorized>()) {
        signOutLocally(*unauthorized);
        return;
    }
    change([&error](AppState &state) {
        state.errorMessage = sentenceFor(error);
        state.authState = AuthState::SignedOut;
        state.refreshState = RefreshState::Idle;
    });
}

QCoro::Task<SignInResult> AppStore::signInTurn(Store store, QString email, QString password)
{
    if (!store)
        co_return tl::make_unexpected(APIError(APIError::InvalidResponse{}));
    ++store->m_session;
    auto data = co_await openSession(store, std::move(email), std::move(password));
    if (!data) {
        if (store)
            store->publishSignInFailure(data.error());
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
    if (m_signingOut)
        return Completion::wait(m_signingOut);
    m_signingOut = std::make_shared<Completion>();
    return signOutOnce(this, m_signingOut);
}

QCoro::Task<void> AppStore::sessionSettled()
{
    return Turns::take(m_sessionTurns, []() -> QCoro::Task<void> { co_return; });
}

QCoro::Task<void> AppStore::signOutOnce(Store store, std::shared_ptr<Completion> signedOut)
{
    auto operation
        = [store, with = store->m_with] { return signOutTurn(store, with.api, with.cache, with.notifier); };
    auto turn = Turns::take(store->m_sessionTurns, std::move(operation));
    co_await turn;
    if (store && store->m_signingOut == signedOut)
        store->m_signingOut.reset();
    signedOut->complete();
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

} // namespace orbitledge
