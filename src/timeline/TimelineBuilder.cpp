#include "timeline/TimelineBuilder.h"

#include "locale/Collation.h"
#include "locale/DateFormatter.h"
#include "model/SubscriptionRules.h"
#include "timeline/BrandColor.h"

#include <QHash>

#include <algorithm>
#include <array>
#include <vector>

namespace orbitledge {

using namespace Qt::StringLiterals;

namespace {

enum class Bucket { Week, Month, NextMonth, Later, Inactive };
constexpr std::size_t bucketCount = 5;

constexpr qint64 urgentWithinDays = 3;
constexpr qsizetype colorsPerDay = 3;
constexpr int noWeekDay = -1;

/// All that follows from a renewal's day alone. Many subscriptions share a day, and working it out asks
/// the zone several times.
struct RenewalDay {
    std::optional<qint64> daysUntil;
    Bucket bucket = Bucket::Later;
    bool chargesThisMonth = false;
    bool isUrgent = false;
    int weekDay = noWeekDay;
};

/// Today and the boundaries around it.
class Today {
public:
    Today(Instant now, const Calendar &calendar)
        : m_calendar(calendar)
        , m_start(calendar.startOfDay(now))
        , m_week(calendar.week(m_start))
        , m_month(calendar.month(m_start))
        , m_nextMonth(m_month ? calendar.month(m_month->end) : std::nullopt)
    {
    }

    const std::optional<DateInterval> &month() const { return m_month; }

    QList<TimelineDay> weekDays() const
    {
        QList<TimelineDay> days;
        if (!m_week)
            return days;
        const LocalDate today = m_calendar.localDate(m_start);
        const qint64 first = m_calendar.localDate(m_week->start).daysSinceEpoch();
        for (qint64 offset = 0; offset < 7; ++offset) {
            const LocalDate date = LocalDate::fromDaysSinceEpoch(first + offset);
            const auto midnight = m_calendar.midnight(date);
            // A zone that changed sides of the date line has a week with a day less.
            if (!midnight || m_calendar.localDate(*midnight) != date)
                continue;
            days.append({
                .date = m_calendar.startOfDay(*midnight),
                .localDate = date,
                .isToday = date == today,
                .renewalColors = {},
            });
        }
        return days;
    }

    RenewalDay renewalOn(const LocalDate &date) const
    {
        const auto renewal = m_calendar.midnight(date);
        if (!renewal)
            return {};
        const qint64 days = m_calendar.daysBetween(m_start, *renewal);
        return {
            .daysUntil = days,
            .bucket = bucketOf(*renewal),
            .chargesThisMonth = m_month && *renewal >= m_start && *renewal < m_month->end,
            .isUrgent = days >= 0 && days <= urgentWithinDays,
        };
    }

private:
    Bucket bucketOf(Instant renewal) const
    {
        if (renewal < m_start)
            return Bucket::Week; // overdue: it belongs on top
        if (m_week && m_week->contains(renewal))
            return Bucket::Week;
        if (m_month && m_month->contains(renewal))
            return Bucket::Month;
        if (m_nextMonth && renewal < m_nextMonth->end)
            return Bucket::NextMonth;
        return Bucket::Later;
    }

    const Calendar &m_calendar;
    Instant m_start;
    std::optional<DateInterval> m_week;
    std::optional<DateInterval> m_month;
    std::optional<DateInterval> m_nextMonth;
};

/// What one charge comes to per month; absent where the cycle is not known.
std::optional<Decimal> monthlyShare(const Decimal &amount, const QString &billingCycle)
{
    static const Decimal weeksPerMonth(4);
    const QString cycle = billingCycle.toLower();
    if (cycle == "monthly"_L1)
        return amount;
    if (cycle == "yearly"_L1 || cycle == "annual"_L1 || cycle == "annually"_L1)
        return amount.dividedBy(12);
    if (cycle == "weekly"_L1)
        return amount * weeksPerMonth;
    if (cycle == "quarterly"_L1)
        return amount.dividedBy(3);
    return std::nullopt;
}

/// A subscription's place in its section, light enough to be moved about while sorting.
struct Place {
    qsizetype index = 0;
    std::optional<qint64> days;
    /// Where the name's sort key stands; only what has no day is ever ordered by name.
    std::size_t nameKey = 0;
};

class SectionList {
public:
    SectionList(const QList<Subscription> &subscriptions, const Calendar &calendar)
        : m_subscriptions(subscriptions)
        , m_calendar(calendar)
        , m_collation(calendar.locale())
    {
    }

