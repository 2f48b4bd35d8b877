#include "demo/Subscriptions.h"

#include "demo/Categories.h"
#include "demo/ExchangeRates.h"
#include "model/SubscriptionRules.h"

#include <QDateTime>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace orbitledge::demo {

namespace {

Instant now()
{
    return Instant::fromMillisecondsSinceEpoch(QDateTime::currentMSecsSinceEpoch());
}

const QString selection
    = u"SELECT id, name, cost, currency, billing_cycle, next_billing_date, anchor_date, category_id, "
      "status, cancelled_at, cancellation_date, trial_end_date, trial_notification_days, created_at, "
      "updated_at FROM subscriptions"_s;

enum Column {
    Id,
    Name,
    Cost,
    CurrencyCode,
    Cycle,
    NextBillingDate,
    Anchor,
    CategoryId,
    Status,
    CancelledAt,
    CancellationDate,
    TrialEndDate,
    TrialNotificationDays,
    CreatedAt,
    UpdatedAt,
};

LocalDate dateOf(const QVariant &value)
{
    return LocalDate::fromText(value.toString().toStdString()).value_or(LocalDate());
}

void convert(Subscription &subscription, const UserProfile &owner)
{
    if (isSameCurrency(subscription.currency, owner.defaultCurrency))
        return;
    const Currency *const from = findCurrency(subscription.currency);
    const Currency *const to = findCurrency(owner.defaultCurrency);
    if (from == nullptr || to == nullptr)
        return;
    subscription.convertedCost = converted(subscription.cost, *from, *to);
    subscription.convertedCurrency = to->code;
}

StoredSubscription subscriptionOf(const QSqlQuery &row, const UserProfile &owner)
{
    StoredSubscription result;
    Subscription &record = result.record;
    record.id = QUuid(row.value(Id).toString());
    record.userID = owner.id;
    record.name = row.value(Name).toString();
    record.cost = Decimal::fromText(row.value(Cost).toString().toStdString()).value_or(Decimal());
    record.currency = row.value(CurrencyCode).toString();
    record.billingCycle = row.value(Cycle).toString();
    result.cycle = cycleFromText(record.billingCycle).value_or(BillingCycle::Monthly);
    record.nextBillingDate = dateOf(row.value(NextBillingDate));
    result.anchor = dateOf(row.value(Anchor));
    record.status = row.value(Status).toString();
    if (!row.isNull(CategoryId)) {
        record.categoryID = QUuid(row.value(CategoryId).toString());
        if (const auto name = categoryName(*record.categoryID))
            record.categoryName = *name;
    }
    if (!row.isNull(CancelledAt))
        record.cancelledAt = Instant::fromMillisecondsSinceEpoch(row.value(CancelledAt).toLongLong());
    if (!row.isNull(CancellationDate))
        record.cancellationDate = dateOf(row.value(CancellationDate));
    if (!row.isNull(TrialEndDate))
        record.trialEndDate = dateOf(row.value(TrialEndDate));
    if (!row.isNull(TrialNotificationDays)) {
        record.trialNotificationDays = row.value(TrialNotificationDays).toLongLong();
        record.trialNotificationSent = false;
    }
    record.createdAt = Instant::fromMillisecondsSinceEpoch(row.value(CreatedAt).toLongLong());
    record.updatedAt = Instant::fromMillisecondsSinceEpoch(row.value(UpdatedAt).toLongLong());
    convert(record, owner);
    return result;
}

} // namespace

void Subscriptions::rollForward(const QUuid &ownerId)
{
    const LocalDate today = m_today();
    const QVariantList due{stored(ownerId), stored(addDays(today, -1))};
    const QString where
        = u" FROM subscriptions WHERE account_id = ? AND status = 'active' AND next_billing_date < ?"_s;
    // Nearly always there is nothing to do, and looking needs no lock.
    QSqlQuery any = m_database.run(u"SELECT 1"_s + where + u" LIMIT 1"_s, due);
    if (!any.next())
        return;
    any.finish();
    m_database.write([&] {
        QList<QVariantList> changes;
        QSqlQuery row = m_database.run(
            u"SELECT position, next_billing_date, anchor_date, billing_cycle"_s + where, due);
        while (row.next()) {
            const auto cycle = cycleFromText(row.value(3).toString()).value_or(BillingCycle::Monthly);
            const LocalDate next = rolledForward(dateOf(row.value(1)), today, dateOf(row.value(2)), cycle);
            changes.append({stored(next), stored(now()), row.value(0)});
        }
        row.finish();
        for (const QVariantList &values : std::as_const(changes))
            m_database.run(
                u"UPDATE subscriptions SET next_billing_date = ?, updated_at = ? WHERE position = ?"_s,
                values);
        return true;
    });
}

QList<StoredSubscription> Subscriptions::list(const UserProfile &owner)
{
    rollForward(owner.id);
    QList<StoredSubscription> result;
    QSqlQuery row
        = m_database.run(selection + u" WHERE account_id = ? ORDER BY position"_s, {stored(owner.id)});
    while (row.next())
        result.append(subscriptionOf(row, owner));
    return result;
}

std::optional<StoredSubscription> Subscriptions::find(const UserProfile &owner, const QUuid &id)
{
    rollForward(owner.id);
    return read(owner, id);
}

std::optional<StoredSubscription> Subscriptions::read(const UserProfile &owner, const QUuid &id)
{
    QSqlQuery row
        = m_database.run(selection + u" WHERE id = ? AND account_id = ?"_s, {stored(id), stored(owner.id)});
    return row.next() ? std::optional(subscriptionOf(row, owner)) : std::nullopt;
}

