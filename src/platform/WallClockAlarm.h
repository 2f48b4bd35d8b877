#pragma once

#include "model/Instant.h"

#include <QObject>

#include <optional>

namespace orbitledge {

/// Rings at a time of the machine's clock, however that comes about: by waiting, by setting the clock, or
/// by waking from suspend later than that.
class WallClockAlarm : public QObject {
    Q_OBJECT

public:
    using QObject::QObject;

    /// Rings once, as soon as the clock shows `instant` or later, also where it does already; then, or where
    /// absent, no more. Never from within this call.
    virtual void set(std::optional<Instant> instant) = 0;

Q_SIGNALS:
    void rang();
    /// The clock was set, the machine woke up, or its time zone is another one. Also while nothing is set.
    void clockChanged();
};

} // namespace orbitledge
