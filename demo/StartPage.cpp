#include "demo/StartPage.h"

#include "demo/Money.h"
#include "demo/PageFrame.h"
#include "demo/SampleData.h"
#include "model/SubscriptionRules.h"
#include "timeline/EntryTexts.h"
#include "timeline/TimelineBuilder.h"

using namespace Qt::StringLiterals;

namespace orbitledge::demo {

namespace {

// A page of thousands would help nobody; the calendar has them all.
constexpr qsizetype maximumRows = 100;

Html row(const TimelineEntry &entry, const UserProfile &profile, DateFormatter &dates)
{
    const Subscription &subscription = *entry.subscription;
    const bool active = isActive(subscription);
    const Urgency urgency = active ? urgencyOf(entry.daysUntilRenewal) : Urgency::None;
    const QString urgencyClass = urgency == Urgency::Urgent ? u" urgent"_s
        : urgency == Urgency::Soon                          ? u" soon"_s
                                                            : QString();
    const auto own = amountIn(profile.defaultCurrency, subscription);
    const QString cost = own ? moneyText(*own, profile.defaultCurrency)
                             : moneyText(subscription.cost, subscription.currency);
    const Html text = element("span"_L1, {{"class"_L1, u"text"_s}},
        element("b"_L1, {{"dir"_L1, u"auto"_s}}, subscription.name)
            + element("small"_L1, {}, subtitle(subscription, dates)));
    return element("li"_L1, {},
        element("a"_L1,
            {{"class"_L1, u"row"_s + urgencyClass + (active ? QString() : u" inactive"_s)},
                {"href"_L1, u"/subscriptions/%1/edit"_s.arg(stored(subscription.id).toString())}},
            logo(subscription.name) + text + element("span"_L1, {{"class"_L1, u"cost"_s}}, cost)));
}

Html totals(const TimelineSnapshot &timeline, const UserProfile &profile, const LocalDate &today)
{
    const QString currency = profile.defaultCurrency;
    const QString month = monthText(today);
    Html left = element("p"_L1, {{"class"_L1, u"eyebrow"_s}}, month)
        + element("p"_L1, {{"class"_L1, u"total"_s}},
            Html(moneyText(timeline.monthlyTotal, currency)) + element("small"_L1, {}, u" / month"_s))
        + element("p"_L1, {{"class"_L1, u"soft"_s}}, u"%1 active"_s.arg(timeline.activeCount));
    if (timeline.totalsArePartial)
        left += element("p"_L1, {{"class"_L1, u"soft"_s}},
            u"Some subscriptions could not be converted to %1."_s.arg(currency));
    const Html right
        = element("p"_L1, {{"class"_L1, u"figure"_s}}, moneyText(timeline.remainingThisMonth, currency))
        + element("p"_L1, {{"class"_L1, u"soft"_s}}, u"left to charge"_s);
    return element("section"_L1, {{"class"_L1, u"card totals"_s}},
        element("div"_L1, {}, left) + element("div"_L1, {{"class"_L1, u"end"_s}}, right));
}

} // namespace

Html welcome()
{
    const Html credentials = element("dl"_L1, {{"class"_L1, u"credentials"_s}},
        element("dt"_L1, {}, u"E-mail"_s) + element("dd"_L1, {}, element("code"_L1, {}, QString(sampleEmail)))
            + element("dt"_L1, {}, u"Password"_s)
            + element("dd"_L1, {}, element("code"_L1, {}, QString(samplePassword))));
    return element("section"_L1, {{"class"_L1, u"card narrow"_s}},
        element("h1"_L1, {}, u"See what’s about to charge."_s)
            + element("p"_L1, {},
                u"Orbitledge keeps an eye on the subscriptions that you pay for. This is its demo service: "
                "it runs on your own computer, so that you can try the tray client without an account "
                "anywhere."_s)
            + element("p"_L1, {}, u"A sample account is ready, here and in the client:"_s) + credentials
            + element("p"_L1, {},
                element("a"_L1, {{"class"_L1, u"button"_s}, {"href"_L1, u"/login"_s}}, u"Sign in"_s)));
}

Html overview(
    const UserProfile &profile, const QList<StoredSubscription> &subscriptions, const LocalDate &today)
{
    QList<Subscription> records;
    records.reserve(subscriptions.size());
    for (const StoredSubscription &subscription : subscriptions)
        records.append(subscription.record);
    // The same sums and sections as in the tray, and so by the same code.
    // Weeks start on Monday, as in the calendar.
    const Locale locale = Locale::named("en_GB").value_or(Locale{});
    const Calendar calendar(TimeZone::named("UTC").value_or(TimeZone::system()), locale);
    DateFormatter dates(locale);
    const Instant now = Instant::fromSecondsSinceEpoch(today.daysSinceEpoch() * 86'400);
    const TimelineSnapshot timeline = buildTimeline(records, profile.defaultCurrency, now, calendar);

    Html content
        = element("h1"_L1, {{"class"_L1, u"hidden"_s}}, u"Overview"_s) + totals(timeline, profile, today);
    if (records.isEmpty()) {
        return content
            + element("section"_L1, {{"class"_L1, u"card center"_s}},
                element("h2"_L1, {}, u"No subscriptions yet"_s)
                    + element("p"_L1, {}, u"Add your first renewal with the client’s quick add."_s));
    }
    qsizetype shown = 0;
    for (const TimelineSection &section : timeline.sections) {
        Html rows;
        for (const TimelineEntry &entry : section.entries) {
            if (shown++ < maximumRows)
                rows += row(entry, profile, dates);
        }
        if (!rows.isEmpty())
            content += element("section"_L1, {{"class"_L1, u"card list"_s}},
                element("h2"_L1, {{"class"_L1, u"eyebrow"_s}}, section.title) + element("ul"_L1, {}, rows));
    }
    if (shown > maximumRows) {
        content += element("p"_L1, {{"class"_L1, u"soft center"_s}},
            u"%1 more are not shown here; "_s.arg(shown - maximumRows)
                + element("a"_L1, {{"href"_L1, u"/calendar"_s}}, u"the calendar"_s) + u" has them all."_s);
    }
    return content;
}

} // namespace orbitledge::demo
