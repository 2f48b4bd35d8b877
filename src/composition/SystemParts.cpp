#include "composition/SystemParts.h"

#include "BuildInfo.h"
#include "composition/OwnFiles.h"
#include "platform/MonotonicTimer.h"
#include "platform/curl/CurlHttpSession.h"
#include "platform/httpprocess/ProcessHttpSession.h"
#include "platform/linux/AutostartEntry.h"
#include "platform/linux/DesktopWorkspace.h"
#include "platform/linux/InstalledPrograms.h"
#include "platform/linux/PosixFileStore.h"
#include "platform/linux/RouteConnectivity.h"
#include "platform/linux/SettingsFile.h"
#include "platform/linux/SystemClock.h"
#include "platform/linux/TimerfdAlarm.h"
#include "platform/linux/XdgDirectories.h"
#include "platform/linux/keychain/DesktopKeychain.h"
#include "platform/linux/notifications/DesktopNotificationDisplay.h"
#include "platform/linux/notifications/DesktopNotificationSwitches.h"
#include "platform/linux/notifications/SystemdDelivery.h"
#include "service/APIClient.h"
#include "service/ServiceAddresses.h"
#include "service/SessionCredentialStore.h"
#include "state/StoreSession.h"

#include <QCoreApplication>

#include <system_error>

namespace orbitledge {

using namespace Qt::StringLiterals;

namespace {

QByteArray variable(const char *name)
{
    return qgetenv(name);
}

QString applicationId()
{
    return QString::fromLatin1(build::applicationId);
}

InstalledPrograms installedPrograms()
{
    return InstalledPrograms::besides(QCoreApplication::applicationFilePath().toStdString());
}

DesktopNotificationCenter::Parts notificationParts(std::shared_ptr<NotificationDisplay> display)
{
    const XdgDirectories directories(variable);
    const std::filesystem::path temporary = directories.temporary();
    auto files = std::make_shared<PosixFileStore>();
    return {
        .file = own::remindersFile(directories),
        .files = files,
        .clock = std::make_shared<SystemClock>(),
        .timeZone = TimeZone::system,
        .alarm = std::make_shared<TimerfdAlarm>(),
        .display = std::move(display),
        .switches = std::make_shared<DesktopNotificationSwitches>(DesktopNotificationSwitches::Settings{
            .variable = variable,
            .desktopId = applicationId(),
            .applicationName = u"Orbitledge"_s,
        }),
        .unattended = std::make_shared<SystemdDelivery>(SystemdDelivery::Settings{
            .applicationId = applicationId(),
            .programPath = SystemParts::programPath(),
            .configurationFolder = directories.configuration().value_or(temporary),
            .dataFolder = directories.data().value_or(temporary),
            .variable = variable,
            .files = files,
        }),
    };
}

std::shared_ptr<LaunchAtLoginController> makeLaunchAtLogin(
    const XdgDirectories &directories, std::shared_ptr<DesktopWorkspace> workspace)
{
    // Without a place for a person's choices there is no entry, and making one fails.
    auto file = AutostartEntry::defaultLocation(directories).value_or(std::filesystem::path());
    return std::make_shared<LaunchAtLoginController>(std::make_shared<AutostartEntry>(std::move(file),
        SystemParts::programPath(), std::make_shared<PosixFileStore>(),
        [workspace = std::move(workspace)] { return workspace->openLoginItemSettings(); }));
}

} // namespace

std::filesystem::path SystemParts::programPath()
{
    return installedPrograms().started;
}

std::shared_ptr<HttpSession> SystemParts::makeHttp(
    Presence presence, HttpSessionConfiguration configuration, std::shared_ptr<Connectivity> connectivity)
{
    const QByteArray userAgent = QByteArray("Orbitledge/") + build::version;
    const std::filesystem::path program = installedPrograms().http;
    std::error_code error;
    if (presence == Presence::Resident && std::filesystem::exists(program, error))
        return std::make_shared<ProcessHttpSession>(program, userAgent, std::move(configuration));
    return std::make_shared<CurlHttpSession>(userAgent, std::move(configuration), std::move(connectivity));
}

std::shared_ptr<NotificationDisplay> SystemParts::makeNotificationDisplay(Presence presence)
{
    return std::make_shared<DesktopNotificationDisplay>(NotificationSender{
        .name = u"Orbitledge"_s,
        .applicationId = applicationId(),
        .isShortLived = presence == Presence::Short,
    });
}

std::shared_ptr<DesktopNotificationCenter> SystemParts::makeNotifications(
    std::shared_ptr<NotificationDisplay> display)
{
    return std::make_shared<DesktopNotificationCenter>(notificationParts(std::move(display)));
}

std::shared_ptr<SessionService> SystemParts::makeSession(std::shared_ptr<AppStore> appStore) const
{
    return std::make_shared<StoreSession>(StoreSession::Parts{
        .store = std::move(appStore),
        .cache = store.cache,
        .notifier = store.notifier,
        .credentials = credentials,
        .cacheFile = SnapshotCache::defaultLocation(XdgDirectories(variable)),
    });
}

tl::expected<SystemParts, QString> SystemParts::make(Presence presence)
{
    const auto addresses = ServiceAddresses::fromEnvironment(variable);
    if (!addresses)
        return tl::make_unexpected(addresses.error());

    const XdgDirectories directories(variable);
    auto clock = std::make_shared<SystemClock>();
    auto connectivity = std::make_shared<RouteConnectivity>();
    auto http = makeHttp(presence, {}, connectivity);
    auto credentials = std::make_shared<SessionCredentialStore>(
        std::make_shared<DesktopKeychain>(), applicationId(), own::keyringAccount(), u"Orbitledge session"_s);
    auto notifications = makeNotifications(makeNotificationDisplay(presence));
    auto defaults = std::make_shared<SettingsFile>(own::settingsFile(directories));
    const auto autostart = AutostartEntry::defaultLocation(directories);
    auto workspace = std::make_shared<DesktopWorkspace>(
        autostart ? std::optional(autostart->parent_path()) : std::nullopt);

    return SystemParts{
        .notifications = notifications,
        .credentials = credentials,
        .defaults = defaults,
        .api = addresses->api,
        .store = {
            .api = std::make_shared<APIClient>(addresses->api, http, credentials, clock),
            .cache = std::make_shared<SnapshotCache>(
                SnapshotCache::defaultLocation(directories), std::make_shared<PosixFileStore>()),
            .notifier = std::make_shared<RenewalNotifier>(notifications, defaults, addresses->web),
            .releaseChecker = std::make_shared<ReleaseChecker>(
                QString::fromLatin1(build::releaseManifestUrl), addresses->releases, http),
            .settings = std::make_shared<AppSettings>(defaults),
            .launchAtLogin = makeLaunchAtLogin(directories, workspace),
            .workspace = workspace,
            .clock = clock,
            .calendar = [locale = Locale::fromEnvironment(variable)] { return Calendar(TimeZone::system(), locale); },
            .refreshTimer = std::make_shared<MonotonicTimer>(),
            .dayAlarm = std::make_shared<TimerfdAlarm>(),
            .connectivity = connectivity,
        },
        .identity = {
            .currentVersion = QString::fromLatin1(build::version),
            .currentBuild = QString::fromLatin1(build::buildNumber),
            .webURL = addresses->web,
        },
    };
}

} // namespace orbitledge
