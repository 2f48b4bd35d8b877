#include "state/StoreSession.h"

#include <QObject>

#include <utility>

namespace orbitledge {

using namespace Qt::StringLiterals;

namespace {

using Parts = std::shared_ptr<const StoreSession::Parts>;

/// A service may send an empty text for its reason.
SessionOutcome failed(const QString &reason)
{
    return {.isDone = false, .problem = reason.isEmpty() ? u"The service gives no reason."_s : reason};
}

/// What was saved could not be changed.
SessionOutcome failed(const StoreSession::Parts &parts, const FileError &error)
{
    return failed(QString::fromStdString(parts.cacheFile.string()) + u": "_s + error.errorDescription);
}

/// What was fetched is for the next command, so it must have been saved.
SessionOutcome fetched(const StoreSession::Parts &parts)
{
    if (const auto &failure = parts.cache->lastFailure())
        return failed(parts, *failure);
    const AppState &state = parts.store->state();
    return {
        .isDone = true,
        .problem = state.notificationFailureMessage.value_or(QString()),
        .subscriptionCount = state.subscriptions.size(),
    };
}

QCoro::Task<SessionOutcome> signIn(Parts parts, SignInRequest request)
{
    auto signingIn = parts->store->signIn(std::move(request.email), std::move(request.password));
    const auto signedIn = co_await signingIn;
    if (!signedIn)
        co_return failed(parts->store->state().errorMessage.value_or(QString()));
    co_return fetched(*parts);
}

/// Whether a fetch was under way while this was there.
class FetchWatch {
public:
    explicit FetchWatch(const AppStore &store)
    {
        const auto look = [this, &store] {
            m_hasSeenOne = m_hasSeenOne || store.state().refreshState != RefreshState::Idle;
        };
        look();
        QObject::connect(&store, &AppStore::changed, &m_context, look);
    }

    [[nodiscard]] bool hasSeenOne() const { return m_hasSeenOne; }

private:
    QObject m_context;
    bool m_hasSeenOne = false;
};

QCoro::Task<SessionOutcome> refresh(Parts parts)
{
    // What was fetched before that would be another one's.
    auto settling = parts->store->sessionSettled();
    co_await settling;
    const bool wasSignedOut = parts->store->state().authState == AuthState::SignedOut;
    const FetchWatch watch(*parts->store);
    co_await parts->store->refresh();
    const AppState &state = parts->store->state();
    const bool isSignedOut = state.authState == AuthState::SignedOut;
    // What a store says that was signed out before, and where there was nothing to fetch, is about something
    // earlier.
    if (state.errorMessage && (watch.hasSeenOne() || !(wasSignedOut && isSignedOut)))
        co_return failed(*state.errorMessage);
    if (state.authState != AuthState::SignedIn)
        co_return failed(u"You are not signed in."_s);
    co_return fetched(*parts);
}

/// The store tells nothing of how it ended, and has asked the person where that was needed.
QCoro::Task<SessionOutcome> signOut(Parts parts)
{
    co_await parts->store->signOut();
    if (const auto &failure = parts->cache->lastFailure())
        co_return failed(*parts, *failure);
    const auto forgotten = co_await parts->credentials->clear(KeychainPrompt::Forbidden);
    if (!forgotten) {
        const QString reason = forgotten.error().errorDescription();
        co_return failed(u"The session could not be removed: "_s + reason);
    }
    const auto removed = co_await parts->notifier->removeAll();
    if (!removed)
        co_return failed(removed.error().errorDescription);
    co_return SessionOutcome{.isDone = true, .problem = {}};
}

} // namespace

StoreSession::StoreSession(Parts parts)
    : m_parts(std::make_shared<const Parts>(std::move(parts)))
{
}

QCoro::Task<SessionOutcome> StoreSession::perform(SessionRequest request)
{
    if (auto *const signingIn = std::get_if<SignInRequest>(&request))
        return signIn(m_parts, std::move(*signingIn));
    if (std::holds_alternative<RefreshRequest>(request))
        return refresh(m_parts);
    return signOut(m_parts);
}

} // namespace orbitledge
