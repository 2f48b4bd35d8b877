#include "platform/linux/DesktopWorkspace.h"

#include "platform/linux/DetachedProgram.h"
#include "platform/linux/PosixFileStore.h"

namespace orbitledge {

using namespace Qt::StringLiterals;

namespace {

/// The settings of one desktop: for each page the programs that may show it, the best one first.
struct DesktopSettings {
    /// In XDG_CURRENT_DESKTOP, whatever their case.
    QStringList names;
    QList<ProgramCall> notifications;
    QList<ProgramCall> loginItems;
};

/// The programs of KDE that show one of its modules, the newest first.
QList<ProgramCall> moduleOfKde(const QString &module)
{
    QList<ProgramCall> calls;
    for (const QString &program : {u"systemsettings"_s, u"systemsettings5"_s, u"kcmshell6"_s, u"kcmshell5"_s})
        calls.append({program, {module}});
    return calls;
}

const QList<DesktopSettings> &knownDesktops()
{
    static const QList<DesktopSettings> desktops{
        {
            .names = {u"GNOME"_s, u"Unity"_s},
            .notifications = {{u"gnome-control-center"_s, {u"notifications"_s}}},
            .loginItems = {{u"gnome-tweaks"_s, {}}, {u"gnome-session-properties"_s, {}}},
        },
        {
            .names = {u"KDE"_s},
            .notifications = moduleOfKde(u"kcm_notifications"_s),
            .loginItems = moduleOfKde(u"kcm_autostart"_s),
        },
        {
            .names = {u"XFCE"_s},
            .notifications = {{u"xfce4-notifyd-config"_s, {}}},
            .loginItems = {{u"xfce4-session-settings"_s, {}}},
        },
        {
            .names = {u"MATE"_s},
            .notifications = {{u"mate-notification-properties"_s, {}}},
            .loginItems = {{u"mate-session-properties"_s, {}}},
        },
        {
            .names = {u"Cinnamon"_s, u"X-Cinnamon"_s},
            .notifications = {{u"cinnamon-settings"_s, {u"notifications"_s}}},
            .loginItems = {{u"cinnamon-settings"_s, {u"startup"_s}}},
        },
        {
            .names = {u"LXQt"_s},
            .notifications = {{u"lxqt-config-notificationd"_s, {}}},
            .loginItems = {{u"lxqt-config-session"_s, {}}},
        },
    };
    return desktops;
}

/// The first program that can show a page of the desktop that runs, by its own name and those it is akin to.
std::optional<ProgramCall> programFor(QList<ProgramCall> DesktopSettings::*page)
{
    const QStringList names = qEnvironmentVariable("XDG_CURRENT_DESKTOP").split(u':', Qt::SkipEmptyParts);
    for (const QString &name : names) {
        for (const DesktopSettings &desktop : knownDesktops()) {
            if (!desktop.names.contains(name, Qt::CaseInsensitive))
                continue;
            if (auto call = firstAvailable(desktop.*page))
                return call;
        }
    }
    return std::nullopt;
}

bool isWebPage(const QUrl &url)
{
    return url.isValid() && (url.scheme() == u"https" || url.scheme() == u"http") && !url.host().isEmpty();
}

/// By which a window may come forward, under the names of Wayland and of X11. One that was for our own start
/// must not be taken for it.
EnvironmentChanges environmentWithToken(const QString &token)
{
    const auto value = token.isEmpty() ? std::nullopt : std::optional(token.toUtf8());
    return {{"XDG_ACTIVATION_TOKEN", value}, {"DESKTOP_STARTUP_ID", value}};
}

QCoro::Task<bool> start(
    std::optional<ProgramCall> call, QString activationToken, std::chrono::milliseconds patience)
{
    if (!call)
        co_return false;
    auto task = startDetached(*std::move(call), environmentWithToken(activationToken), patience);
    co_return co_await task;
}

std::optional<ProgramCall> xdgOpen(const QString &what)
{
    return firstAvailable({{u"xdg-open"_s, {what}}});
}

} // namespace

DesktopWorkspace::DesktopWorkspace(
    std::optional<std::filesystem::path> autostartFolder, std::chrono::milliseconds patience)
    : m_autostartFolder(std::move(autostartFolder))
    , m_patience(patience)
{
}

QCoro::Task<bool> DesktopWorkspace::open(QUrl url, QString activationToken)
{
    auto call = isWebPage(url) ? xdgOpen(QString::fromLatin1(url.toEncoded())) : std::nullopt;
    return start(std::move(call), activationToken, m_patience);
}

QCoro::Task<bool> DesktopWorkspace::openNotificationSettings()
{
    return start(programFor(&DesktopSettings::notifications), QString(), m_patience);
}

QCoro::Task<bool> DesktopWorkspace::openLoginItemSettings()
{
    auto call = programFor(&DesktopSettings::loginItems);
    if (!call && m_autostartFolder && PosixFileStore::createPrivateFolder(*m_autostartFolder))
        call = xdgOpen(QString::fromStdString(m_autostartFolder->string()));
    return start(std::move(call), QString(), m_patience);
}

} // namespace orbitledge
