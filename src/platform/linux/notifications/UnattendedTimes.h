#pragma once

#include "platform/linux/notifications/NotificationQueue.h"

#include <optional>

namespace orbitledge {

/// When another process is to be started for what is in the queue: when the next one comes due, and soon
/// where something is due already, since this process may end before it is shown.
class UnattendedTimes {
public:
    std::optional<Instant> next(const NotificationQueue &queue, Instant now);

private:
    /// For what is due already. Not put off each time: that would have systemd read its units anew for every
    /// notification.
    std::optional<Instant> m_secondAttempt;
};

} // namespace orbitledge
