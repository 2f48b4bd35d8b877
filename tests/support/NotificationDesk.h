#pragma once

#include "platform/Completion.h"
#include "platform/linux/PosixFileStore.h"
#include "platform/linux/ProcessLock.h"
#include "platform/linux/notifications/DesktopNotificationCenter.h"
#include "support/FakeNotificationDisplay.h"
#include "support/FakeWallClockAlarm.h"
#include "support/StoppedClock.h"
#include "support/Times.h"

#include <QCoroTask>
#include <QTemporaryDir>
#include <QTest>

namespace orbitledge::testing {

class FakeNotificationSwitches final : public NotificationSwitches {
public:
    NotificationSwitchPositions positions;

    QCoro::Task<NotificationSwitchPositions> read() override
    {
        const NotificationSwitchPositions copy = positions;
        co_return copy;
    }
};

class FakeUnattendedDelivery final : public UnattendedDelivery {
public:
    /// Of each call, in their order.
    QList<std::optional<Instant>> arranged;
    std::optional<QString> failure;
    /// It answers when `answerAll` is called.
    bool isSlow = false;

    void answerAll()
    {
        isSlow = false;
        m_answer->complete();
    }

    QCoro::Task<tl::expected<void, QString>> arrange(std::optional<Instant> next) override
    {
        arranged.append(next);
        if (isSlow)
            co_await Completion::wait(m_answer);
        if (failure)
            co_return tl::make_unexpected(*failure);
        co_return {};
    }

private:
    std::shared_ptr<Completion> m_answer = std::make_shared<Completion>();
};

/// A real notification centre on a real file, with a clock, a screen and a machine of the test's.
struct NotificationDesk {
    QTemporaryDir folder;
    std::shared_ptr<StoppedClock> clock;
    std::shared_ptr<FakeWallClockAlarm> alarm = std::make_shared<FakeWallClockAlarm>(clock);
    std::shared_ptr<FakeNotificationDisplay> display = std::make_shared<FakeNotificationDisplay>();
    std::shared_ptr<FakeNotificationSwitches> switches = std::make_shared<FakeNotificationSwitches>();
    std::shared_ptr<FakeUnattendedDelivery> unattended = std::make_shared<FakeUnattendedDelivery>();
    std::shared_ptr<FileStore> files = std::make_shared<PosixFileStore>();
    QByteArray zone = "Europe/Berlin";
    /// The first one before another attempt.
    std::chrono::milliseconds pause = std::chrono::minutes(1);
    std::unique_ptr<DesktopNotificationCenter> center;

    explicit NotificationDesk(const char *now)
        : clock(std::make_shared<StoppedClock>(at(now)))
    {
    }

    /// Waits until what the centre began is through, so that nothing writes to the folder any more.
    ~NotificationDesk()
    {
        center.reset();
        display->answerAll();
        std::filesystem::path lockFile = file();
        lockFile += ".lock";
        const auto isFree = [&lockFile] {
            const auto lock = ProcessLock::take(lockFile);
            return lock && *lock;
        };
        if (!QTest::qWaitFor(isFree, 30'000))
            qFatal("a notification centre is still at work");
    }
    Q_DISABLE_COPY_MOVE(NotificationDesk)

    [[nodiscard]] std::filesystem::path file() const
    {
        return folder.filePath(QStringLiteral("state/reminders.json")).toStdString();
    }

    /// Another run of the program; the one before ends first.
    DesktopNotificationCenter &makeCenter(std::chrono::milliseconds patience = std::chrono::seconds(10))
    {
        center.reset();
        alarm->target.reset();
        center = std::make_unique<DesktopNotificationCenter>(
            DesktopNotificationCenter::Parts{
                .file = file(),
                .files = files,
                .clock = clock,
                .timeZone = [this] { return zoneNamed(zone); },
                .alarm = alarm,
                .display = display,
                .switches = switches,
                .unattended = unattended,
            },
            patience, pause);
        return *center;
    }

    DesktopNotificationCenter &startCenter()
    {
        makeCenter().start();
        return *center;
    }

    /// Adds and saves; what fails ends the test.
    void add(const QList<NotificationRequest> &requests) const
    {
        for (const NotificationRequest &request : requests) {
            if (const auto added = QCoro::waitFor(center->add(request)); !added)
                qFatal("%s", qPrintable(added.error().errorDescription));
        }
        if (const auto saved = QCoro::waitFor(center->save()); !saved)
            qFatal("%s", qPrintable(saved.error().errorDescription));
    }

    [[nodiscard]] QStringList pending() const
    {
        QStringList identifiers;
        const auto pendingRequests = QCoro::waitFor(center->pendingRequests());
        if (!pendingRequests)
            qFatal("%s", qPrintable(pendingRequests.error().errorDescription));
        for (const PendingNotification &notification : *pendingRequests)
            identifiers.append(notification.request.identifier);
        identifiers.sort();
        return identifiers;
    }

    /// Until everything that was handed over to be written is written.
    void settle() const { (void)QCoro::waitFor(center->save()); }
};

/// A reminder for 09:00 on that day, of something that renews three days later.
inline NotificationRequest reminderOn(const LocalDate &date, const QString &name = QStringLiteral("a"))
{
    return {
        .identifier = QStringLiteral("orbitledge.renewal.") + name,
        .content = {
            .title = name,
            .body = QStringLiteral("It renews soon."),
            .sound = NotificationSound::Default,
            .userInfo = {{QStringLiteral("url"), QStringLiteral("https://example.com/") + name}},
        },
        .trigger = CalendarTrigger{.timeZone = "Europe/Berlin", .date = date, .hour = 9, .minute = 0},
        .lastDay = LocalDate::fromDaysSinceEpoch(date.daysSinceEpoch() + 3),
    };
}

/// One that is to be shown after two seconds.
inline NotificationRequest reminderAtOnce(const QString &name = QStringLiteral("a"))
{
    NotificationRequest request = reminderOn({2026, 3, 18}, name);
    request.trigger = TimeIntervalTrigger{std::chrono::seconds(2)};
    return request;
}

} // namespace orbitledge::testing
