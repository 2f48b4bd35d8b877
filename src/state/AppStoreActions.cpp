#include "state/AppStore.h"
#include "updates/AvailableUpdate.h"

#include <algorithm>
#include <utility>

namespace orbitledge {

using namespace Qt::StringLiterals;

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
