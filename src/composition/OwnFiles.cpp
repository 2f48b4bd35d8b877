#include "composition/OwnFiles.h"

#include "BuildInfo.h"

namespace orbitledge::own {

std::filesystem::path settingsFile(const UserDirectories &directories)
{
    return directories.configuration().value_or(directories.temporary()) / build::applicationId
        / "settings.json";
}

std::filesystem::path remindersFile(const UserDirectories &directories)
{
    return directories.state().value_or(directories.temporary()) / build::applicationId / "reminders.json";
}

QString keyringAccount()
{
    return QStringLiteral("session");
}

} // namespace orbitledge::own
