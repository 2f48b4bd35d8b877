#include "support/SampleSubscriptions.h"
#include "support/TestMain.h"
#include "support/Times.h"
#include "timeline/TimelineBuilder.h"

#include <QDate>

#include <boost/multiprecision/cpp_int.hpp>
#include <rapidcheck.h>

#include <algorithm>
#include <map>
#include <random>
#include <tuple>
#include <vector>

using namespace orbitledge;
using namespace orbitledge::testing;
using namespace Qt::StringLiterals;

namespace {

using boost::multiprecision::cpp_rational;
using Subscriptions = std::vector<Subscription>;

constexpr const char *profileCurrency = "USD";

/// A number of cents, written out: 1234 as "12.34".
QString centsText(qint64 cents)
{
    return QString::number(cents / 100) + u'.' + QString::number(cents % 100).rightJustified(2, u'0');
}

/// The exact value of a number without an exponent.
cpp_rational exact(const Decimal &value)
{
    using boost::multiprecision::cpp_int;
    QString digits = value.toString();
    const auto point = digits.indexOf(u'.');
    const auto places = point < 0 ? 0 : digits.size() - point - 1;
    digits.remove(u'.');
    const bool negative = digits.startsWith(u'-');
    // A leading zero would make the digits octal.
    while (digits.size() > 1 && !digits.front().isDigit())
        digits.remove(0, 1);
    while (digits.size() > 1 && digits.front() == u'0')
        digits.remove(0, 1);
    const cpp_int integer(digits.toStdString());
    const cpp_rational result(
        integer, boost::multiprecision::pow(cpp_int(10), static_cast<unsigned>(places)));
    return negative ? cpp_rational(-result) : result;
}

struct Surroundings {
    QByteArray zone;
    QByteArray locale;
    Instant now;

    [[nodiscard]] Calendar calendar() const
    {
        // Zones and locales are slow to find, and always the same few.
        static std::map<std::pair<QByteArray, QByteArray>, Calendar> calendars;
        const auto key = std::pair(zone, locale);
        auto known = calendars.find(key);
        if (known == calendars.end())
            known = calendars.emplace(key, calendarIn(zone, locale)).first;
        return known->second;
    }

    [[nodiscard]] TimelineSnapshot build(const Subscriptions &subscriptions) const
    {
        return buildTimeline(QList<Subscription>(subscriptions.begin(), subscriptions.end()),
            QLatin1StringView(profileCurrency), now, calendar());
    }