    void add(Bucket bucket, qsizetype index, std::optional<qint64> days)
    {
        Place place{.index = index, .days = days, .nameKey = 0};
        if (!days) {
            place.nameKey = m_nameKeys.size();
            m_nameKeys.push_back(m_collation.sortKey(m_subscriptions[index].name));
        }
        places(bucket).push_back(place);
    }

    QList<TimelineSection> take(const std::optional<DateInterval> &month)
    {
        QList<TimelineSection> sections;
        append(sections, Bucket::Week, u"week"_s, u"This week"_s);
        append(sections, Bucket::Month, u"month"_s, u"Later this month"_s);
        append(sections, Bucket::NextMonth, u"next-month"_s, nextMonthName(month));
        append(sections, Bucket::Later, u"later"_s, u"Later"_s);
        append(sections, Bucket::Inactive, u"inactive"_s, u"Inactive"_s);
        return sections;
    }

private:
    std::vector<Place> &places(Bucket bucket) { return m_buckets[static_cast<std::size_t>(bucket)]; }

    bool comesBefore(const Place &left, const Place &right) const
    {
        if (left.days && right.days)
            return *left.days < *right.days;
        if (left.days || right.days)
            return left.days.has_value();
        return m_nameKeys[left.nameKey] < m_nameKeys[right.nameKey];
    }

    QString nextMonthName(const std::optional<DateInterval> &month)
    {
        // Only a section that will be shown is worth a formatter; nothing is in it where there are no months.
        if (!month || places(Bucket::NextMonth).empty())
            return {};
        return DateFormatter(m_calendar.locale()).month(m_calendar.localDate(month->end));
    }

    void append(QList<TimelineSection> &sections, Bucket bucket, const QString &id, const QString &title)
    {
        std::vector<Place> &sorted = places(bucket);
        if (sorted.empty())
            return;
        std::ranges::stable_sort(
            sorted, [this](const Place &left, const Place &right) { return comesBefore(left, right); });
        TimelineSection section{.id = id, .title = title, .entries = {}};
        section.entries.reserve(static_cast<qsizetype>(sorted.size()));
        for (const Place &place : sorted)
            section.entries.append({SubscriptionRef(m_subscriptions, place.index), place.days});
        sections.append(std::move(section));
    }

    const QList<Subscription> &m_subscriptions;
    const Calendar &m_calendar;
    Collation m_collation;
    std::array<std::vector<Place>, bucketCount> m_buckets;
    std::vector<QByteArray> m_nameKeys;
};

} // namespace

TimelineSnapshot buildTimeline(const QList<Subscription> &subscriptions, const QString &profileCurrency,
    Instant now, const Calendar &calendar)
{
    const Today today(now, calendar);
    TimelineSnapshot snapshot;
    snapshot.week = today.weekDays();

    QHash<LocalDate, RenewalDay> renewalDays;
    const auto renewalDay = [&](const LocalDate &date) -> const RenewalDay & {
        const auto known = renewalDays.constFind(date);
        if (known != renewalDays.constEnd())
            return *known;
        RenewalDay renewal = today.renewalOn(date);
        for (int i = 0; i < snapshot.week.size(); ++i) {
            if (snapshot.week[i].localDate == date)
                renewal.weekDay = i;
        }
        return *renewalDays.insert(date, renewal);
    };

    SectionList sections(subscriptions, calendar);
    for (qsizetype index = 0; index < subscriptions.size(); ++index) {
        const Subscription &subscription = subscriptions[index];
        if (!isActive(subscription)) {
            sections.add(Bucket::Inactive, index, std::nullopt);
            continue;
        }
        ++snapshot.activeCount;
        const RenewalDay &renewal = renewalDay(subscription.nextBillingDate);
        sections.add(renewal.bucket, index, renewal.daysUntil);
        if (renewal.isUrgent)
            ++snapshot.badgeCount;
        if (renewal.weekDay != noWeekDay) {
            TimelineDay &day = snapshot.week[renewal.weekDay];
            ++day.renewalCount;
            if (day.renewalColors.size() < colorsPerDay)
                day.renewalColors.append(brandColor(subscription.name).dark);
        }

        const auto amount = amountIn(profileCurrency, subscription);
        if (!amount) {
            snapshot.totalsArePartial = true;
            continue;
        }
        if (const auto share = monthlyShare(*amount, subscription.billingCycle))
            snapshot.monthlyTotal += *share;
        else
            snapshot.totalsArePartial = true;
        if (renewal.chargesThisMonth)
            snapshot.remainingThisMonth += *amount;
    }
    snapshot.sections = sections.take(today.month());
    return snapshot;
}

} // namespace orbitledge
