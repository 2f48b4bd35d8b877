#pragma once

#include "model/LocalDate.h"

#include <QByteArray>
#include <QCoroTask>
#include <QList>
#include <QMap>
#include <QObject>
#include <QString>
#include <QStringList>

#include <tl/expected.hpp>

#include <chrono>
#include <optional>
#include <variant>

namespace orbitledge {

/// When the wall clock of a zone first shows a minute, or the next one that exists where that is skipped.
/// Once.
struct CalendarTrigger {
    /// Its name in the tz database. Where the machine has no such zone, its own counts.
    QByteArray timeZone;
    LocalDate date;
    int hour = 0;
    int minute = 0;

    friend bool operator==(const CalendarTrigger &, const CalendarTrigger &) = default;
};

/// So long after the request was added. Once.
struct TimeIntervalTrigger {
    std::chrono::milliseconds interval{0};

    friend bool operator==(const TimeIntervalTrigger &, const TimeIntervalTrigger &) = default;
};

using NotificationTrigger = std::variant<CalendarTrigger, TimeIntervalTrigger>;

enum class NotificationSound { None, Default };

/// What people see and hear, and what belongs to it unseen.
struct NotificationContent {
    QString title;
    QString body;
    NotificationSound sound = NotificationSound::None;
    QMap<QString, QString> userInfo;

    friend bool operator==(const NotificationContent &, const NotificationContent &) = default;
};

struct NotificationRequest {
    /// There is one request, and one notification, of an identifier at a time.
    QString identifier;
    NotificationContent content;
    NotificationTrigger trigger;
    /// After this day, by the machine's own calendar, there is no point in showing it any more.
    std::optional<LocalDate> lastDay;

    friend bool operator==(const NotificationRequest &, const NotificationRequest &) = default;
};

struct PendingNotification {
    NotificationRequest request;
    /// Its moment has come, or was settled when it was added after an interval: it is on its way to be
    /// shown, which may take until there is somebody to show it.
    bool isOnItsWay = false;

    friend bool operator==(const PendingNotification &, const PendingNotification &) = default;
};

enum class NotificationAuthorization { NotDetermined, Denied, Authorized, Provisional };

struct NotificationSettings {
    NotificationAuthorization authorization = NotificationAuthorization::NotDetermined;
    /// Whether what is shown pops up.
    bool alertsEnabled = false;
    /// Whether what is shown stays in a list.
    bool notificationCenterEnabled = false;

    friend bool operator==(const NotificationSettings &, const NotificationSettings &) = default;
};

enum class NotificationOption { Sound = 2, Alert = 4 };
Q_DECLARE_FLAGS(NotificationOptions, NotificationOption)
Q_DECLARE_OPERATORS_FOR_FLAGS(NotificationOptions)

struct NotificationError {
    /// A sentence for people.
    QString errorDescription;

    friend bool operator==(const NotificationError &, const NotificationError &) = default;
};

/// How it ended to show what is due while the program does not run.
enum class NotificationDelivery {
    /// Everything that was due was shown; or nothing, as the person has switched notifications off.
    Done,
    /// Another process is in charge, and delivers.
    Elsewhere,
    /// Nobody shows notifications.
    NoDisplay,
    /// What waits to be shown cannot be read, or its place not be used.
    Unreadable,
};

/// Shows notifications when their time has come. Requests outlive the program: what came due while it did not
/// run is shown when it runs again, unless its last day is over. Nothing blocks.
///
/// Each identifier is shown once: a later request under it replaces the text where it is still shown, and
/// counts as done otherwise, until `forget`.
class UserNotificationCenter : public QObject {
    Q_OBJECT

public:
    using QObject::QObject;

    [[nodiscard]] virtual QCoro::Task<NotificationSettings> settings() = 0;

    /// Asks for permission; where nobody can be asked, whether there is permission.
    [[nodiscard]] virtual QCoro::Task<tl::expected<bool, NotificationError>> requestAuthorization(
        NotificationOptions options)
        = 0;

    /// In no particular order.
    [[nodiscard]] virtual QCoro::Task<tl::expected<QList<PendingNotification>, NotificationError>>
    pendingRequests() = 0;

    /// Those that are there; also what is on its way, as far as it is not yet shown.
    [[nodiscard]] virtual QCoro::Task<void> removePendingRequests(QStringList identifiers) = 0;

    /// Replaces a pending one of the same identifier. A calendar trigger whose minute is over never fires.
    [[nodiscard]] virtual QCoro::Task<tl::expected<void, NotificationError>> add(NotificationRequest request)
        = 0;

    /// What was removed and added is in force at once, but outlives the program only after this. All of it or
    /// nothing.
    [[nodiscard]] virtual QCoro::Task<tl::expected<void, NotificationError>> save() = 0;

    /// Removes the requests whose identifiers begin with `prefix`, takes back those that are shown, forgets
    /// that they were, and saves that.
    [[nodiscard]] virtual QCoro::Task<tl::expected<void, NotificationError>> forget(QString prefix) = 0;

Q_SIGNALS:
    /// A person chose a notification. `activationToken` is what the desktop wants to see from a window that
    /// is to come forward for it; empty where there is none.
    void chosen(const QMap<QString, QString> &userInfo, const QString &activationToken);
};

} // namespace orbitledge