    friend void showValue(const Surroundings &value, std::ostream &out)
    {
        out << value.zone.constData() << ", " << value.locale.constData() << ", "
            << value.now.text().constData();
    }
};

rc::Gen<Surroundings> anywhereBetween(const char *from, const char *to)
{
    const std::vector<QByteArray> zones(instructiveZones().begin(), instructiveZones().end());
    const qint64 first = at(from).millisecondsSinceEpoch();
    const qint64 last = at(to).millisecondsSinceEpoch();
    return rc::gen::apply(
        [](const QByteArray &zone, const char *locale, qint64 now) {
            return Surroundings{zone, locale, Instant::fromMillisecondsSinceEpoch(now)};
        },
        rc::gen::elementOf(zones),
        rc::gen::element<const char *>("en_US", "de_DE", "ar_EG", "ja_JP", "sv_SE"),
        rc::gen::inRange(first, last));
}

rc::Gen<Surroundings> anywhere()
{
    return anywhereBetween("1992-01-01T00:00:00Z", "2099-01-01T00:00:00Z");
}

/// Any day within some months, at times one that does not exist.
rc::Gen<LocalDate> dateAround(const Surroundings &surroundings)
{
    const qint64 today = surroundings.calendar().localDate(surroundings.now).daysSinceEpoch();
    const auto near
        = rc::gen::map(rc::gen::inRange<qint64>(today - 10, today + 12), LocalDate::fromDaysSinceEpoch);
    const auto far
        = rc::gen::map(rc::gen::inRange<qint64>(today - 60, today + 120), LocalDate::fromDaysSinceEpoch);
    const auto none
        = rc::gen::element(LocalDate{2026, 2, 30}, LocalDate{2026, 13, 1}, LocalDate{2025, 2, 29});
    return rc::gen::weightedOneOf<LocalDate>({{4, near}, {4, far}, {1, none}});
}

rc::Gen<QString> oneOf(std::vector<QString> texts)
{
    return rc::gen::elementOf(std::move(texts));
}

/// Amounts that a twelfth and a third of are whole cents.
rc::Gen<Subscription> subscriptionIn(const Surroundings &surroundings)
{
    return rc::gen::exec([surroundings] {
        const QString name = *oneOf({u"alpha"_s, u"Alpha"_s, u"beta"_s, u"BETA"_s, u"gamma"_s, u"x"_s});
        SampleSubscription sample(name);
        sample
            .costs(
                centsText(*rc::gen::inRange<qint64>(0, 100'000) * 12), *oneOf({u"USD"_s, u"usd"_s, u"EUR"_s}))
            .every(*oneOf({u"monthly"_s, u"Monthly"_s, u"yearly"_s, u"ANNUAL"_s, u"annually"_s, u"weekly"_s,
                u"quarterly"_s, u"biweekly"_s}))
            .renewsOn(*dateAround(surroundings))
            .withStatus(*oneOf({u"active"_s, u"Active"_s, u"ACTIVE"_s, u"cancelled"_s, u"paused"_s}));
        if (*rc::gen::arbitrary<bool>())
            sample.convertedTo(
                centsText(*rc::gen::inRange<qint64>(0, 100'000) * 12), *oneOf({u"uSd"_s, u"GBP"_s}));
        return sample.value();
    });
}

/// Each with an identifier of its own, so that the same one can be told wherever it turns up.
Subscriptions subscriptionsIn(const Surroundings &surroundings)
{
    auto subscriptions = *rc::gen::container<Subscriptions>(subscriptionIn(surroundings));
    for (std::size_t i = 0; i < subscriptions.size(); ++i)
        subscriptions[i].id = QUuid(static_cast<uint>(i + 1), 0, 0, 0, 0, 0, 0, 0, 0, 0, 0);
    return subscriptions;
}

bool hasStatusActive(const Subscription &subscription)
{
    return subscription.status.toCaseFolded() == u"active";
}

QDate toQDate(const LocalDate &date)
{
    return {static_cast<int>(date.year), static_cast<int>(date.month), static_cast<int>(date.day)};
}

/// Where a renewal belongs, from dates alone.
QString sectionByDates(const LocalDate &date, const LocalDate &todaysDate, Weekday firstWeekday)
{
    const QDate renewal = toQDate(date);
    const QDate today = toQDate(todaysDate);
    if (!renewal.isValid())
        return u"later"_s;
    const int sunday = 7; // where QDate counts from Monday
    const int first = firstWeekday == Weekday::Sunday ? sunday : static_cast<int>(firstWeekday) - 1;
    const QDate weekStart = today.addDays(-((today.dayOfWeek() - first + 7) % 7));
    const QDate nextMonth = QDate(today.year(), today.month(), 1).addMonths(1);
    if (renewal <= weekStart.addDays(7) && (renewal >= weekStart || renewal < today))
        return u"week"_s;
    if (renewal <= nextMonth)
        return u"month"_s;
    return renewal < nextMonth.addMonths(1) ? u"next-month"_s : u"later"_s;
}

/// The section, the days and the name in one case: entries with the same are told apart by no rule of order.
using Tie = std::tuple<QString, std::optional<qint64>, QString>;

std::map<Tie, std::vector<QUuid>> tiesOf(const TimelineSnapshot &snapshot)
{
    std::map<Tie, std::vector<QUuid>> ties;
    for (const TimelineSection &section : snapshot.sections) {
        for (const TimelineEntry &entry : section.entries) {
            const QString name = entry.daysUntilRenewal ? QString() : entry.subscription->name.toCaseFolded();
            ties[{section.id, entry.daysUntilRenewal, name}].push_back(entry.subscription->id);
        }
    }
    return ties;
}

} // namespace

class TimelinePropertiesTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void shouldListEachSubscriptionExactlyOnce()
    {
        QVERIFY(rc::check("the sections hold each subscription once, unchanged", [] {
            const Surroundings surroundings = *anywhere();
            const Subscriptions subscriptions = subscriptionsIn(surroundings);
            const TimelineSnapshot snapshot = surroundings.build(subscriptions);
            Subscriptions listed;
            for (const TimelineSection &section : snapshot.sections) {
                RC_ASSERT(!section.entries.isEmpty());
                for (const TimelineEntry &entry : section.entries)
                    listed.push_back(*entry.subscription);
            }
            std::ranges::sort(listed, {}, &Subscription::id);
            RC_ASSERT(listed == subscriptions); // which are in the order of their identifiers
        }));
    }

    void shouldPlaceEachSubscriptionByDatesAlone()
    {
        // From 2020 no zone of these changed its clocks by a day, so a midnight stands for its date.
        QVERIFY(rc::check("the section follows from the dates and the first weekday", [] {
            const Surroundings surroundings
                = *anywhereBetween("2020-01-01T00:00:00Z", "2099-01-01T00:00:00Z");
            const Calendar calendar = surroundings.calendar();
            const LocalDate today = calendar.localDate(surroundings.now);
            const TimelineSnapshot snapshot = surroundings.build(subscriptionsIn(surroundings));
            for (const TimelineSection &section : snapshot.sections) {
                for (const TimelineEntry &entry : section.entries) {
                    if (hasStatusActive(*entry.subscription))
                        RC_ASSERT(section.id
                            == sectionByDates(
                                entry.subscription->nextBillingDate, today, calendar.firstWeekday()));
                    else
                        RC_ASSERT(section.id == u"inactive"_s);
                }
            }
        }));
    }

    void shouldCountDaysByDatesAlone()
    {
        QVERIFY(rc::check("a renewal is as many days away as its date", [] {
            const Surroundings surroundings
                = *anywhereBetween("2020-01-01T00:00:00Z", "2099-01-01T00:00:00Z");
            const Calendar calendar = surroundings.calendar();
            const LocalDate today = calendar.localDate(surroundings.now);
            // A day that starts at one o'clock is an hour short of one at the next midnight.
            const Instant start = calendar.startOfDay(surroundings.now);
            const bool hasMidnight = calendar.timeZone().wallClock(start) == wallTime(today);
            const TimelineSnapshot snapshot = surroundings.build(subscriptionsIn(surroundings));
            for (const TimelineSection &section : snapshot.sections) {
                for (const TimelineEntry &entry : section.entries) {
                    const QDate date = toQDate(entry.subscription->nextBillingDate);
                    const bool renews = hasStatusActive(*entry.subscription) && date.isValid();
                    RC_ASSERT(entry.daysUntilRenewal.has_value() == renews);
                    if (!renews)
                        continue;
                    const qint64 days = toQDate(today).daysTo(date);
                    RC_ASSERT(*entry.daysUntilRenewal == (hasMidnight || days <= 0 ? days : days - 1));
                }
            }
        }));
    }

    void shouldAddUpToTheLastDigit()
    {
        QVERIFY(rc::check("the totals are the sums of their parts in whole cents", [] {
            const Surroundings surroundings
                = *anywhereBetween("2020-01-01T00:00:00Z", "2099-01-01T00:00:00Z");
            const Subscriptions subscriptions = subscriptionsIn(surroundings);
            const QDate today = toQDate(surroundings.calendar().localDate(surroundings.now));
            cpp_rational monthly = 0;
            cpp_rational remaining = 0;
            qint64 active = 0;
            bool partial = false;
            for (const Subscription &subscription : subscriptions) {
                if (!hasStatusActive(subscription))
                    continue;
                ++active;
                cpp_rational amount = exact(subscription.cost);
                if (subscription.currency.toUpper() != u"USD") {
                    if (!subscription.convertedCost || subscription.convertedCurrency->toUpper() != u"USD") {
                        partial = true;
                        continue;
                    }
                    amount = exact(*subscription.convertedCost);
                }
                static const std::map<QString, cpp_rational> shares{{u"monthly"_s, 1}, {u"weekly"_s, 4},
                    {u"quarterly"_s, cpp_rational(1, 3)}, {u"yearly"_s, cpp_rational(1, 12)},
                    {u"annual"_s, cpp_rational(1, 12)}, {u"annually"_s, cpp_rational(1, 12)}};
                const auto share = shares.find(subscription.billingCycle.toLower());
                if (share == shares.end())
                    partial = true;
                else
                    monthly += amount * share->second;
                const QDate date = toQDate(subscription.nextBillingDate);
                if (date.isValid() && date >= today && date.year() == today.year()
                    && date.month() == today.month())
                    remaining += amount;
            }
            const TimelineSnapshot snapshot = surroundings.build(subscriptions);
            RC_ASSERT(exact(snapshot.monthlyTotal) == monthly);
            RC_ASSERT(exact(snapshot.remainingThisMonth) == remaining);
            RC_ASSERT(snapshot.activeCount == active);
            RC_ASSERT(snapshot.totalsArePartial == partial);
        }));
    }

    void shouldOrderSectionsAndEntries()
    {
        QVERIFY(rc::check("sections come in their order, and entries as a stable sort leaves them", [] {
            const Surroundings surroundings = *anywhere();
            const TimelineSnapshot snapshot = surroundings.build(subscriptionsIn(surroundings));
            static const QStringList order{u"week"_s, u"month"_s, u"next-month"_s, u"later"_s, u"inactive"_s};
            qsizetype previous = -1;
            for (const TimelineSection &section : snapshot.sections) {
                const auto place = order.indexOf(section.id);
                RC_ASSERT(place > previous);
                previous = place;
                for (qsizetype i = 1; i < section.entries.size(); ++i) {
                    const TimelineEntry &first = section.entries[i - 1];
                    const TimelineEntry &second = section.entries[i];
                    RC_ASSERT((first.daysUntilRenewal || !second.daysUntilRenewal));
                    if (first.daysUntilRenewal && second.daysUntilRenewal)
                        RC_ASSERT(*first.daysUntilRenewal <= *second.daysUntilRenewal);
                    if (!first.daysUntilRenewal && !second.daysUntilRenewal) {
                        // The names are of ASCII letters, where folding the case gives every locale's order.
                        RC_ASSERT(first.subscription->name.toCaseFolded()
                            <= second.subscription->name.toCaseFolded());
                    }
                }
            }
            for (const auto &[tie, identifiers] : tiesOf(snapshot))
                RC_ASSERT(std::ranges::is_sorted(identifiers)); // the order of the input
        }));
    }

    void shouldGiveTheSameSnapshotAgain()
    {
        QVERIFY(rc::check("the same input gives the same snapshot", [] {
            const Surroundings surroundings = *anywhere();
            const Subscriptions subscriptions = subscriptionsIn(surroundings);
            RC_ASSERT(surroundings.build(subscriptions) == surroundings.build(subscriptions));
        }));
    }

    void shouldNotCareForTheOrderOfTheInputButForTies()
    {
        QVERIFY(rc::check("another order of the input changes the order of ties at most", [] {
            const Surroundings surroundings = *anywhere();
            const Subscriptions subscriptions = subscriptionsIn(surroundings);
            Subscriptions shuffled = subscriptions;
            std::mt19937_64 random(*rc::gen::arbitrary<quint64>());
            std::ranges::shuffle(shuffled, random);
            const TimelineSnapshot first = surroundings.build(subscriptions);
            const TimelineSnapshot second = surroundings.build(shuffled);
            auto secondTies = tiesOf(second);
            for (auto &[tie, identifiers] : secondTies)
                std::ranges::sort(identifiers);
            RC_ASSERT(tiesOf(first) == secondTies);
            RC_ASSERT(first.monthlyTotal == second.monthlyTotal);
            RC_ASSERT(first.remainingThisMonth == second.remainingThisMonth);
            RC_ASSERT(first.activeCount == second.activeCount);
            RC_ASSERT(first.totalsArePartial == second.totalsArePartial);
            RC_ASSERT(first.badgeCount == second.badgeCount);
            RC_ASSERT(first.week.size() == second.week.size());
            for (qsizetype i = 0; i < first.week.size(); ++i)
                RC_ASSERT(first.week[i].renewalColors.size() == second.week[i].renewalColors.size());
        }));
    }

    void shouldShowOnTheBadgeWhatIsDueWithinThreeDays()
    {
        QVERIFY(rc::check("the badge counts the entries with 0 to 3 days", [] {
            const Surroundings surroundings = *anywhere();
            const TimelineSnapshot snapshot = surroundings.build(subscriptionsIn(surroundings));
            qint64 urgent = 0;
            for (const TimelineSection &section : snapshot.sections)
                urgent += std::ranges::count_if(section.entries, [](const TimelineEntry &entry) {
                    return entry.daysUntilRenewal && *entry.daysUntilRenewal >= 0
                        && *entry.daysUntilRenewal <= 3;
                });
            RC_ASSERT(snapshot.badgeCount == urgent);
        }));
    }

    void shouldShowAColorForEachOfADaysFirstThreeRenewals()
    {
        QVERIFY(rc::check("a day has as many colours as renewals, up to three", [] {
            const Surroundings surroundings = *anywhere();
            const Subscriptions subscriptions = subscriptionsIn(surroundings);
            const TimelineSnapshot snapshot = surroundings.build(subscriptions);
            qint64 todays = 0;
            for (qsizetype i = 0; i < snapshot.week.size(); ++i) {
                const TimelineDay &day = snapshot.week[i];
                const auto renewals = std::ranges::count_if(subscriptions, [&](const Subscription &one) {
                    return hasStatusActive(one) && one.nextBillingDate == day.localDate;
                });
                RC_ASSERT(day.renewalColors.size() == std::min<qsizetype>(renewals, 3));
                if (i > 0)
                    RC_ASSERT(snapshot.week[i - 1].localDate < day.localDate);
                todays += day.isToday ? 1 : 0;
            }
            RC_ASSERT(todays == 1);
            RC_ASSERT((snapshot.week.size() == 7 || snapshot.week.size() == 6));
        }));
    }
};

ORBITLEDGE_TEST_MAIN(TimelinePropertiesTest)
#include "TimelinePropertiesTest.moc"
