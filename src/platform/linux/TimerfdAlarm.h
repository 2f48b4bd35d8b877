#pragma once

#include "platform/WallClockAlarm.h"

#include <filesystem>
#include <memory>

class QSocketNotifier;

namespace orbitledge {

/// The kernel's timer on the wall clock (timerfd_create(2)), which notices that the clock is set and that the
/// machine woke up; and the file that names the machine's time zone (inotify(7); where the person has no
/// watch left, another zone is noticed when the timer rings or the clock is set). Nothing wakes up in
/// between.
class TimerfdAlarm final : public WallClockAlarm {
public:
    explicit TimerfdAlarm(std::filesystem::path zoneFile = "/etc/localtime");
    ~TimerfdAlarm() override;

    void set(std::optional<Instant> instant) override;

private:
    void arm();
    void readTimer();
    void watchZone();
    void readWatch();
    void compareZone();

    std::optional<Instant> m_target;
    std::filesystem::path m_zoneFile;
    std::string m_zone;
    int m_timer;
    std::unique_ptr<QSocketNotifier> m_notifier;
    /// Of the folder that the zone's file is in; -1 where there is none.
    int m_watch = -1;
    std::unique_ptr<QSocketNotifier> m_watchNotifier;
};

} // namespace orbitledge
