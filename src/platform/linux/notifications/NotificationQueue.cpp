#include "platform/linux/notifications/NotificationQueue.h"

#include "locale/TimeZone.h"

#include <algorithm>

namespace orbitledge {

using namespace Qt::StringLiterals;

namespace {

constexpr qint64 millisecondsPerMinute = 60'000;
constexpr qint64 minutesPerHour = 60;
constexpr qint64 millisecondsPerDay = 24 * minutesPerHour * millisecondsPerMinute;

Instant plus(Instant instant, std::chrono::milliseconds interval)
{
    return Instant::fromMillisecondsSinceEpoch(instant.millisecondsSinceEpoch() + interval.count());
}

/// It is on its way from the moment it is added: nobody plans it again, so that it must not be lost.
bool isOnItsWay(const QueuedNotification &queued, Instant now)
{
    return queued.due <= now || std::holds_alternative<TimeIntervalTrigger>(queued.request.trigger);
}

bool isAboutPrefix(const ShownNotification &shown, const QString &prefix)
{
    return std::ranges::any_of(
        shown.identifiers, [&prefix](const QString &identifier) { return identifier.startsWith(prefix); });
}

NotificationContent summary(std::size_t count)
{
    return {
        .title = u"Orbitledge"_s,
        .body = QString::number(count) + u" reminders came due while Orbitledge was not running."_s,
        .sound = NotificationSound::Default,
        .userInfo = {},
    };
}

} // namespace

std::optional<Instant> fireInstant(const CalendarTrigger &trigger)
{
    const bool isTime
        = trigger.hour >= 0 && trigger.hour < 24 && trigger.minute >= 0 && trigger.minute < minutesPerHour;
    // The years that programs and files of dates agree on.
    constexpr qint64 lastYear = 9999;
    if (!isTime || !trigger.date.isValid() || trigger.date.year > lastYear)
        return std::nullopt;
    const auto zone = TimeZone::named(trigger.timeZone);
    const qint64 minutes = trigger.hour * minutesPerHour + trigger.minute;
    // Not asked for in vain: the machine's zone is read from its file, and sixty reminders are planned at
    // once.
    return (zone ? *zone : TimeZone::system())
        .firstInstantFrom(
            trigger.date.daysSinceEpoch() * millisecondsPerDay + minutes * millisecondsPerMinute);
}

QList<PendingNotification> NotificationQueue::pending(Instant now) const
{
    QList<PendingNotification> pending;
    for (const QueuedNotification &queued : m_queued)
        pending.append({queued.request, isOnItsWay(queued, now)});
    return pending;
}

void NotificationQueue::remove(const QStringList &identifiers)
{
    const QSet<QString> unwanted(identifiers.begin(), identifiers.end());
    std::erase_if(m_queued, [&unwanted](const QueuedNotification &queued) {
        return unwanted.contains(queued.request.identifier);
    });
}

bool NotificationQueue::add(NotificationRequest request, Instant now)
{
    QueuedNotification added;
    if (const auto *const calendar = std::get_if<CalendarTrigger>(&request.trigger)) {
        const auto instant = fireInstant(*calendar);
        if (!instant)
            return false;
        added.due = *instant;
    } else {
        added.due = plus(now, std::get<TimeIntervalTrigger>(request.trigger).interval);
    }

    const auto earlier = std::ranges::find_if(m_queued, [&request](const QueuedNotification &queued) {
        return queued.request.identifier == request.identifier;
    });
    if (earlier != m_queued.end()) {
        // What is on its way stays so, with another text.
        if (isOnItsWay(*earlier, now)) {
            added.due = std::min(added.due, earlier->due);
            added.isFromEarlierRun = earlier->isFromEarlierRun;
        }
        m_queued.erase(earlier);
    } else if (plus(added.due, std::chrono::minutes(1)) <= now) {
        return true; // its minute is over
    }
    if (m_delivered.contains(request.identifier) && freshlyShownAlone(request.identifier) == nullptr)
        return true; // nobody is told twice
    added.request = std::move(request);
    added.serial = ++m_lastSerial;
    m_queued.push_back(std::move(added));
    return true;
}

QList<ShownNotification> NotificationQueue::forget(const QString &prefix)
{
    std::erase_if(m_queued,
        [&prefix](const QueuedNotification &queued) { return queued.request.identifier.startsWith(prefix); });
    m_delivered.removeIf([&prefix](const auto &entry) { return entry.key().startsWith(prefix); });
    QList<ShownNotification> takenBack;
    for (const ShownNotification &shown : m_shown) {
        if (isAboutPrefix(shown, prefix))
            takenBack.append(shown);
    }
    std::erase_if(
        m_shown, [&prefix](const ShownNotification &shown) { return isAboutPrefix(shown, prefix); });
    return takenBack;
}

std::optional<Instant> NotificationQueue::nextDue(Instant now) const
{
    std::optional<Instant> next;
    for (const QueuedNotification &queued : m_queued) {
        if (queued.due > now && (!next || queued.due < *next))
            next = queued.due;
    }
    return next;
}

bool NotificationQueue::hasDue(Instant now) const
{
    return std::ranges::any_of(
        m_queued, [now](const QueuedNotification &queued) { return queued.due <= now; });
}

void NotificationQueue::followClock(Instant now)
{
    for (QueuedNotification &queued : m_queued) {
        if (const auto *const trigger = std::get_if<TimeIntervalTrigger>(&queued.request.trigger))
            queued.due = std::min(queued.due, plus(now, trigger->interval));
    }
}

void NotificationQueue::expire(Instant now, const LocalDate &today)
{
    std::erase_if(m_queued, [&](const QueuedNotification &queued) {
        const auto &[identifier, content, trigger, lastDay] = queued.request;
        const bool isOver = lastDay && *lastDay < today;
        const bool wasTold = m_delivered.contains(identifier) && freshlyShownAlone(identifier) == nullptr;
        return queued.due <= now && (isOver || wasTold);
    });
    m_delivered.removeIf([&](const auto &entry) {
        const DeliveredNotification &delivered = entry.value();
        const qint64 end = delivered.lastDay ? delivered.lastDay->daysSinceEpoch()
                                             : delivered.at.millisecondsSinceEpoch() / millisecondsPerDay;
        return end + daysRemembered < today.daysSinceEpoch();
    });
}

std::optional<NotificationBatch> NotificationQueue::nextBatch(Instant now, Instant startOfRun) const
{
    std::vector<const QueuedNotification *> due;
    for (const QueuedNotification &queued : m_queued) {
        if (queued.due <= now)
            due.push_back(&queued);
    }
    if (due.empty())
        return std::nullopt;
    std::ranges::stable_sort(due, {}, &QueuedNotification::due);

    // What has no last day announces nothing that is over soon, such as a notification for trying.
    std::vector<const QueuedNotification *> late;
    std::ranges::copy_if(due, std::back_inserter(late), [startOfRun](const QueuedNotification *queued) {
        return queued->isFromEarlierRun && queued->request.lastDay
            && plus(queued->due, lateness) < startOfRun;
    });
    NotificationBatch batch;
    if (late.size() > mostLateOnes) {
        batch.content = summary(late.size());
    } else {
        late = {due.front()};
        batch.content = due.front()->request.content;
        if (const auto *const shown = freshlyShownAlone(due.front()->request.identifier))
            batch.replaced = *shown;
    }
    for (const QueuedNotification *const queued : late) {
        batch.identifiers.append(queued->request.identifier);
        batch.serials.push_back(queued->serial);
    }
    return batch;
}

bool NotificationQueue::recordShown(const NotificationBatch &batch, Instant now, const QString &display,
    quint32 number, const QString &sender)
{
    // Another one may have been added under the same identifier meanwhile: it will replace the text.
    QStringList wanted;
    for (const QueuedNotification &queued : m_queued) {
        if (!batch.identifiers.contains(queued.request.identifier))
            continue;
        wanted.append(queued.request.identifier);
        m_delivered.insert(queued.request.identifier, {now, queued.request.lastDay});
    }
    if (wanted.isEmpty())
        return false;
    std::erase_if(m_queued, [&batch](const QueuedNotification &queued) {
        const bool wasShown = std::ranges::find(batch.serials, queued.serial) != batch.serials.end();
        const bool saysTheSame = batch.identifiers == QStringList{queued.request.identifier}
            && queued.request.content == batch.content;
        return wasShown || saysTheSame;
    });
    recordClosed(display, number);
    if (batch.replaced)
        recordClosed(batch.replaced->display, batch.replaced->number);
    m_shown.push_back({display, number, wanted, batch.content.userInfo, true, sender});
    return true;
}

std::optional<ShownNotification> NotificationQueue::shown(const QString &display, quint32 number) const
{
    const auto found = std::ranges::find_if(m_shown,
        [&](const ShownNotification &shown) { return shown.display == display && shown.number == number; });
    return found == m_shown.end() ? std::nullopt : std::optional(*found);
}

QList<ShownNotification> NotificationQueue::freshlyShown(const QString &display) const
{
    QList<ShownNotification> list;
    for (const ShownNotification &shown : m_shown) {
        if (shown.isFresh && shown.display == display)
            list.append(shown);
    }
    return list;
}

void NotificationQueue::recordClosed(const QString &display, quint32 number)
{
    std::erase_if(m_shown,
        [&](const ShownNotification &shown) { return shown.display == display && shown.number == number; });
}

void NotificationQueue::recordDisplay(const QString &display)
{
    std::erase_if(m_shown, [&](const ShownNotification &shown) { return shown.display != display; });
}

const ShownNotification *NotificationQueue::freshlyShownAlone(const QString &identifier) const
{
    const auto found = std::ranges::find_if(m_shown, [&identifier](const ShownNotification &shown) {
        return shown.isFresh && shown.identifiers == QStringList{identifier};
    });
    return found == m_shown.end() ? nullptr : &*found;
}

} // namespace orbitledge
