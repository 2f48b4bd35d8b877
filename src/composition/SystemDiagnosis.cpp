#include "composition/SystemDiagnosis.h"

#include "BuildInfo.h"
#include "composition/OwnFiles.h"
#include "platform/curl/CurlVersion.h"
#include "platform/linux/AutostartEntry.h"
#include "platform/linux/InstalledPrograms.h"
#include "platform/linux/XdgDirectories.h"
#include "platform/linux/diagnosis/DesktopDiagnosis.h"
#include "platform/linux/notifications/NotificationQueue.h"
#include "state/SnapshotCache.h"

#include <QCoreApplication>
#include <QJsonDocument>

namespace orbitledge {

namespace {

QByteArray variable(const char *name)
{
    return qgetenv(name);
}

using Place = std::optional<std::filesystem::path>;

Place ownFolder(const Place &place)
{
    return place ? Place(*place / build::applicationId) : std::nullopt;
}

std::vector<WatchedFolder> folders(const XdgDirectories &directories)
{
    return {
        {.subject = "configuration", .path = ownFolder(directories.configuration())},
        {.subject = "data", .path = ownFolder(directories.data())},
        {.subject = "state", .path = ownFolder(directories.state())},
        {.subject = "cache", .path = ownFolder(directories.cache())},
    };
}

std::vector<WatchedFile> files(const XdgDirectories &directories)
{
    return {
        {
            .subject = "snapshot",
            .path = SnapshotCache::defaultLocation(directories),
            .isWhole = [](const QByteArray &json) { return decodeCacheSnapshot(json).has_value(); },
        },
        {
            .subject = "settings",
            .path = own::settingsFile(directories),
            .isWhole = [](const QByteArray &json) { return QJsonDocument::fromJson(json).isObject(); },
        },
        {
            .subject = "reminders",
            .path = own::remindersFile(directories),
            .isWhole = [](const QByteArray &json) { return NotificationQueue::decoded(json).has_value(); },
        },
    };
}

} // namespace

std::shared_ptr<Diagnosis> makeDiagnosis()
{
    const XdgDirectories directories(variable);
    const auto programs = InstalledPrograms::besides(QCoreApplication::applicationFilePath().toStdString());
    const QString id = QString::fromLatin1(build::applicationId);
    return std::make_shared<DesktopDiagnosis>(DesktopDiagnosis::Settings{
        .variable = variable,
        .applicationId = id,
        .item = {.service = id, .account = own::keyringAccount(), .label = {}},
        .program = programs.started,
        .desktopProgram = programs.desktop,
        .autostartEntry = AutostartEntry::defaultLocation(directories).value_or(std::filesystem::path()),
        .configurationFolder = directories.configuration().value_or(directories.temporary()),
        .dataFolder = directories.data().value_or(directories.temporary()),
        .folders = folders(directories),
        .files = files(directories),
        .httpVersion = curlVersion(),
    });
}

} // namespace orbitledge
