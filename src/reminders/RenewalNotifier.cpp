#include "reminders/RenewalNotifier.h"

#include "model/FloorDivide.h"
#include "model/UuidText.h"
#include "reminders/DeliveredLedger.h"
#include "reminders/RenewalNotificationPlanner.h"

#include <QUuid>

#include <algorithm>
#include <utility>

namespace orbitledge {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

using Center = std::shared_ptr<UserNotificationCenter>;
using Defaults = std::shared_ptr<UserDefaults>;
using Result = tl::expected<void, NotificationError>;

/// "At once", with a moment for what is being done to be finished with.
constexpr auto immediately = 2s;

NotificationTrigger triggerOf(const RenewalNotificationPlan &plan, const Calendar &calendar)
{
    const auto instant = plan.delivery.instant();
    if (!instant)
        return TimeIntervalTrigger{immediately};
    constexpr qint64 perMinute = 60'000;
    constexpr qint64 minutesPerHour = 60;
    constexpr qint64 minutesPerDay = 24 * minutesPerHour;
    const LocalDate date = calendar.localDate(*instant);
    const qint64 minutes = floorDivide(calendar.timeZone().wallClock(*instant), perMinute)
        - date.daysSinceEpoch() * minutesPerDay;
    return CalendarTrigger{
        .timeZone = calendar.timeZone().id(),
        .date = date,
        .hour = static_cast<int>(minutes / minutesPerHour),
        .minute = static_cast<int>(minutes % minutesPerHour),
    };
}

NotificationRequest requestOf(const RenewalNotificationPlan &plan, const Calendar &calendar)
{
    return {
        .identifier = plan.identifier,
        .content = {
            .title = plan.title,
            .body = plan.body,
            .sound = NotificationSound::Default,
            .userInfo = {{u"url"_s, plan.destinationURL.toString(QUrl::FullyEncoded)}},
        },
        .trigger = triggerOf(plan, calendar),
        .lastDay = plan.renewalDate,
    };
}

QString keyOf(const NotificationRequest &request)
{
    return request.identifier.mid(renewalIdentifierPrefix.size());
}

QStringList identifiersOf(const QList<NotificationRequest> &requests)
{
    QStringList identifiers;
    for (const NotificationRequest &request : requests)
        identifiers.append(request.identifier);
    return identifiers;
}

// Free of the notifier, which may be gone while they wait.

QCoro::Task<ReminderSynchronisation> replaceReminders(Center center, Defaults defaults,
    std::shared_ptr<SerialQueue> background, QList<Subscription> subscriptions, ReminderSettings settings,
    Instant now, Calendar calendar)
{
    const auto pending = co_await center->pendingRequests();
    if (!pending)
        co_return ReminderSynchronisation{.failure = pending.error().errorDescription};
    QList<NotificationRequest> waiting;
    QList<NotificationRequest> onTheirWay;
    for (const PendingNotification &notification : *pending) {
        if (notification.request.identifier.startsWith(renewalIdentifierPrefix))
            (notification.isOnItsWay ? onTheirWay : waiting).append(notification.request);
    }
    co_await center->removePendingRequests(identifiersOf(waiting));

    auto work = [=, ledger = readDeliveredLedger(*defaults)] {
        return planReminders(subscriptions, settings, now, calendar, ledger);
    };
    auto task = background->run(std::move(work));
    auto planning = co_await task;
    // What is on its way is not planned again once the ledger has its key, and goes on; unless it is about
    // what is not announced any more.
    QList<NotificationRequest> outdated;
    for (const NotificationRequest &request : onTheirWay) {
        const bool isPlanned = std::ranges::any_of(
            planning.plans, [&request](const auto &plan) { return plan.identifier == request.identifier; });
        if (!isPlanned && !planning.ledger.contains(keyOf(request)))
            outdated.append(request);
    }
    co_await center->removePendingRequests(identifiersOf(outdated));

    ReminderSynchronisation result{.skippedOverBudget = planning.skippedOverBudget, .failure = {}};
    for (const RenewalNotificationPlan &plan : std::as_const(planning.plans)) {
        const auto added = co_await center->add(requestOf(plan, calendar));
        if (added)
            continue;
        result.failure = added.error().errorDescription;
        // It was not shown, and can be later.
        if (plan.delivery.isImmediate())
            planning.ledger.remove(plan.key);
    }
    // Before the ledger says that they need not be planned again, which holds for what is safe only.
    if (const auto saved = co_await center->save(); !saved) {
        result.failure = saved.error().errorDescription;
        for (const RenewalNotificationPlan &plan : std::as_const(planning.plans)) {
            if (plan.delivery.isImmediate())
                planning.ledger.remove(plan.key);
        }
    }
    writeDeliveredLedger(*defaults, planning.ledger);
    co_return result;
}

QCoro::Task<Result> removeReminders(Center center, Defaults defaults)
{
    auto forgotten = co_await center->forget(renewalIdentifierPrefix.toString());
    removeDeliveredLedger(*defaults);
    co_return forgotten;
}

QCoro::Task<Result> sendTest(Center center)
{
    NotificationRequest request{
        .identifier = u"orbitledge.test."_s + uuidText(QUuid::createUuid()),
        .content = {
            .title = u"Orbitledge"_s,
            .body = u"Renewal reminders are working."_s,
            .sound = NotificationSound::Default,
            .userInfo = {},
        },
        .trigger = TimeIntervalTrigger{immediately},
        .lastDay = {},
    };
    auto added = co_await center->add(std::move(request));
    if (!added)
        co_return added;
    co_return co_await center->save();
}

} // namespace

RenewalNotifier::RenewalNotifier(Center center, Defaults defaults, QUrl webURL)
    : m_center(std::move(center))
    , m_defaults(std::move(defaults))
    , m_webURL(std::move(webURL))
{
}

QCoro::Task<NotificationAuthorization> RenewalNotifier::authorizationStatus()
{
    const auto center = m_center;
    const NotificationSettings settings = co_await center->settings();
    co_return settings.authorization;
}

QCoro::Task<bool> RenewalNotifier::canPresent()
{
    const auto center = m_center;
    const NotificationSettings settings = co_await center->settings();
    co_return settings.alertsEnabled || settings.notificationCenterEnabled;
}

QCoro::Task<tl::expected<bool, NotificationError>> RenewalNotifier::requestAuthorization()
{
    const auto center = m_center;
    co_return co_await center->requestAuthorization(NotificationOption::Alert | NotificationOption::Sound);
}

QCoro::Task<ReminderSynchronisation> RenewalNotifier::synchronise(QList<Subscription> subscriptions,
    qint64 leadDays, Instant now, QString profileCurrency, Calendar calendar)
{
    auto operation = [center = m_center, defaults = m_defaults, background = m_background,
                         subscriptions = std::move(subscriptions),
                         settings = ReminderSettings{leadDays, std::move(profileCurrency), m_webURL}, now,
                         calendar = std::move(calendar)] {
        return replaceReminders(center, defaults, background, subscriptions, settings, now, calendar);
    };
    return Turns::take(m_turns, std::move(operation));
}

QCoro::Task<Result> RenewalNotifier::removeAll()
{
    auto operation = [center = m_center, defaults = m_defaults] { return removeReminders(center, defaults); };
    return Turns::take(m_turns, std::move(operation));
}

QCoro::Task<Result> RenewalNotifier::sendTestNotification()
{
    return sendTest(m_center);
}

} // namespace orbitledge
