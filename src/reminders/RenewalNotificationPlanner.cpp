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
        , m_hasPages(settings.webURL.isValid() && !settings.webURL.isRelative())
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
        // Texts are made for those alone that are kept.
        for (const Candidate &candidate : m_candidates)
            m_result.plans.append(planOf(candidate));
        return std::move(m_result);
    }

private:
    /// A reminder before its texts.
    struct Candidate {
        const Subscription *subscription = nullptr;
        QString key;
        QString when;
        RenewalNotificationDelivery delivery = RenewalNotificationDelivery::immediate();
    };

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
        if (!day || !m_hasPages)
            return;

        auto delivery = RenewalNotificationDelivery::immediate();
        if (day->fireInstant > m_now) {
            delivery = RenewalNotificationDelivery::scheduled(day->fireInstant);
        } else if (m_result.ledger.contains(key)) {
            return;
        } else {
            m_result.ledger.insert(key);
        }
        m_candidates.push_back({&subscription, key, day->when, delivery});
    }

    RenewalNotificationPlan planOf(const Candidate &candidate)
    {
        return {
            .key = candidate.key,
            .identifier = renewalIdentifierPrefix.toString() + candidate.key,
            .title = candidate.subscription->name + u" renews soon"_s,
            .body = body(*candidate.subscription, candidate.when),
            .destinationURL = editPage(candidate.subscription->id),
            .delivery = candidate.delivery,
            .renewalDate = candidate.subscription->nextBillingDate,
        };
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
        // Encoded, as a blank in it makes no address.
        QString base = m_settings.webURL.adjusted(QUrl::RemoveQuery | QUrl::RemoveFragment)
                           .toString(QUrl::FullyEncoded);
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
        constexpr auto budget = static_cast<std::size_t>(mostReminders);
        if (m_candidates.size() <= budget)
            return;
        // Immediate ones first, then by their instants; in the order of the list where these are equal.
        std::vector<std::size_t> ranked(m_candidates.size());
        std::iota(ranked.begin(), ranked.end(), 0);
        const auto kept = ranked.begin() + mostReminders;
        std::ranges::stable_sort(
            ranked, {}, [this](std::size_t index) { return m_candidates[index].delivery.instant(); });
        std::ranges::sort(ranked.begin(), kept);

        m_result.skippedOverBudget = static_cast<qint64>(m_candidates.size() - budget);
        for (auto dropped = kept; dropped != ranked.end(); ++dropped) {
            // Otherwise it would count as shown.
            if (m_candidates[*dropped].delivery.isImmediate())
                m_result.ledger.remove(m_candidates[*dropped].key);
        }
        std::vector<Candidate> remaining;
        remaining.reserve(budget);
        for (auto index = ranked.begin(); index != kept; ++index)
            remaining.push_back(std::move(m_candidates[*index]));
        m_candidates = std::move(remaining);
    }

    const ReminderSettings &m_settings;
    qint64 m_leadDays;
    Instant m_now;
    const Calendar &m_calendar;
    Instant m_today;
    MoneyFormatter m_money;
    /// Whether the web application has an address; what follows it always fits.
    bool m_hasPages;
    std::vector<Candidate> m_candidates;
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
