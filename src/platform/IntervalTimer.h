#pragma once

#include <QObject>

#include <chrono>

namespace orbitledge {

/// Counts down while the machine is awake, whatever its clock shows.
class IntervalTimer : public QObject {
    Q_OBJECT

public:
    using QObject::QObject;

    /// Elapses once, after `interval`; instead of what was started before.
    virtual void start(std::chrono::milliseconds interval) = 0;
    virtual void stop() = 0;

Q_SIGNALS:
    void elapsed();
};

} // namespace orbitledge
