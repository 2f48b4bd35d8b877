#include "demo/CalendarPage.h"

#include "demo/Money.h"
#include "demo/PageFrame.h"
#include "model/SubscriptionRules.h"

#include <QMap>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace orbitledge::demo {

namespace {

enum class What { Renews, TrialEnds, Ends };

struct Event {
    const StoredSubscription *subscription = nullptr;
    What what = What::Renews;
};

using Days = QMap<qint64, QList<Event>>;

LocalDate lastOf(const LocalDate &month)
{
    return addDays(addMonths(month, 1), -1);
}

LocalDate dayOf(const Instant &instant)
{
    return LocalDate::fromDaysSinceEpoch(instant.millisecondsSinceEpoch() / 86'400'000);
}

Days eventsOf(const QList<StoredSubscription> &subscriptions, const LocalDate &month)
{
    const LocalDate last = lastOf(month);
    Days days;
    const auto add = [&](const LocalDate &date, const StoredSubscription &subscription, What what) {
        if (date >= month && date <= last)
            days[date.daysSinceEpoch()].append({&subscription, what});
    };
    for (const StoredSubscription &subscription : subscriptions) {
        const Subscription &record = subscription.record;
        if (record.cancellationDate)
            add(*record.cancellationDate, subscription, What::Ends);
        if (!isActive(record))
            continue;
        // What it charged before it was entered here, nobody knows.
        const LocalDate known = std::min(dayOf(record.createdAt), record.nextBillingDate);
        for (const LocalDate &date :
            renewalsBetween(std::max(month, known), last, subscription.anchor, subscription.cycle))
            add(date, subscription, What::Renews);
        if (record.trialEndDate)
            add(*record.trialEndDate, subscription, What::TrialEnds);
    }
    return days;
}

QString noteOf(const Event &event)
{
    const Subscription &record = event.subscription->record;
    switch (event.what) {
    case What::Renews:
        return moneyText(record.cost, record.currency);
    case What::TrialEnds:
        return u"trial ends"_s;
    case What::Ends:
        return u"ends"_s;
    }
    return {};
}

Html chip(const Event &event)
{
    const Subscription &record = event.subscription->record;
    const QString kind = event.what == What::Renews ? QString() : u" quiet"_s;
    return element("li"_L1, {},
        element("a"_L1,
            {{"class"_L1, u"chip "_s + tintClass(record.name) + kind},
                {"href"_L1, u"/subscriptions/%1/edit"_s.arg(stored(record.id).toString())},
                {"title"_L1, record.name + u", "_s + noteOf(event)}},
            element("b"_L1, {{"dir"_L1, u"auto"_s}}, record.name) + element("small"_L1, {}, noteOf(event))));
}

// A day of a large account would make the grid useless.
constexpr qsizetype maximumChips = 8;

Html cell(const LocalDate &date, const QList<Event> &events, const LocalDate &today)
{
    Html chips;
    for (const Event &event : events.mid(0, maximumChips))
        chips += chip(event);
    if (events.size() > maximumChips)
        chips += element(
            "li"_L1, {{"class"_L1, u"more"_s}}, u"and %1 more"_s.arg(events.size() - maximumChips));
    QString kind = date == today ? u"today"_s : date < today ? u"past"_s : QString();
    if (events.isEmpty())
        kind += u" empty"_s;
    const Html number = element("time"_L1, {{"datetime"_L1, date.text()}},
        element(
            "span"_L1, {{"class"_L1, u"number"_s}, {"aria-hidden"_L1, u"true"_s}}, QString::number(date.day))
            + element("span"_L1, {{"class"_L1, u"day"_s}}, dayText(date)));
    Html content = number;
    if (!events.isEmpty())
        content += element("ul"_L1, {}, chips);
    return element("td"_L1,
        {{"class"_L1, kind.trimmed(), !kind.isEmpty()}, {"aria-current"_L1, u"date"_s, date == today}},
        content);
}

Html grid(const Days &days, const LocalDate &month, const LocalDate &today)
{
    Html head;
    for (const QString &name : {u"Mon"_s, u"Tue"_s, u"Wed"_s, u"Thu"_s, u"Fri"_s, u"Sat"_s, u"Sun"_s})
        head += element("th"_L1, {{"scope"_L1, u"col"_s}}, name);
    const auto outside = element("td"_L1, {{"class"_L1, u"outside"_s}});

    // The epoch was a Thursday; weeks start on Monday here.
    const auto weekday = [](const LocalDate &date) { return (date.daysSinceEpoch() % 7 + 10) % 7; };
    Html rows;
    Html row;
    for (qint64 i = 0; i < weekday(month); ++i)
        row += outside;
    const LocalDate last = lastOf(month);
    for (LocalDate date = month; date <= last; date = addDays(date, 1)) {
        row += cell(date, days.value(date.daysSinceEpoch()), today);
        if (weekday(date) == 6 || date == last) {
            for (qint64 i = weekday(date); i < 6; ++i)
                row += outside;
            rows += element("tr"_L1, {}, row);
            row = {};
        }
    }
    return element("table"_L1, {{"class"_L1, u"calendar"_s}},
        element("caption"_L1, {{"class"_L1, u"hidden"_s}}, u"Renewals in "_s + monthText(month))
            + element("thead"_L1, {}, element("tr"_L1, {}, head)) + element("tbody"_L1, {}, rows));
}

QString summary(const Days &days, const UserProfile &profile)
{
    Decimal sum;
    qsizetype renewals = 0;
    for (const QList<Event> &events : days) {
        for (const Event &event : events) {
            if (event.what != What::Renews)
                continue;
            ++renewals;
            sum += amountIn(profile.defaultCurrency, event.subscription->record).value_or(Decimal());
        }
    }
    if (renewals == 0)
        return u"Nothing renews in this month."_s;
    return renewals == 1 ? u"1 renewal, %1"_s.arg(moneyText(sum, profile.defaultCurrency))
                         : u"%1 renewals, %2"_s.arg(renewals).arg(moneyText(sum, profile.defaultCurrency));
}

Html monthLink(const LocalDate &month, const QString &rel, const QString &text)
{
    if (month < earliestDate || month > latestDate)
        return {};
    return element("a"_L1,
        {{"class"_L1, u"step"_s}, {"rel"_L1, rel}, {"aria-label"_L1, monthText(month)},
            {"href"_L1, u"/calendar?month="_s + month.text().first(7)}},
        text);
}

} // namespace

std::optional<LocalDate> monthFromText(const QString &text)
{
    const auto date = LocalDate::fromText((text + u"-01"_s).toStdString());
    return date && *date >= earliestDate && *date <= latestDate ? date : std::nullopt;
}

Html calendarContent(const UserProfile &profile, const QList<StoredSubscription> &subscriptions,
    const LocalDate &month, const LocalDate &today)
{
    const Days days = eventsOf(subscriptions, month);
    Html steps = monthLink(addMonths(month, -1), u"prev"_s, u"‹"_s);
    if (month.year != today.year || month.month != today.month)
        steps += element("a"_L1, {{"class"_L1, u"step"_s}, {"href"_L1, u"/calendar"_s}}, u"Today"_s);
    steps += monthLink(addMonths(month, 1), u"next"_s, u"›"_s);
    return element("div"_L1, {{"class"_L1, u"heading"_s}},
               element("div"_L1, {},
                   element("h1"_L1, {}, monthText(month))
                       + element("p"_L1, {{"class"_L1, u"soft"_s}}, summary(days, profile)))
                   + element("nav"_L1, {{"class"_L1, u"steps"_s}, {"aria-label"_L1, u"Months"_s}}, steps))
        + grid(days, month, today);
}

} // namespace orbitledge::demo
