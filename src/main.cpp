#include "BuildInfo.h"
#include "cli/CommandLine.h"
#include "platform/curl/CurlHttpSession.h"
#include "platform/linux/PasswordInput.h"
#include "platform/linux/PosixFileStore.h"
#include "platform/linux/RouteConnectivity.h"
#include "platform/linux/SettingsFile.h"
#include "platform/linux/StandardDescriptors.h"
#include "platform/linux/SystemClock.h"
#include "platform/linux/TimerfdAlarm.h"
#include "platform/linux/XdgDirectories.h"
#include "platform/linux/keychain/DesktopKeychain.h"
#include "platform/linux/notifications/DesktopNotificationCenter.h"
#include "platform/linux/notifications/DesktopNotificationDisplay.h"
#include "platform/linux/notifications/DesktopNotificationSwitches.h"
#include "platform/linux/notifications/SystemdDelivery.h"
#include "service/APIClient.h"
#include "service/ServiceAddresses.h"
#include "service/SessionCredentialStore.h"
#include "state/SnapshotCache.h"

#include <QCoreApplication>
#include <QLoggingCategory>

#include <langinfo.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <clocale>
#include <vector>

using namespace orbitledge;
using namespace Qt::StringLiterals;

namespace {

int terminalColumns()
{
    winsize size{};
    return ::ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 ? size.ws_col : 0;
}

/// Scripts expect one line on standard error and no remarks of the libraries. QT_LOGGING_RULES brings them
/// back.
void silenceLibraries()
{
    QLoggingCategory::setFilterRules(u"*=false"_s);
}

ServiceAccess makeService(const QUrl &baseURL)
{
    const QString applicationId = QString::fromLatin1(build::applicationId);
    auto session = std::make_shared<CurlHttpSession>(QByteArray("Orbitledge/") + build::version,
        HttpSessionConfiguration{}, std::make_shared<RouteConnectivity>());
    auto credentials = std::make_shared<SessionCredentialStore>(
        std::make_shared<DesktopKeychain>(), applicationId, u"session"_s, u"Orbitledge session"_s);
    auto client = std::make_shared<APIClient>(
        baseURL, std::move(session), credentials, std::make_shared<SystemClock>());
    return {std::move(client), std::move(credentials)};
}

DesktopNotificationCenter::Parts notificationParts()
{
    const QString applicationId = QString::fromLatin1(build::applicationId);
    const auto variable = [](const char *name) { return qgetenv(name); };
    const XdgDirectories directories(variable);
    const std::filesystem::path temporary = directories.temporary();
    auto files = std::make_shared<PosixFileStore>();
    return {
        .file = directories.state().value_or(temporary) / build::applicationId / "reminders.json",
        .files = files,
        .clock = std::make_shared<SystemClock>(),
        .timeZone = TimeZone::system,
        .alarm = std::make_shared<TimerfdAlarm>(),
        .display = std::make_shared<DesktopNotificationDisplay>(NotificationSender{
            .name = u"Orbitledge"_s,
            .applicationId = applicationId,
            .isShortLived = true,
        }),
        .switches = std::make_shared<DesktopNotificationSwitches>(DesktopNotificationSwitches::Settings{
            .variable = variable,
            .desktopId = applicationId,
            .applicationName = u"Orbitledge"_s,
        }),
        .unattended = std::make_shared<SystemdDelivery>(SystemdDelivery::Settings{
            .applicationId = applicationId,
            .programPath = QCoreApplication::applicationFilePath().toStdString(),
            .configurationFolder = directories.configuration().value_or(temporary),
            .dataFolder = directories.data().value_or(temporary),
            .variable = variable,
            .files = files,
        }),
    };
}

NotificationDelivery deliverReminders(int argc, char **argv)
{
    constexpr std::chrono::seconds limit(60);
    silenceLibraries();
    const QCoreApplication application(argc, argv);
    DesktopNotificationCenter center(notificationParts());
    return QCoro::waitFor(center.deliverDue(limit));
}

tl::expected<ExitCode, QString> withService(int argc, char **argv, const ServiceCommand &command)
{
    const auto addresses = ServiceAddresses::fromEnvironment([](const char *name) { return qgetenv(name); });
    if (!addresses)
        return tl::make_unexpected(addresses.error());
    silenceLibraries();
    const QCoreApplication application(argc, argv);
    return QCoro::waitFor(command(makeService(addresses->api)));
}

Environment systemEnvironment(int argc, char **argv)
{
    // Only the encoding: numbers and dates are formatted by their own rules, not by the C library's.
    // NOLINTNEXTLINE(concurrency-mt-unsafe): there is no other thread yet
    (void)std::setlocale(LC_CTYPE, "");
    const auto variable = [](const char *name) { return qgetenv(name); };
    return {
        .clock = std::make_shared<SystemClock>(),
        .files = std::make_shared<PosixFileStore>(),
        .cacheFile = SnapshotCache::defaultLocation(XdgDirectories(variable)),
        .variable = variable,
        .userDefaults =
            [variable] {
                const XdgDirectories directories(variable);
                return std::make_shared<const SettingsFile>(
                    directories.configuration().value_or(directories.temporary()) / build::applicationId
                    / "settings.json");
            },
        .readStandardInput = [] { return PosixFileStore::readDescriptor(STDIN_FILENO); },
        .readPassword
        = [](const QString &prompt) { return readPassword(STDIN_FILENO, prompt.toLocal8Bit()); },
        .withService
        = [argc, argv](const ServiceCommand &command) { return withService(argc, argv, command); },
        .deliverReminders = [argc, argv] { return deliverReminders(argc, argv); },
        .writeOutput
        = [](const QByteArray &bytes) { return PosixFileStore::writeDescriptor(STDOUT_FILENO, bytes); },
        .writeError = [](const QByteArray &bytes) { PosixFileStore::writeDescriptor(STDERR_FILENO, bytes); },
        .outputIsTerminal = ::isatty(STDOUT_FILENO) == 1,
        .terminalColumns = terminalColumns(),
        // NOLINTNEXTLINE(concurrency-mt-unsafe): nor here
        .encoding = nl_langinfo(CODESET),
    };
}

} // namespace

int main(int argc, char **argv)
{
    occupyStandardDescriptors();
    const std::vector<QByteArray> words(argv + std::min(argc, 1), argv + argc);
    return static_cast<int>(runCommandLine(words, systemEnvironment(argc, argv)));
}
