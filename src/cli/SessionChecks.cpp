#include "cli/SessionChecks.h"

#include "cli/DoctorVerdict.h"

#include <array>

namespace orbitledge {

using namespace Qt::StringLiterals;
using namespace findings;

namespace {

using enum CheckLevel;
using Detail = Check::Detail;

Verdict busVerdict(Bus bus)
{
    switch (bus) {
    case Bus::NotNamed:
        return {.level = Failure,
            .state = "absent",
            .text = u"this session has none"_s,
            .advice
            = u"Log in to a desktop session, or start the command with \"dbus-run-session\" before it."_s};
    case Bus::Unreachable:
        return {.level = Failure,
            .state = "unreachable",
            .text = u"nobody takes connections at its address"_s,
            .advice
            = u"Log out and in again; if you became another user with \"su\" or \"sudo\", be yourself again."_s};
    case Bus::Mute:
        return {.level = Failure,
            .state = "mute",
            .text = u"it is there, but does not answer"_s,
            .advice = u"Log out and in again."_s};
    case Bus::Reached:
        break;
    }
    return {.level = Ok, .state = "reached", .text = u"answers"_s, .advice = {}};
}

const QString addTray
    = u"Add a status tray to your desktop's panel; on GNOME, install and switch on the extension AppIndicator."_s;

Verdict trayVerdict(const Tray &tray, const Session &session)
{
    if (tray.hasHost)
        return {.level = Ok, .state = "notifier", .text = u"StatusNotifier icons are shown"_s, .advice = {}};
    const bool hasEmbedder = tray.hasEmbedder.value_or(false);
    if (hasEmbedder && session.type != "wayland"_L1)
        return {.level = Ok, .state = "xembed", .text = u"XEmbed icons are shown"_s, .advice = {}};
    if (tray.watcher == Presence::Mute || tray.watcher == Presence::Refusing) {
        return {.level = Warning,
            .state = "mute",
            .text = u"the StatusNotifier watcher does not answer"_s,
            .advice = u"Restart your desktop's panel, or log out and in again."_s};
    }
    if (hasEmbedder) {
        return {.level = Missing,
            .state = "xembed-on-wayland",
            .text = u"only XEmbed icons are shown, which are for windows of X11"_s,
            .advice = addTray};
    }
    if (tray.watcher == Presence::Present) {
        return {.level = Missing,
            .state = "no-host",
            .text = u"a StatusNotifier watcher is there, but nothing that shows icons"_s,
            .advice = addTray};
    }
    if (tray.watcher == Presence::Unknown)
        return unknownWithoutBus();
    return {.level = Missing, .state = "absent", .text = u"nothing shows icons"_s, .advice = addTray};
}

Verdict notificationsVerdict(const Notifications &found)
{
    switch (found.daemon) {
    case Presence::Unknown:
        return unknownWithoutBus();
    case Presence::Absent:
        return {.level = Missing,
            .state = "absent",
            .text = u"nothing shows notifications"_s,
            .advice
            = u"Start your desktop's notification daemon; where there is none, install one, such as dunst."_s};
    case Presence::Mute:
    case Presence::Refusing:
        return {.level = Warning,
            .state = "mute",
            .text = u"the notification daemon does not answer"_s,
            .advice = u"Restart it, or log out and in again; reminders wait until then."_s};
    case Presence::Startable:
    case Presence::Present:
        break;
    }
    QString text = joined({(found.name + u' ' + found.version).trimmed(), found.vendor});
    text = found.daemon == Presence::Startable ? u"a daemon that starts when it is needed"_s : text;
    if (!found.allows) {
        return {.level = Warning,
            .state = "switched-off",
            .text = text + u", but the desktop shows none of Orbitledge's"_s,
            .advice = u"Allow them in your desktop's settings, under Notifications."_s};
    }
    if (found.doNotDisturb.value_or(false)) {
        return {.level = Warning,
            .state = "do-not-disturb",
            .text = text + u", but it keeps quiet"_s,
            .advice = u"End \"Do not disturb\" to see reminders when they come."_s};
    }
    if (!found.popsUp) {
        return {.level = Info,
            .state = "silent",
            .text = text + u"; those of Orbitledge go to a list without popping up"_s,
            .advice = u"Let them pop up in your desktop's settings, under Notifications, if you want to."_s};
    }
    if (found.daemon == Presence::Startable)
        return {.level = Ok, .state = "startable", .text = text, .advice = {}};
    if (!found.capabilities.contains(u"actions"_s)) {
        return {.level = Info,
            .state = "no-actions",
            .text = text + u"; it does not tell of clicks"_s,
            .advice = u"Open pages from the panel, or use another notification daemon."_s};
    }
    return {.level = Ok, .state = "there", .text = text, .advice = {}};
}

Verdict portalVerdict(const Portal &portal)
{
    const QString consequence
        = u"Install the portal of your desktop, such as xdg-desktop-portal-gtk, or choose light or dark in the settings."_s;
    switch (portal.presence) {
    case Presence::Unknown:
        return unknownWithoutBus();
    case Presence::Absent:
        return {.level = Missing, .state = "absent", .text = u"no portal is there"_s, .advice = consequence};
    case Presence::Startable:
        return {.level = Ok, .state = "startable", .text = u"starts when it is needed"_s, .advice = {}};
    case Presence::Mute:
    case Presence::Refusing:
        return {.level = Warning,
            .state = "mute",
            .text = u"the portal does not answer"_s,
            .advice = u"Log out and in again, or choose light or dark in the settings."_s};
    case Presence::Present:
        break;
    }
    if (!portal.settingsVersion) {
        return {.level = Missing,
            .state = "no-settings",
            .text = u"the portal does not tell settings"_s,
            .advice = consequence};
    }
    const QString text = u"settings of version %1"_s.arg(*portal.settingsVersion);
    if (!portal.colorScheme) {
        return {.level = Missing,
            .state = "no-color-scheme",
            .text = text + u", without a colour scheme"_s,
            .advice = consequence};
    }
    constexpr std::array schemes{"no preference", "dark", "light"};
    const auto scheme = *portal.colorScheme;
    const QString name = scheme >= 0 && scheme < qint64{schemes.size()}
        ? QString::fromLatin1(schemes[static_cast<std::size_t>(scheme)])
        : QString::number(scheme);
    const QString contrast = portal.contrast ? u", contrast %1"_s.arg(*portal.contrast) : QString();
    return {.level = Ok, .state = "there", .text = text + u", colours: "_s + name + contrast, .advice = {}};
}

Verdict timerVerdict(const Delivery &delivery)
{
    switch (delivery.systemd) {
    case Presence::Unknown:
        return unknownWithoutBus();
    case Presence::Absent:
    case Presence::Startable:
        return {.level = Missing,
            .state = "absent",
            .text = u"systemd does not run for you"_s,
            .advice = u"Let Orbitledge start at login: reminders are shown while it runs."_s};
    case Presence::Mute:
    case Presence::Refusing:
        return {.level = Warning,
            .state = "mute",
            .text = u"systemd does not answer"_s,
            .advice = u"Log out and in again, or let Orbitledge start at login."_s};
    case Presence::Present:
        break;
    }
    const QString arrange = u"Run \"orbitledge refresh\", which arranges it anew."_s;
    switch (delivery.timer) {
    case Delivery::Timer::Failed:
        return {.level = Warning, .state = "failed", .text = u"the timer has failed"_s, .advice = arrange};
    case Delivery::Timer::NotInForce:
        return {.level = Warning,
            .state = "not-in-force",
            .text = u"the timer's files are there, but systemd does not wait for it"_s,
            .advice = arrange};
    case Delivery::Timer::None:
        return {.level = Ok,
            .state = "idle",
            .text = u"systemd %1, no reminder waits"_s.arg(delivery.version),
            .advice = {}};
    case Delivery::Timer::Waiting:
        break;
    }
    QString text = u"systemd %1, the timer waits"_s.arg(delivery.version);
    if (delivery.next)
        text += u" until "_s + QString::fromLatin1(delivery.next->text());
    return {.level = Ok, .state = "waiting", .text = text, .advice = {}};
}

} // namespace

Check busCheck(Bus bus)
{
    return checkOf("sessionBus", u"Session bus"_s, busVerdict(bus));
}

Check trayCheck(const Findings &found)
{
    const Tray &tray = found.tray;
    const bool isKnown = tray.watcher != Presence::Unknown;
    return checkOf("tray", u"Tray"_s, trayVerdict(tray, found.session),
        {{"watcher", isKnown ? Detail(tray.watcher != Presence::Absent) : Detail()},
            {"host", isKnown ? Detail(tray.hasHost) : Detail()}, {"xembed", detailOf(tray.hasEmbedder)}});
}

Check notificationsCheck(const Notifications &found)
{
    return checkOf("notifications", u"Notifications"_s, notificationsVerdict(found),
        {{"name", found.name}, {"vendor", found.vendor}, {"version", found.version},
            {"specification", found.specification}, {"capabilities", found.capabilities},
            {"doNotDisturb", detailOf(found.doNotDisturb)}, {"allowed", found.allows},
            {"popsUp", found.popsUp}});
}

Check portalCheck(const Portal &portal)
{
    return checkOf("portal", u"Portal"_s, portalVerdict(portal),
        {{"settingsVersion", detailOf(portal.settingsVersion)}, {"colorScheme", detailOf(portal.colorScheme)},
            {"contrast", detailOf(portal.contrast)}});
}

Check timerCheck(const Delivery &delivery)
{
    const Detail next = delivery.next ? Detail(QString::fromLatin1(delivery.next->text())) : Detail();
    return checkOf("reminderTimer", u"Reminder timer"_s, timerVerdict(delivery),
        {{"systemd", delivery.version}, {"next", next}});
}

} // namespace orbitledge
