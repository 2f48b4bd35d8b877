#include "platform/linux/notifications/SystemdUnitFiles.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <system_error>

namespace orbitledge {

using namespace Qt::StringLiterals;
using std::filesystem::path;

namespace {

// The link makes the timer start with the session. systemd follows the two forms alike; which one is there
// tells whether it has read what the units say now, so that an attempt that failed or was cut short at any
// moment is made again, and yet the timer is never missing at a login.
path pendingTarget(const path &timer)
{
    return path(".") / ".." / timer.filename();
}

path targetInForce(const path &timer)
{
    return path("..") / timer.filename();
}

/// Beside the link, until it takes its place.
path freshLink(const path &link)
{
    return link.parent_path() / ("." + link.filename().native() + ".new");
}

tl::unexpected<QString> failure(const path &file, const char *what, const QString &reason)
{
    return tl::make_unexpected(u"%1 cannot be %2 (%3)"_s.arg(
        QString::fromStdString(file.native()), QLatin1StringView(what), reason));
}

tl::unexpected<QString> failure(const path &file, const char *what, const std::error_code &error)
{
    return failure(file, what, QString::fromStdString(error.message()));
}

std::error_code lastError()
{
    return {errno, std::generic_category()};
}

} // namespace

SystemdUnitFiles::SystemdUnitFiles(
    const QString &name, const Folders &folders, std::shared_ptr<FileStore> files)
    : m_files(std::move(files))
{
    const path units = folders.configuration / "systemd" / "user";
    const std::string timer = name.toStdString() + ".timer";
    m_service = units / (name.toStdString() + ".service");
    m_timer = units / timer;
    m_link = units / "timers.target.wants" / timer;
    m_stamp = folders.data / "systemd" / "timers" / ("stamp-" + timer);
}

bool SystemdUnitFiles::areInForce(const SystemdUnits &units) const
{
    std::error_code error;
    return std::filesystem::read_symlink(m_link, error) == targetInForce(m_timer)
        && m_files->read(m_service) == units.service && m_files->read(m_timer) == units.timer;
}

bool SystemdUnitFiles::leaveTraces() const
{
    return std::ranges::any_of(std::array{m_service, m_timer, m_link, m_stamp}, [](const path &file) {
        std::error_code error;
        return std::filesystem::exists(std::filesystem::symlink_status(file, error));
    });
}

tl::expected<void, QString> SystemdUnitFiles::write(const SystemdUnits &units) const
{
    return link(pendingTarget(m_timer))
        .and_then([&] { return replace(m_service, units.service); })
        .and_then([&] { return replace(m_timer, units.timer); })
        .and_then([&] { return dateStamp(units.elapse); });
}

tl::expected<void, QString> SystemdUnitFiles::markInForce() const
{
    return link(targetInForce(m_timer));
}

tl::expected<void, QString> SystemdUnitFiles::link(const path &target) const
{
    const path fresh = freshLink(m_link);
    std::error_code error;
    std::filesystem::create_directories(m_link.parent_path(), error);
    if (!error) {
        std::error_code ignored; // it is rarely there
        std::filesystem::remove(fresh, ignored);
        std::filesystem::create_symlink(target, fresh, error);
    }
    if (!error)
        std::filesystem::rename(fresh, m_link, error);
    if (error)
        return failure(m_link, "linked", error);
    return {};
}

/// A persistent timer that starts asks for the first moment after the last time it elapsed, which is the date
/// of its stamp, and takes it for missed where that is over. Without a stamp it counts from now, and one that
/// elapsed after the new moment knows no later one: in both cases what is due already would never come. A
/// stamp from the future does not count.
tl::expected<void, QString> SystemdUnitFiles::dateStamp(Instant elapse) const
{
    const auto seconds = static_cast<time_t>(elapse.millisecondsSinceEpoch() / 1000);
    struct stat status{};
    if (::stat(m_stamp.c_str(), &status) == 0 && status.st_mtim.tv_sec < seconds)
        return {};
    auto created = replace(m_stamp, {}); // dated now
    if (!created)
        return created;
    if (::stat(m_stamp.c_str(), &status) != 0)
        return failure(m_stamp, "read", lastError());
    if (status.st_mtim.tv_sec < seconds)
        return {};
    const timespec before{.tv_sec = seconds - 1, .tv_nsec = 0};
    const std::array times{before, before};
    if (::utimensat(AT_FDCWD, m_stamp.c_str(), times.data(), 0) != 0)
        return failure(m_stamp, "dated", lastError());
    return {};
}

tl::expected<void, QString> SystemdUnitFiles::removeTimer() const
{
    return remove(m_link)
        .and_then([&] { return remove(m_timer); })
        .and_then([&] { return remove(m_stamp); })
        .map([&] {
            std::error_code ignored;
            std::filesystem::remove(freshLink(m_link), ignored);
            // Others may have their timers in it; then it stays.
            ::rmdir(m_link.parent_path().c_str());
        });
}

tl::expected<void, QString> SystemdUnitFiles::removeService() const
{
    return remove(m_service);
}

tl::expected<void, QString> SystemdUnitFiles::replace(const path &file, const QByteArray &content) const
{
    const auto replaced = m_files->replace(file, content);
    if (!replaced)
        return failure(file, "written", replaced.error().errorDescription);
    return {};
}

tl::expected<void, QString> SystemdUnitFiles::remove(const path &file) const
{
    const auto removed = m_files->remove(file);
    if (!removed)
        return failure(file, "removed", removed.error().errorDescription);
    return {};
}

} // namespace orbitledge
