#include "platform/linux/TimerfdAlarm.h"

#include <QPointer>
#include <QSocketNotifier>

#include <sys/inotify.h>
#include <sys/stat.h>
#include <sys/timerfd.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <ctime>

namespace orbitledge {

namespace {

/// What the file says, without reading it: where the link leads, or which file it is.
std::string identity(const std::filesystem::path &file)
{
    std::error_code error;
    const auto target = std::filesystem::read_symlink(file, error);
    if (!error)
        return target.string();
    struct stat status{};
    if (::stat(file.c_str(), &status) != 0)
        return {};
    return std::to_string(status.st_ino) + ' ' + std::to_string(status.st_mtim.tv_sec) + ' '
        + std::to_string(status.st_mtim.tv_nsec);
}

} // namespace

TimerfdAlarm::TimerfdAlarm(std::filesystem::path zoneFile)
    : m_zoneFile(std::move(zoneFile))
    , m_zone(identity(m_zoneFile))
    , m_timer(::timerfd_create(CLOCK_REALTIME, TFD_NONBLOCK | TFD_CLOEXEC))
{
    if (m_timer < 0)
        qFatal("cannot create a timer: error %d", errno); // out of descriptors or memory
    m_notifier = std::make_unique<QSocketNotifier>(m_timer, QSocketNotifier::Read);
    connect(m_notifier.get(), &QSocketNotifier::activated, this, &TimerfdAlarm::readTimer);
    arm();
    watchZone();
}

TimerfdAlarm::~TimerfdAlarm()
{
    m_notifier.reset(); // before what it watches
    m_watchNotifier.reset();
    ::close(m_timer);
    if (m_watch >= 0)
        ::close(m_watch);
}

/// Not by the toolkit's watcher, which looks every second where there are no more watches.
void TimerfdAlarm::watchZone()
{
    m_watch = ::inotify_init1(IN_NONBLOCK | IN_CLOEXEC);
    if (m_watch < 0)
        return;
    // The folder, as the file itself is replaced when it changes.
    const std::filesystem::path folder = m_zoneFile.parent_path();
    constexpr std::uint32_t changes = IN_CREATE | IN_MOVED_TO | IN_CLOSE_WRITE | IN_DELETE | IN_ONLYDIR;
    ::inotify_add_watch(m_watch, folder.c_str(), changes);
    m_watchNotifier = std::make_unique<QSocketNotifier>(m_watch, QSocketNotifier::Read);
    connect(m_watchNotifier.get(), &QSocketNotifier::activated, this, &TimerfdAlarm::readWatch);
}

void TimerfdAlarm::readWatch()
{
    // What changed does not matter.
    std::array<char, 4096> buffer; // NOLINT(*-member-init): read fills it
    while (::read(m_watch, buffer.data(), buffer.size()) > 0) { }
    compareZone();
}

void TimerfdAlarm::set(std::optional<Instant> instant)
{
    m_target = instant;
    arm();
}

void TimerfdAlarm::arm()
{
    constexpr qint64 perSecond = 1000;
    constexpr qint64 nanoseconds = 1'000'000;
    // Never 0, which would switch it off; and armed also while nothing is set, to hear of changes.
    constexpr qint64 earliest = 1;
    constexpr qint64 never = 7'258'118'400'000; // the year 2200
    const qint64 target = m_target ? std::clamp(m_target->millisecondsSinceEpoch(), earliest, never) : never;
    itimerspec time{};
    time.it_value.tv_sec = target / perSecond;
    time.it_value.tv_nsec = target % perSecond * nanoseconds;
    // It is set in any case. That the clock was set before is told once, here or at the next reading.
    constexpr int flags = TFD_TIMER_ABSTIME | TFD_TIMER_CANCEL_ON_SET;
    if (::timerfd_settime(m_timer, flags, &time, nullptr) != 0 && errno == ECANCELED)
        QMetaObject::invokeMethod(this, "clockChanged", Qt::QueuedConnection);
}

void TimerfdAlarm::readTimer()
{
    std::uint64_t count = 0;
    if (::read(m_timer, &count, sizeof count) < 0) {
        if (errno != ECANCELED)
            return; // it was set again meanwhile
        arm();
        m_zone = identity(m_zoneFile);
        Q_EMIT clockChanged();
        return;
    }
    if (!m_target)
        return;
    m_target.reset();
    arm();
    const QPointer guard(this);
    compareZone();
    if (guard)
        Q_EMIT rang();
}

void TimerfdAlarm::compareZone()
{
    if (std::string zone = identity(m_zoneFile); zone != m_zone) {
        m_zone = std::move(zone);
        Q_EMIT clockChanged();
    }
}

} // namespace orbitledge
