#pragma once

#include "platform/UserNotificationCenter.h"

#include <QCoroTask>
#include <QObject>

#include <optional>

namespace orbitledge {

/// Who puts notifications on the screen. It may come late, be slow, and be replaced by another one.
class NotificationDisplay : public QObject {
    Q_OBJECT

public:
    using QObject::QObject;

    /// Makes sure that there is one that answers, starting it where the desktop can. False where there is
    /// none, or it does not answer in time.
    [[nodiscard]] virtual QCoro::Task<bool> awaken() = 0;

    /// Which one answered last: another name for each run of each, on every bus. Empty before the first
    /// one.
    [[nodiscard]] virtual QString name() const = 0;

    /// Shows a notification, instead of that with the number `replaced` where that is not 0. Its number,
    /// never 0; absent where it was not shown. Waits as long as there is somebody who may yet show it.
    [[nodiscard]] virtual QCoro::Task<std::optional<quint32>> show(
        NotificationContent content, quint32 replaced)
        = 0;

    /// As whom this process shows, on the same bus: another name for each process. Empty before `awaken`.
    [[nodiscard]] virtual QString sender() const = 0;
    /// Is the process still there that shows as this one?
    [[nodiscard]] virtual QCoro::Task<bool> isSenderThere(QString sender) = 0;

    /// Takes one back; no error where it is not there any more.
    virtual void close(quint32 number) = 0;

Q_SIGNALS:
    /// There is one, or another one, which was not awakened yet.
    void appeared();
    /// It has gone, and what it showed with it.
    void gone();
    /// A person chose the notification of that number. Also those of other programs: who listens has to know
    /// the own ones.
    void chosen(quint32 number, const QString &activationToken);
    /// The same of one that is not shown any more.
    void closed(quint32 number);
};

} // namespace orbitledge
