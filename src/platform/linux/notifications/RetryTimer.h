#pragma once

#include <QObject>
#include <QTimer>

#include <chrono>

namespace orbitledge {

/// When to try again. Each time that it is started it takes twice as long as before, an hour at most.
class RetryTimer final : public QObject {
    Q_OBJECT

public:
    explicit RetryTimer(std::chrono::milliseconds shortest);

    void start();
    void stop() { m_timer.stop(); }
    /// Stops it, and begins anew with the shortest time.
    void reset();

Q_SIGNALS:
    void rang();

private:
    std::chrono::milliseconds m_shortest;
    std::chrono::milliseconds m_next;
    QTimer m_timer;
};

} // namespace orbitledge
