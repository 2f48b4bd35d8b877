#pragma once

#include "platform/UserNotificationCenter.h"

#include <chrono>
#include <memory>

namespace orbitledge {

/// Shows what is due while the program does not run, and then waits for a click on it: a desktop's daemon
/// tells of that once, and nobody else is there to hear. Needs an application object.
class ReminderDelivery {
public:
    ReminderDelivery();
    ~ReminderDelivery();
    ReminderDelivery(const ReminderDelivery &) = delete;
    ReminderDelivery &operator=(const ReminderDelivery &) = delete;

    /// As DesktopNotificationCenter::deliverDue; afterwards this process is not in charge of reminders any
    /// more. Call it once.
    QCoro::Task<NotificationDelivery> deliver(std::chrono::milliseconds limit);

    /// Has the program open what is chosen, until nothing of ours is shown any more, or a day is over.
    QCoro::Task<void> followClicks();

private:
    class Clicks;
    std::unique_ptr<Clicks> m_clicks;
};

} // namespace orbitledge
