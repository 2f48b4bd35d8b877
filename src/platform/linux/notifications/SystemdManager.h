#pragma once

#include <QCoroTask>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDeadlineTimer>
#include <QHash>
#include <QObject>
#include <QString>

#include <tl/expected.hpp>

#include <chrono>
#include <memory>

namespace orbitledge {

template <typename Value> class OneShot;

/// The user instance of systemd, over the session bus. All calls together have a limited time. On failure
/// they tell why, as the end of a sentence. Must outlive what it returns, of which there is one at a time.
class SystemdManager final : public QObject {
public:
    using Outcome = tl::expected<void, QString>;

    /// Null where there is none; none is started.
    static QCoro::Task<tl::expected<std::shared_ptr<SystemdManager>, QString>> find(
        std::chrono::milliseconds limit);

    SystemdManager(QString uniqueName, QDeadlineTimer deadline);

    /// Has it started the unit, and did the unit not fail? False where it does not know the unit.
    QCoro::Task<tl::expected<bool, QString>> isActive(QString unit);
    /// It reads all units anew.
    QCoro::Task<Outcome> reload();
    /// These end when it is done.
    QCoro::Task<Outcome> restart(QString unit);
    /// No failure where it does not know the unit.
    QCoro::Task<Outcome> stop(QString unit);

private:
    void removeJob(uint number, const QDBusObjectPath &job, const QString &unit, const QString &result);

    [[nodiscard]] QDBusMessage method(const QString &name) const;
    [[nodiscard]] std::chrono::milliseconds left() const;
    QCoro::Task<Outcome> finish(QDBusObjectPath job);

    QString m_uniqueName;
    QDeadlineTimer m_deadline;
    /// Of the jobs that ended, by path: the answer that names a job may come after its end.
    QHash<QString, QString> m_results;
    QString m_awaitedJob;
    OneShot<QString> *m_awaitedResult = nullptr;
};

} // namespace orbitledge
