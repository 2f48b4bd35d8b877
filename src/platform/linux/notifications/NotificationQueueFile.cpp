#include "platform/linux/notifications/NotificationQueue.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <cmath>

// The queue's form as a file: a JSON object of version 1. Private files of this machine; the texts are those
// that are going to be shown.

namespace orbitledge {

using namespace Qt::StringLiterals;

namespace {

constexpr int fileVersion = 1;

/// Which number of the file stands where; absent where the value is no whole number within these bounds.
std::optional<qint64> wholeNumber(const QJsonValue &value, qint64 least, qint64 most)
{
    const double number = value.toDouble(std::nan(""));
    if (std::trunc(number) != number || number < static_cast<double>(least)
        || number > static_cast<double>(most))
        return std::nullopt;
    return static_cast<qint64>(number);
}

std::optional<Instant> instant(const QJsonValue &value)
{
    return Instant::fromText(value.toString().toStdString());
}

/// To the millisecond.
QString text(Instant instant)
{
    constexpr qint64 perSecond = 1000;
    const qint64 milliseconds = (instant.millisecondsSinceEpoch() % perSecond + perSecond) % perSecond;
    QString text = QString::fromLatin1(instant.text());
    text.chop(1);
    return text + u'.' + QString::number(milliseconds).rightJustified(3, u'0') + u'Z';
}

std::optional<LocalDate> date(const QJsonValue &value)
{
    return LocalDate::fromText(value.toString().toStdString());
}

QJsonObject encoded(const QMap<QString, QString> &userInfo)
{
    QJsonObject object;
    for (auto entry = userInfo.begin(); entry != userInfo.end(); ++entry)
        object.insert(entry.key(), entry.value());
    return object;
}

QMap<QString, QString> userInfo(const QJsonValue &value)
{
    QMap<QString, QString> userInfo;
    const QJsonObject object = value.toObject();
    for (auto entry = object.begin(); entry != object.end(); ++entry) {
        if (entry.value().isString())
            userInfo.insert(entry.key(), entry.value().toString());
    }
    return userInfo;
}

QJsonObject encoded(const QueuedNotification &queued)
{
    QJsonObject trigger;
    if (const auto *const calendar = std::get_if<CalendarTrigger>(&queued.request.trigger)) {
        trigger = {
            {u"timeZone"_s, QString::fromLatin1(calendar->timeZone)},
            {u"date"_s, calendar->date.text()},
            {u"hour"_s, calendar->hour},
            {u"minute"_s, calendar->minute},
        };
    } else {
        const auto interval = std::get<TimeIntervalTrigger>(queued.request.trigger).interval;
        trigger = {
            {u"at"_s, text(queued.due)},
            {u"milliseconds"_s, static_cast<qint64>(interval.count())},
        };
    }
    const NotificationContent &content = queued.request.content;
    QJsonObject object{
        {u"identifier"_s, queued.request.identifier},
        {u"title"_s, content.title},
        {u"body"_s, content.body},
        {u"sound"_s, content.sound == NotificationSound::Default},
        {u"userInfo"_s, encoded(content.userInfo)},
        {u"trigger"_s, trigger},
    };
    if (queued.request.lastDay)
        object.insert(u"lastDay"_s, queued.request.lastDay->text());
    return object;
}

std::optional<QueuedNotification> decodedRequest(const QJsonObject &object)
{
    QueuedNotification queued;
    queued.isFromEarlierRun = true;
    queued.request.identifier = object[u"identifier"_s].toString();
    queued.request.content = {
        .title = object[u"title"_s].toString(),
        .body = object[u"body"_s].toString(),
        .sound = object[u"sound"_s].toBool() ? NotificationSound::Default : NotificationSound::None,
        .userInfo = userInfo(object[u"userInfo"_s]),
    };
    queued.request.lastDay = date(object[u"lastDay"_s]);

    const QJsonObject trigger = object[u"trigger"_s].toObject();
    std::optional<Instant> due;
    if (trigger.contains(u"at"_s)) {
        due = instant(trigger[u"at"_s]);
        constexpr qint64 longest = qint64{1} << 53; // what a number of the file can hold
        const auto interval = wholeNumber(trigger[u"milliseconds"_s], 0, longest);
        queued.request.trigger = TimeIntervalTrigger{std::chrono::milliseconds(interval.value_or(0))};
    } else {
        constexpr qint64 lastHour = 23;
        constexpr qint64 lastMinute = 59;
        const auto day = date(trigger[u"date"_s]);
        const auto hour = wholeNumber(trigger[u"hour"_s], 0, lastHour);
        const auto minute = wholeNumber(trigger[u"minute"_s], 0, lastMinute);
        if (day && hour && minute) {
            const CalendarTrigger calendar{trigger[u"timeZone"_s].toString().toLatin1(), *day,
                static_cast<int>(*hour), static_cast<int>(*minute)};
            due = fireInstant(calendar);
            queued.request.trigger = calendar;
        }
    }
    if (queued.request.identifier.isEmpty() || !due)
        return std::nullopt;
    queued.due = *due;
    return queued;
}

std::optional<ShownNotification> decodedShown(const QJsonObject &object)
{
    constexpr qint64 largest = std::numeric_limits<quint32>::max();
    const auto number = wholeNumber(object[u"number"_s], 1, largest);
    ShownNotification shown;
    shown.display = object[u"display"_s].toString();
    for (const QJsonValue identifier : object[u"identifiers"_s].toArray())
        shown.identifiers.append(identifier.toString());
    shown.userInfo = userInfo(object[u"userInfo"_s]);
    shown.sender = object[u"sender"_s].toString();
    if (!number || shown.display.isEmpty() || shown.identifiers.isEmpty())
        return std::nullopt;
    shown.number = static_cast<quint32>(*number);
    return shown;
}

} // namespace

QByteArray NotificationQueue::encoded() const
{
    QJsonArray queued;
    for (const QueuedNotification &notification : m_queued)
        queued.append(orbitledge::encoded(notification));
    QStringList identifiers = m_delivered.keys();
    identifiers.sort();
    QJsonArray delivered;
    for (const QString &identifier : identifiers) {
        const DeliveredNotification &notification = m_delivered[identifier];
        QJsonObject object{{u"identifier"_s, identifier}, {u"at"_s, text(notification.at)}};
        if (notification.lastDay)
            object.insert(u"lastDay"_s, notification.lastDay->text());
        delivered.append(object);
    }
    QJsonArray shown;
    for (const ShownNotification &notification : m_shown) {
        shown.append(QJsonObject{
            {u"display"_s, notification.display},
            {u"number"_s, static_cast<qint64>(notification.number)},
            {u"identifiers"_s, QJsonArray::fromStringList(notification.identifiers)},
            {u"userInfo"_s, orbitledge::encoded(notification.userInfo)},
            {u"sender"_s, notification.sender},
        });
    }
    return QJsonDocument(QJsonObject{
                             {u"version"_s, fileVersion},
                             {u"wasAsked"_s, m_wasAsked},
                             {u"requests"_s, queued},
                             {u"delivered"_s, delivered},
                             {u"shown"_s, shown},
                         })
        .toJson();
}

tl::expected<NotificationQueue, QString> NotificationQueue::decoded(const QByteArray &json)
{
    QJsonParseError parseError;
    const QJsonDocument document = QJsonDocument::fromJson(json, &parseError);
    if (!document.isObject())
        return tl::make_unexpected(u"It is not a JSON object: %1"_s.arg(parseError.errorString()));
    const QJsonObject object = document.object();
    if (object[u"version"_s] != fileVersion)
        return tl::make_unexpected(u"Its version is not known"_s);

    NotificationQueue queue;
    queue.m_wasAsked = object[u"wasAsked"_s].toBool();
    // What is not of this form was not written by this program; the rest still counts.
    QSet<QString> seen;
    for (const QJsonValue value : object[u"requests"_s].toArray()) {
        auto queued = decodedRequest(value.toObject());
        if (!queued || seen.contains(queued->request.identifier))
            continue;
        seen.insert(queued->request.identifier);
        queued->serial = ++queue.m_lastSerial;
        queue.m_queued.push_back(*std::move(queued));
    }
    for (const QJsonValue value : object[u"delivered"_s].toArray()) {
        const QJsonObject delivered = value.toObject();
        const auto at = instant(delivered[u"at"_s]);
        const QString identifier = delivered[u"identifier"_s].toString();
        if (at && !identifier.isEmpty())
            queue.m_delivered.insert(identifier, {*at, date(delivered[u"lastDay"_s])});
    }
    for (const QJsonValue value : object[u"shown"_s].toArray()) {
        if (auto shown = decodedShown(value.toObject()))
            queue.m_shown.push_back(*std::move(shown));
    }
    return queue;
}

} // namespace orbitledge
