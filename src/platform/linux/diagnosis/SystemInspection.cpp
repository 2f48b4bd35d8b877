#include "platform/linux/diagnosis/SystemInspection.h"

#include <QFile>
#include <QLibraryInfo>

#include <pwd.h>
#include <sys/utsname.h>
#include <unistd.h>

#include <vector>

namespace orbitledge {

using namespace Qt::StringLiterals;

namespace {

QByteArray beginningOf(const QString &path)
{
    constexpr qint64 enough = 4096;
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.read(enough) : QByteArray();
}

/// The database's compact form begins with "# version 2025b".
QString zoneDatabaseVersion()
{
    const QByteArray line = beginningOf(u"/usr/share/zoneinfo/tzdata.zi"_s).split('\n').constFirst();
    const QByteArray prefix = "# version ";
    return line.startsWith(prefix) ? QString::fromLatin1(line.sliced(prefix.size())) : QString();
}

/// os-release(5)
QString systemName()
{
    for (const QByteArray &line : beginningOf(u"/etc/os-release"_s).split('\n')) {
        const QByteArray key = "PRETTY_NAME=";
        if (!line.startsWith(key))
            continue;
        QByteArray value = line.sliced(key.size());
        value.replace('"', "");
        return QString::fromUtf8(value.replace('\'', ""));
    }
    return {};
}

QString kernelName()
{
    utsname names{};
    if (::uname(&names) != 0)
        return {};
    return QString::fromLocal8Bit(names.sysname) + u' ' + QString::fromLocal8Bit(names.release) + u' '
        + QString::fromLocal8Bit(names.machine);
}

/// In the user database; empty where there is none.
struct UserEntry {
    QString name;
    QString home;
};

UserEntry ownEntry()
{
    constexpr std::size_t bufferSize = 16384;
    std::vector<char> buffer(bufferSize);
    passwd entry{};
    passwd *found = nullptr;
    if (getpwuid_r(geteuid(), &entry, buffer.data(), buffer.size(), &found) != 0 || found == nullptr)
        return {};
    return {.name = QString::fromLocal8Bit(found->pw_name), .home = QString::fromLocal8Bit(found->pw_dir)};
}

} // namespace

findings::Versions inspectVersions()
{
    return {
        .toolkit = QLibraryInfo::version().toString(),
        .http = {},
        .tzdata = zoneDatabaseVersion(),
        .system = systemName(),
        .kernel = kernelName(),
    };
}

findings::Session inspectSession(const std::function<QByteArray(const char *)> &variable)
{
    return {
        .desktop = QString::fromLocal8Bit(variable("XDG_CURRENT_DESKTOP")),
        .type = QString::fromLocal8Bit(variable("XDG_SESSION_TYPE")),
        .hasX11 = !variable("DISPLAY").isEmpty(),
        .hasWayland = !variable("WAYLAND_DISPLAY").isEmpty(),
    };
}

QString homeFolder(const std::function<QByteArray(const char *)> &variable)
{
    const QByteArray home = variable("HOME");
    return home.isEmpty() ? ownEntry().home : QString::fromLocal8Bit(home);
}

QStringList userNames(const std::function<QByteArray(const char *)> &variable)
{
    QStringList names;
    const auto add = [&names](const QString &name) {
        if (!name.isEmpty() && !names.contains(name))
            names.append(name);
    };
    add(ownEntry().name);
    for (const char *const name : {"USER", "LOGNAME"})
        add(QString::fromLocal8Bit(variable(name)));
    return names;
}

} // namespace orbitledge
