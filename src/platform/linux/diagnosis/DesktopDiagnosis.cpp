#include "platform/linux/diagnosis/DesktopDiagnosis.h"

#include "platform/SerialQueue.h"
#include "platform/linux/DetachedProgram.h"
#include "platform/linux/PosixFileStore.h"
#include "platform/linux/RouteConnectivity.h"
#include "platform/linux/bus/SessionBusCall.h"
#include "platform/linux/diagnosis/AutostartInspection.h"
#include "platform/linux/diagnosis/BusGreeting.h"
#include "platform/linux/diagnosis/BusInquiry.h"
#include "platform/linux/diagnosis/DeliveryInspection.h"
#include "platform/linux/diagnosis/KeyringInspection.h"
#include "platform/linux/diagnosis/NotificationInspection.h"
#include "platform/linux/diagnosis/PortalInspection.h"
#include "platform/linux/diagnosis/SystemInspection.h"
#include "platform/linux/diagnosis/TrayInspection.h"
#include "platform/linux/notifications/SystemdDelivery.h"
#include "platform/linux/notifications/SystemdUnitFiles.h"

#include <tuple>
#include <utility>

namespace orbitledge {

using namespace Qt::StringLiterals;
using findings::Bus;

namespace {

using Settings = DesktopDiagnosis::Settings;

/// What lies on the disk.
struct OnDisk {
    findings::Autostart autostart;
    QList<findings::Folder> folders;
    QList<findings::File> files;
    bool isDeliveryArranged = false;
};

OnDisk inspectDisk(const Settings &settings)
{
    OnDisk found;
    found.autostart = inspectAutostart(settings.autostartEntry, settings.program);
    for (const WatchedFolder &folder : settings.folders)
        found.folders.append(inspectFolder(folder));
    for (const WatchedFile &file : settings.files)
        found.files.append(inspectFile(file));
    const SystemdUnitFiles units(SystemdDelivery::unitName(settings.applicationId),
        {.configuration = settings.configurationFolder, .data = settings.dataFolder},
        std::make_shared<PosixFileStore>());
    found.isDeliveryArranged = units.leaveTraces();
    return found;
}

QCoro::Task<OnDisk> lookAtDisk(std::shared_ptr<const Settings> settings)
{
    SerialQueue background;
    const auto look = [settings] { return inspectDisk(*settings); };
    auto looking = background.run(look);
    OnDisk found = co_await looking;
    co_return found;
}

/// Whom one may ask; absent where that is nobody, for which `bus` then tells the reason.
QCoro::Task<std::pair<Bus, BusNames>> reachBus(std::shared_ptr<const Settings> settings)
{
    std::pair<Bus, BusNames> result;
    SerialQueue background;
    const auto greet = [settings] { return greetSessionBus(settings->variable, settings->patience); };
    auto greeting = background.run(greet);
    result.first = co_await greeting;
    if (result.first != Bus::Reached)
        co_return result;
    const bool isConnected = co_await reachSessionBus();
    if (!isConnected) {
        result.first = Bus::Unreachable;
        co_return result;
    }
    BusInquiry inquiry(settings->patience);
    auto names = co_await inquiry.names();
    if (names)
        result.second = *std::move(names);
    else
        result.first = Bus::Mute;
    co_return result;
}

QCoro::Task<Findings> askEverybody(std::shared_ptr<const Settings> settings)
{
    Findings found;
    found.versions = inspectVersions();
    found.versions.http = settings->httpVersion;
    found.session = inspectSession(settings->variable);
    found.home = homeFolder(settings->variable);
    found.userNames = userNames(settings->variable);
    found.hasOpener = firstAvailable({{u"xdg-open"_s, {}}}).has_value();
    found.isOffline = RouteConnectivity().isOffline();

    auto looking = lookAtDisk(settings);
    auto windows = inspectWindowsProgram(settings->desktopProgram, settings->startPatience);
    auto reaching = reachBus(settings);
    OnDisk onDisk = co_await looking;
    found.autostart = std::move(onDisk.autostart);
    found.folders = std::move(onDisk.folders);
    found.files = std::move(onDisk.files);

    const auto reached = co_await reaching;
    const BusNames &names = reached.second;
    found.bus = reached.first;
    if (found.bus == Bus::Reached) {
        // All of them begin before the first is waited for.
        const auto limit = settings->patience;
        auto tray = inspectTray(names, limit);
        auto keyring = inspectKeyring(names, settings->item, limit);
        auto notifications = inspectNotifications(names, settings->applicationId, settings->variable, limit);
        auto portal = inspectPortal(names, limit);
        auto delivery = inspectDelivery(
            names, SystemdDelivery::unitName(settings->applicationId), onDisk.isDeliveryArranged, limit);
        using findings::Running;
        found.running = names.owned.contains(settings->applicationId) ? Running::Yes : Running::No;
        found.tray = co_await tray;
        found.keyring = co_await keyring;
        found.notifications = co_await notifications;
        found.portal = co_await portal;
        found.delivery = co_await delivery;
    }
    std::tie(found.windowsProgram, found.tray.hasEmbedder) = co_await windows;
    co_return found;
}

} // namespace

DesktopDiagnosis::DesktopDiagnosis(Settings settings)
    : m_settings(std::make_shared<const Settings>(std::move(settings)))
{
}

// No coroutine, so that this may go while the answers are awaited.
QCoro::Task<Findings> DesktopDiagnosis::findings()
{
    return askEverybody(m_settings);
}

} // namespace orbitledge
