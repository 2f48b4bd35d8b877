#pragma once

#include <QCoroTask>

namespace orbitledge {

/// What the person set in the desktop for this program's notifications.
struct NotificationSwitchPositions {
    /// Off where the desktop shows none of them.
    bool allows = true;
    /// Off where they go to a list without popping up.
    bool popsUp = true;

    friend bool operator==(const NotificationSwitchPositions &, const NotificationSwitchPositions &)
        = default;
};

class NotificationSwitches {
public:
    NotificationSwitches() = default;
    NotificationSwitches(const NotificationSwitches &) = delete;
    NotificationSwitches &operator=(const NotificationSwitches &) = delete;
    virtual ~NotificationSwitches() = default;

    /// All on where the desktop has no such switches, or does not tell in time.
    [[nodiscard]] virtual QCoro::Task<NotificationSwitchPositions> read() = 0;
};

} // namespace orbitledge
