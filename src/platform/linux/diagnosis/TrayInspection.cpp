#include "platform/linux/diagnosis/TrayInspection.h"

#include "platform/linux/notifications/ProgramOutput.h"

#include <QElapsedTimer>
#include <QFileInfo>

namespace orbitledge {

using namespace Qt::StringLiterals;
using findings::Presence;
using findings::Tray;
using findings::WindowsProgram;
using std::chrono::milliseconds;

QCoro::Task<Tray> inspectTray(BusNames names, milliseconds limit)
{
    const QString watcher = u"org.kde.StatusNotifierWatcher"_s;
    Tray tray;
    tray.watcher = names.presenceOf(watcher);
    if (tray.watcher != Presence::Present)
        co_return tray;
    BusInquiry inquiry(limit);
    const auto hasHost = co_await inquiry.property(
        watcher, u"/StatusNotifierWatcher"_s, watcher, u"IsStatusNotifierHostRegistered"_s);
    if (hasHost)
        tray.hasHost = hasHost->toBool();
    else
        tray.watcher = hasHost.error();
    co_return tray;
}

QCoro::Task<std::pair<WindowsProgram, std::optional<bool>>> inspectWindowsProgram(
    std::filesystem::path program, milliseconds limit)
{
    const QString name = QString::fromStdString(program.string());
    std::pair<WindowsProgram, std::optional<bool>> result(WindowsProgram::Missing, std::nullopt);
    if (!QFileInfo(name).isExecutable())
        co_return result;
    QElapsedTimer elapsed;
    elapsed.start();
    const QStringList arguments{u"--tray-of-x11"_s};
    const auto output = co_await outputOfProgram(name, arguments, limit);
    if (output) {
        result.first = WindowsProgram::Working;
        if (*output == "yes\n" || *output == "no\n")
            result.second = *output == "yes\n";
    } else {
        const bool tookTooLong = elapsed.hasExpired(limit.count());
        result.first = tookTooLong ? WindowsProgram::Mute : WindowsProgram::Broken;
    }
    co_return result;
}

} // namespace orbitledge
