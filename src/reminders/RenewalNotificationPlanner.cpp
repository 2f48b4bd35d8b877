#include "reminders/RenewalNotificationPlanner.h"

#include "locale/MoneyFormatter.h"
#include "model/SubscriptionRules.h"
#include "model/UuidText.h"

#include <QHash>

#include <algorithm>
#include <numeric>
#include <vector>

namespace orbitledge {

using namespace Qt::StringLiterals;

namespace {

constexpr qint64 fewestLeadDays = 0;
constexpr qint64 mostLeadDays = 14;
constexpr std::chrono::minutes reminderTime = std::chrono::hours(9);

/// What follows from a renewal's day alone, which many subscriptions may share.
struct ReminderDay {
    Instant fireInstant;
    QString when;
};

QString whenPhrase(qint64 days)
{
    switch (days) {
    case 0:
        return u"today"_s;
    case 1:
        return u"tomorrow"_s;
    default:
        return u"in %1 days"_s.arg(days);
    }
}

class Planner {
public:
    Planner(const ReminderSettings &settings, Instant now, const Calendar &calendar)
        : m_settings(settings)
        , m_leadDays(std::clamp(settings.leadDays, fewestLeadDays, mostLeadDays))
        , m_now(now)
        , m_calendar(calendar)
        , m_today(calendar.startOfDay(now))
        , m_money(calendar.locale(), FractionDigits::OfCurrency)
    {
    }

    RenewalNotificationPlanning plan(const QList<Subscription> &subscriptions, const QSet<QString> &ledger)
    {
        m_result.ledger = ledger;
        for (const Subscription &subscription : subscriptions) {
            if (isActive(subscription))
                consider(subscription);
        }
        m_result.ledger.intersect(m_currentKeys);
        keepWithinBudget();
        return std::move(m_result);
    }

private:
    void consider(const Subscription &subscription)
    {
        const LocalDate &date = subscription.nextBillingDate;
        const auto renewal = m_calendar.midnight(date);
        if (!renewal || *renewal < m_today)
            return;
        const QString key
            = uuidText(subscription.id) + u'.' + date.text() + u'.' + QString::number(m_leadDays);
        m_currentKeys.insert(key);
        const auto day = reminderDay(date, *renewal);
        if (!day)
            return;
        const QUrl page = editPage(subscription.id);
        if (!page.isValid())
            return;

        auto delivery = RenewalNotificationDelivery::immediate();
        if (day->fireInstant > m_now) {
            delivery = RenewalNotificationDelivery::scheduled(day->fireInstant);
        } else if (m_result.ledger.contains(key)) {
            return;
        } else {
            m_result.ledger.insert(key);
        }
        m_result.plans.append(RenewalNotificationPlan{
            .key = key,
            .identifier = renewalIdentifierPrefix.toString() + key,
            .title = subscription.name + u" renews soon"_s,
            .body = body(subscription, day->when),
            .destinationURL = page,
            .delivery = delivery,
        });
    }

    std::optional<ReminderDay> reminderDay(const LocalDate &date, Instant renewal)
    {
        const auto known = m_days.constFind(date.daysSinceEpoch());
        if (known != m_days.constEnd())
            return *known;
        const LocalDate day = m_calendar.localDate(m_calendar.addingDays(renewal, -m_leadDays));
        std::optional<ReminderDay> result;
        if (const auto fireInstant = m_calendar.firstInstant(day, reminderTime))
            result = {*fireInstant, whenPhrase(m_calendar.daysBetween(m_today, renewal))};
        m_days.insert(date.daysSinceEpoch(), result);
        return result;
    }

    [[nodiscard]] QUrl editPage(const QUuid &id) const
    {
        QString base = m_settings.webURL.toString();
        if (base.endsWith(u'/'))
            base.chop(1);
        return QUrl(base + u"/subscriptions/"_s + uuidText(id) + u"/edit"_s, QUrl::StrictMode);
    }

    QString body(const Subscription &subscription, const QString &when)
    {
        const auto amount = amountIn(m_settings.currency, subscription);
        const auto text = amount ? m_money.currencyText(*amount, m_settings.currency) : std::nullopt;
        return text ? *text + u" charges "_s + when + u'.' : u"A renewal is due "_s + when + u'.';
    }

    void keepWithinBudget()
    {
        QList<RenewalNotificationPlan> &plans = m_result.plans;
        if (plans.size() <= mostReminders)
            return;
        // Immediate ones first, then by their instants; in the order of the list where these are equal.
        std::vector<qsizetype> ranked(static_cast<std::size_t>(plans.size()));
        std::iota(ranked.begin(), ranked.end(), 0);
        std::ranges::stable_sort(
            ranked, {}, [&plans](qsizetype index) { return plans[index].delivery.instant(); });
        std::ranges::sort(ranked.begin(), ranked.begin() + mostReminders);

        m_result.skippedOverBudget = plans.size() - mostReminders;
        for (auto dropped = ranked.begin() + mostReminders; dropped != ranked.end(); ++dropped) {
            // Otherwise it would count as shown.
            if (plans[*dropped].delivery.isImmediate())
                m_result.ledger.remove(plans[*dropped].key);
        }
        QList<RenewalNotificationPlan> kept;
        kept.reserve(mostReminders);
        for (auto index = ranked.begin(); index != ranked.begin() + mostReminders; ++index)
            kept.append(std::move(plans[*index]));
        plans = std::move(kept);
    }

    const ReminderSettings &m_settings;
    qint64 m_leadDays;
    Instant m_now;
    const Calendar &m_calendar;
    Instant m_today;
    MoneyFormatter m_money;
    QHash<qint64, std::optional<ReminderDay>> m_days;
    QSet<QString> m_currentKeys;
    RenewalNotificationPlanning m_result;
};

} // namespace

RenewalNotificationPlanning planReminders(const QList<Subscription> &subscriptions,
    const ReminderSettings &settings, Instant now, const Calendar &calendar, const QSet<QString> &ledger)
{
    return Planner(settings, now, calendar).plan(subscriptions, ledger);
}

} // namespace orbitledge
