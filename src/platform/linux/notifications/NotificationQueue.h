#pragma once

#include "model/Instant.h"
#include "platform/UserNotificationCenter.h"

#include <QHash>

#include <chrono>
#include <optional>
#include <vector>

namespace orbitledge {

/// A notification that is on somebody's screen, or was.
struct ShownNotification {
    /// Who shows it: one run of one daemon, since another one gives the same numbers to other programs.
    QString display;
    quint32 number = 0;
    /// The requests that it stands for; several where they were gathered.
    QStringList identifiers;
    QMap<QString, QString> userInfo;
    /// In this run of the program, and not closed since as far as is known.
    bool isFresh = false;
    /// The process that has shown it, as the display's bus knows it; empty where that is not known.
    QString sender;

    friend bool operator==(const ShownNotification &, const ShownNotification &) = default;
};

/// A request that was not shown yet.
struct QueuedNotification {
    NotificationRequest request;
    Instant due;
    bool isFromEarlierRun = false;
    /// Another one for each time that it is added.
    quint64 serial = 0;

    friend bool operator==(const QueuedNotification &, const QueuedNotification &) = default;
};

/// That an identifier was shown.
struct DeliveredNotification {
    Instant at;
    std::optional<LocalDate> lastDay;

    friend bool operator==(const DeliveredNotification &, const DeliveredNotification &) = default;
};

/// What is to be shown together, in one notification.
struct NotificationBatch {
    NotificationContent content;
    QStringList identifiers;
    std::vector<quint64> serials;
    /// The notification whose text this replaces; absent for a new one.
    std::optional<ShownNotification> replaced;
};

/// When the trigger fires. Absent where it names no minute that exists.
std::optional<Instant> fireInstant(const CalendarTrigger &trigger);

/// Which notifications wait for their time, which identifiers were shown, and which are perhaps still on the
/// screen. A plain value, which has a form as a file; it asks no clock.
class NotificationQueue {
public:
    /// The memory of what was shown lasts that much longer than the last day of what was announced.
    static constexpr qint64 daysRemembered = 60;
    /// As many late ones are shown one by one; more are gathered.
    static constexpr std::size_t mostLateOnes = 3;
    /// What is not later than this is not late: who delivers it may have been started for it.
    static constexpr std::chrono::minutes lateness{5};

    /// A version 1 file. On failure what is wrong with it, for people.
    static tl::expected<NotificationQueue, QString> decoded(const QByteArray &json);
    [[nodiscard]] QByteArray encoded() const;

    /// Whether permission was asked for.
    [[nodiscard]] bool wasAsked() const { return m_wasAsked; }
    void setAsked() { m_wasAsked = true; }

    [[nodiscard]] QList<PendingNotification> pending(Instant now) const;
    void remove(const QStringList &identifiers);
    /// False where its trigger names no minute that exists.
    bool add(NotificationRequest request, Instant now);

    /// Removes what begins with the prefix, waiting and shown, and forgets that it was shown. What was shown,
    /// to be taken back.
    QList<ShownNotification> forget(const QString &prefix);

    /// The earliest one after `now`.
    [[nodiscard]] std::optional<Instant> nextDue(Instant now) const;
    [[nodiscard]] bool hasDue(Instant now) const;

    /// What is to be shown after an interval does not wait longer than that where the clock was set back.
    void followClock(Instant now);

    /// Drops what is over.
    void expire(Instant now, const LocalDate &today);

    /// What to show next: what came due first, but before that what was late at `startOfRun`, in one where it
    /// is much. Absent where nothing is due.
    [[nodiscard]] std::optional<NotificationBatch> nextBatch(Instant now, Instant startOfRun) const;

    /// A batch was shown. False where nothing of it is wanted any more: then it should be taken back.
    bool recordShown(const NotificationBatch &batch, Instant now, const QString &display, quint32 number,
        const QString &sender = {});

    /// The one with that number, if it is ours.
    [[nodiscard]] std::optional<ShownNotification> shown(const QString &display, quint32 number) const;
    /// All of this run that this display shows.
    [[nodiscard]] QList<ShownNotification> freshlyShown(const QString &display) const;
    [[nodiscard]] bool hasShown() const { return !m_shown.empty(); }
    void recordClosed(const QString &display, quint32 number);
    /// Keeps those alone that this one shows: the others ended, and their notifications with them.
    void recordDisplay(const QString &display);

    friend bool operator==(const NotificationQueue &, const NotificationQueue &) = default;

private:
    [[nodiscard]] const ShownNotification *freshlyShownAlone(const QString &identifier) const;

    std::vector<QueuedNotification> m_queued;
    QHash<QString, DeliveredNotification> m_delivered;
    std::vector<ShownNotification> m_shown;
    quint64 m_lastSerial = 0;
    bool m_wasAsked = false;
};

} // namespace orbitledge
