#pragma once

#include "demo/Database.h"
#include "demo/SubscriptionInput.h"
#include "model/Subscription.h"
#include "model/UserProfile.h"

#include <functional>

namespace orbitledge::demo {

/// A subscription with what only the service knows of it.
struct StoredSubscription {
    Subscription record;
    /// The day from which renewals are counted.
    LocalDate anchor;
    BillingCycle cycle = BillingCycle::Monthly;
};

/// Why a subscription stays as it is.
enum class Refusal {
    /// There is none of that identifier, or it is somebody else's: from outside the two look alike.
    NotFound,
    AlreadyCancelled,
    NotCancelled,
};

/// Everybody's subscriptions. Whatever is handed out is as of today: renewals that have passed are moved
/// forward, and written down, before anything is read; amounts in other currencies than the profile's are
/// converted.
class Subscriptions {
public:
    using Today = std::function<LocalDate()>;

    Subscriptions(Database &database, Today today)
        : m_database(database)
        , m_today(std::move(today))
    {
    }

    /// In the order in which they were added.
    QList<StoredSubscription> list(const UserProfile &owner);
    std::optional<StoredSubscription> find(const UserProfile &owner, const QUuid &id);

    Subscription create(const UserProfile &owner, const SubscriptionDraft &draft);
    /// Adds many in one transaction.
    void createAll(const UserProfile &owner, const QList<SubscriptionDraft> &drafts);

    tl::expected<Subscription, Refusal> cancel(const UserProfile &owner, const QUuid &id);
    tl::expected<Subscription, Refusal> uncancel(const UserProfile &owner, const QUuid &id);
    /// Not changed are the category and the days of notice, which the form does not show.
    tl::expected<Subscription, Refusal> update(
        const UserProfile &owner, const QUuid &id, const SubscriptionDraft &draft);
    /// For what has a status of its own, such as "paused".
    void setStatus(const UserProfile &owner, const QUuid &id, const QString &status);

    qint64 count(const UserProfile &owner);

    [[nodiscard]] LocalDate today() const { return m_today(); }

private:
    void rollForward(const QUuid &ownerId);
    std::optional<StoredSubscription> read(const UserProfile &owner, const QUuid &id);
    QUuid insert(const UserProfile &owner, const SubscriptionDraft &draft, Instant now);

    /// Runs `change` on the subscription in one transaction and hands out what became of it.
    tl::expected<Subscription, Refusal> change(const UserProfile &owner, const QUuid &id,
        const std::function<std::optional<Refusal>(const StoredSubscription &)> &change);

    Database &m_database;
    Today m_today;
};

} // namespace orbitledge::demo
