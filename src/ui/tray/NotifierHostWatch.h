#pragma once

#include <QCoroTask>
#include <QDBusServiceWatcher>
#include <QObject>

namespace orbitledge::ui {

/// Follows whether the session's bus has somebody who shows StatusNotifierItems: not whoever keeps the list
/// of them, but a host that is registered there.
class NotifierHostWatch : public QObject {
    Q_OBJECT

public:
    explicit NotifierHostWatch(QObject *parent = nullptr);

    /// Ends with the first answer. Where there is no bus, there is no host. Call it once; the object may go
    /// meanwhile.
    QCoro::Task<> start();

    [[nodiscard]] bool hasHost() const { return m_hasHost; }

Q_SIGNALS:
    void changed();

private:
    void ask();
    QCoro::Task<> askOnce();
    void follow();
    void setHasHost(bool hasHost);

    QDBusServiceWatcher m_watcher;
    bool m_hasHost = false;
    /// Of the question that was asked last; answers to earlier ones are old.
    int m_question = 0;
};

} // namespace orbitledge::ui
