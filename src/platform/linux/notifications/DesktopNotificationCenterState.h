#pragma once

#include "platform/Completion.h"
#include "platform/OneShot.h"
#include "platform/linux/notifications/DesktopNotificationCenter.h"
#include "platform/linux/notifications/NotificationQueueStore.h"
#include "platform/linux/notifications/RetryTimer.h"
#include "platform/linux/notifications/UnattendedTimes.h"

#include <chrono>
#include <memory>
#include <optional>
#include <utility>

namespace orbitledge {

/// What the operations share, which they keep alive until the last of them is through.
class DesktopNotificationCenter::State final : public QObject {
public:
    using Self = std::shared_ptr<State>;
    using Milliseconds = std::chrono::milliseconds;

    State(DesktopNotificationCenter &center, Parts parts, Milliseconds patience, Milliseconds pause)
        : m_center(&center)
        , m_parts(std::move(parts))
        , m_patience(patience)
        , m_store(std::make_shared<NotificationQueueStore>(m_parts.file, m_parts.files))
        , m_retry(pause)
    {
    }

    void start(const Self &self);
    /// From now on nothing begins, and nobody is told.
    void close();

    /// Takes charge of the file and reads it, where that was not done. False where it cannot be had.
    static QCoro::Task<bool> opened(Self self, Milliseconds patience);
    static QCoro::Task<bool> opened(const Self &self) { return opened(self, self->m_patience); }
    /// Of those who wanted to have it opened.
    [[nodiscard]] tl::unexpected<NotificationError> notOpened() const;

    /// Writes what changed, and has the alarm ring and a delivery started for what comes next.
    static QCoro::Task<tl::expected<void, NotificationError>> save(Self self);

    static QCoro::Task<NotificationDelivery> deliverDue(Self self, Milliseconds limit);
    static QCoro::Task<bool> prepareDelivery(Self self);
    static QCoro::Task<void> finish(Self self, Milliseconds limit);
    static QCoro::Task<tl::expected<void, NotificationError>> forget(Self self, QString prefix);
    static QCoro::Task<NotificationSettings> settings(Self self);

    [[nodiscard]] Instant now() const { return m_parts.clock->now(); }
    /// Once it is open.
    NotificationQueue &queue() { return m_store->queue(); }
    void setAlarm();
    [[nodiscard]] QList<ShownNotification> shown() const
    {
        return m_store->queue().freshlyShown(m_parts.display->name());
    }

private:
    [[nodiscard]] bool isClosed() const { return m_center == nullptr; }
    [[nodiscard]] LocalDate today() const;
    void lookAgainLater();
    [[nodiscard]] std::optional<Instant> nextDelivery() { return m_unattended.next(queue(), now()); }

    static QCoro::Task<void> choose(Self self, quint32 number, QString token);
    static QCoro::Task<void> begin(Self self);
    static QCoro::Task<bool> deliver(Self self);
    static QCoro::Task<void> settleWhenDelivered(Self self, std::shared_ptr<OneShot<bool>> outcome);
    static QCoro::Task<bool> deliverRound(Self self);
    /// Before the next one is shown it is written down, so that at most one is ever told twice.
    static QCoro::Task<bool> showAndRecord(Self self, NotificationBatch batch);
    static QCoro::Task<bool> showBatch(Self self, NotificationBatch batch);
    static QCoro::Task<void> settleWhenThrough(Self self, std::shared_ptr<OneShot<bool>> outcome);
    static QCoro::Task<bool> awakenDisplay(Self self);
    static QCoro::Task<void> arrangeUnattended(Self self, std::optional<Instant> next);

    DesktopNotificationCenter *m_center;
    Parts m_parts;
    Milliseconds m_patience;
    std::shared_ptr<NotificationQueueStore> m_store;
    /// When it was opened.
    std::optional<Instant> m_startOfRun;
    RetryTimer m_retry;
    UnattendedTimes m_unattended;
    bool m_isStarted = false;
    bool m_isDelivering = false;
    /// Of what is being shown.
    std::shared_ptr<Completion> m_recording;
    /// Of the last change to the file.
    std::shared_ptr<Completion> m_saving;
    /// Of what was asked of the machine last.
    std::shared_ptr<Completion> m_arranging;
    bool m_isToLookAgain = false;
    /// Nobody was there to show what is due.
    bool m_isUnshown = false;
    bool m_isSaved = true;
};

} // namespace orbitledge