QUuid Subscriptions::insert(const UserProfile &owner, const SubscriptionDraft &draft, Instant now)
{
    const QUuid id = QUuid::createUuid();
    m_database.run(
        u"INSERT INTO subscriptions (id, account_id, name, cost, currency, billing_cycle, next_billing_date, "
        "anchor_date, category_id, status, trial_end_date, trial_notification_days, created_at, updated_at) "
        "VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, 'active', ?, ?, ?, ?)"_s,
        {stored(id), stored(owner.id), draft.name, draft.cost.toString(), draft.currency,
            QString(cycleText(draft.cycle)),
            stored(rolledForward(draft.nextBillingDate, m_today(), draft.nextBillingDate, draft.cycle)),
            stored(draft.nextBillingDate), stored(draft.categoryID), stored(draft.trialEndDate),
            stored(draft.trialNotificationDays), stored(now), stored(now)});
    return id;
}

Subscription Subscriptions::create(const UserProfile &owner, const SubscriptionDraft &draft)
{
    return m_database.write([&] { return read(owner, insert(owner, draft, now()))->record; });
}

void Subscriptions::createAll(const UserProfile &owner, const QList<SubscriptionDraft> &drafts)
{
    m_database.write([&] {
        const Instant created = now();
        for (const SubscriptionDraft &draft : drafts)
            insert(owner, draft, created);
        return true;
    });
}

tl::expected<Subscription, Refusal> Subscriptions::change(const UserProfile &owner, const QUuid &id,
    const std::function<std::optional<Refusal>(const StoredSubscription &)> &change)
{
    rollForward(owner.id);
    return m_database.write([&]() -> tl::expected<Subscription, Refusal> {
        const auto found = read(owner, id);
        if (!found)
            return tl::unexpected(Refusal::NotFound);
        if (const auto refusal = change(*found))
            return tl::unexpected(*refusal);
        return read(owner, id)->record;
    });
}

tl::expected<Subscription, Refusal> Subscriptions::cancel(const UserProfile &owner, const QUuid &id)
{
    return change(owner, id, [&](const StoredSubscription &found) -> std::optional<Refusal> {
        if (found.record.status == "cancelled"_L1)
            return Refusal::AlreadyCancelled;
        // What has been paid for lasts until the day of the next charge.
        const LocalDate end = std::max(found.record.nextBillingDate, m_today());
        m_database.run(u"UPDATE subscriptions SET status = 'cancelled', cancelled_at = ?, "
                       "cancellation_date = ?, updated_at = ? WHERE id = ?"_s,
            {stored(now()), stored(end), stored(now()), stored(id)});
        return std::nullopt;
    });
}

tl::expected<Subscription, Refusal> Subscriptions::uncancel(const UserProfile &owner, const QUuid &id)
{
    return change(owner, id, [&](const StoredSubscription &found) -> std::optional<Refusal> {
        if (found.record.status != "cancelled"_L1)
            return Refusal::NotCancelled;
        // Its renewals go on in the rhythm they had.
        const LocalDate next
            = rolledForward(found.record.nextBillingDate, m_today(), found.anchor, found.cycle);
        m_database.run(u"UPDATE subscriptions SET status = 'active', cancelled_at = NULL, "
                       "cancellation_date = NULL, next_billing_date = ?, updated_at = ? WHERE id = ?"_s,
            {stored(next), stored(now()), stored(id)});
        return std::nullopt;
    });
}

tl::expected<Subscription, Refusal> Subscriptions::update(
    const UserProfile &owner, const QUuid &id, const SubscriptionDraft &draft)
{
    return change(owner, id, [&](const StoredSubscription &found) -> std::optional<Refusal> {
        // A date that was left alone keeps its anchor, and with it the 31st that this month does not have.
        const bool keepsRhythm
            = draft.nextBillingDate == found.record.nextBillingDate && draft.cycle == found.cycle;
        const LocalDate anchor = keepsRhythm ? found.anchor : draft.nextBillingDate;
        const bool isRolling = found.record.status == "active"_L1;
        const LocalDate next = isRolling
            ? rolledForward(draft.nextBillingDate, m_today(), anchor, draft.cycle)
            : draft.nextBillingDate;
        // Notice of a trial's end goes with the trial.
        const QVariant notice = draft.trialEndDate ? stored(found.record.trialNotificationDays) : QVariant();
        m_database.run(
            u"UPDATE subscriptions SET name = ?, cost = ?, currency = ?, billing_cycle = ?, "
            "next_billing_date = ?, anchor_date = ?, trial_end_date = ?, trial_notification_days = ?, "
            "updated_at = ? WHERE id = ?"_s,
            {draft.name, draft.cost.toString(), draft.currency, QString(cycleText(draft.cycle)), stored(next),
                stored(anchor), stored(draft.trialEndDate), notice, stored(now()), stored(id)});
        return std::nullopt;
    });
}

void Subscriptions::setStatus(const UserProfile &owner, const QUuid &id, const QString &status)
{
    m_database.write([&] {
        m_database.run(u"UPDATE subscriptions SET status = ? WHERE id = ? AND account_id = ?"_s,
            {status, stored(id), stored(owner.id)});
        return true;
    });
}

qint64 Subscriptions::count(const UserProfile &owner)
{
    QSqlQuery row
        = m_database.run(u"SELECT count(*) FROM subscriptions WHERE account_id = ?"_s, {stored(owner.id)});
    row.next();
    return row.value(0).toLongLong();
}

} // namespace orbitledge::demo
