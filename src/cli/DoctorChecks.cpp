#include "cli/DoctorChecks.h"

#include "cli/Concealment.h"
#include "cli/Terminal.h"

#include <algorithm>
#include <array>

namespace orbitledge {

using namespace Qt::StringLiterals;
using namespace findings;

namespace {

using enum CheckLevel;
using Detail = Check::Detail;
using Details = QList<std::pair<QByteArray, Detail>>;

template <typename T> Detail detailOf(const std::optional<T> &value)
{
    return value ? Detail(*value) : Detail();
}

/// One state that a subject can be in.
struct Verdict {
    CheckLevel level = Ok;
    const char *state = "";
    QString text;
    QString advice;
};

Check checkOf(const char *subject, const QString &title, Verdict verdict, Details details = {})
{
    return {
        .subject = subject,
        .title = title,
        .level = verdict.level,
        .state = verdict.state,
        .text = std::move(verdict.text),
        .advice = std::move(verdict.advice),
        .details = std::move(details),
    };
}

Verdict unknownWithoutBus()
{
    return {.level = Info,
        .state = "unknown",
        .text = u"cannot be asked without the session bus"_s,
        .advice = {}};
}

QString joined(const QStringList &parts)
{
    QStringList there = parts;
    there.removeAll(QString());
    return there.join(u", "_s);
}

// ---- the program and the machine -------------------------------------------------------------------------

Check librariesCheck(const Versions &versions, const OwnFacts &own)
{
    const auto named = [](const QString &name, const QString &version) {
        return name + u' ' + (version.isEmpty() ? u"of an unknown version"_s : version);
    };
    const QString text = joined({named(u"Qt"_s, versions.toolkit), named(u"libcurl"_s, versions.http),
        named(u"ICU"_s, own.icuVersion), named(u"tzdata"_s, versions.tzdata)});
    return checkOf("libraries", u"Libraries"_s, {.level = Info, .state = "told", .text = text, .advice = {}},
        {{"qt", versions.toolkit}, {"curl", versions.http}, {"icu", own.icuVersion},
            {"tzdata", versions.tzdata}});
}

Check systemCheck(const Versions &versions)
{
    const QString text = joined({versions.system, versions.kernel});
    return checkOf("system", u"System"_s,
        {.level = Info, .state = "told", .text = text.isEmpty() ? u"unknown"_s : text, .advice = {}},
        {{"name", versions.system}, {"kernel", versions.kernel}});
}

Verdict desktopVerdict(const Session &session)
{
    if (!session.hasX11 && !session.hasWayland) {
        return {.level = Missing,
            .state = "no-display",
            .text = u"no display in this session"_s,
            .advice = u"The panel needs one; the other commands work without."_s};
    }
    const QString name = session.desktop.isEmpty() ? u"one without a name"_s : session.desktop;
    QStringList displays;
    if (session.hasWayland)
        displays.append(u"Wayland"_s);
    if (session.hasX11)
        displays.append(u"X11"_s);
    QString text = name + u", "_s + displays.join(u" and "_s);
    if (!session.type.isEmpty())
        text += u", session of type %1"_s.arg(session.type);
    return {.level = Info, .state = "told", .text = text, .advice = {}};
}

Check desktopCheck(const Session &session)
{
    return checkOf("desktop", u"Desktop"_s, desktopVerdict(session),
        {{"name", session.desktop}, {"sessionType", session.type}, {"x11", session.hasX11},
            {"wayland", session.hasWayland}});
}

Check regionCheck(const OwnFacts &own)
{
    QStringList names{own.dates};
    for (const QString &other : {own.money, own.collation}) {
        if (!names.contains(other))
            names.append(other);
    }
    const QString text = names.join(u" with "_s) + u", "_s + own.encoding + u", "_s + own.timeZone;
    return checkOf("region", u"Region"_s, {.level = Info, .state = "told", .text = text, .advice = {}},
        {{"dates", own.dates}, {"money", own.money}, {"collation", own.collation}, {"encoding", own.encoding},
            {"timeZone", own.timeZone}});
}

Verdict runningVerdict(Running running)
{
    switch (running) {
    case Running::Unknown:
        return unknownWithoutBus();
    case Running::No:
        return {.level = Info, .state = "not-running", .text = u"not running"_s, .advice = {}};
    case Running::Yes:
        break;
    }
    return {.level = Info, .state = "running", .text = u"running"_s, .advice = {}};
}

Verdict windowsVerdict(WindowsProgram program)
{
    switch (program) {
    case WindowsProgram::Missing:
        return {.level = Failure,
            .state = "missing",
            .text = u"the program orbitledge-desktop is missing"_s,
            .advice = u"Install Orbitledge anew: its programs belong together."_s};
    case WindowsProgram::Broken:
        return {.level = Failure,
            .state = "broken",
            .text = u"the program orbitledge-desktop does not run"_s,
            .advice = u"Start it in a terminal, where it tells which library it lacks, and install that."_s};
    case WindowsProgram::Mute:
        return {.level = Warning,
            .state = "no-answer",
            .text = u"the program orbitledge-desktop takes too long, or the X server does not answer it"_s,
            .advice = u"See whether other programs can open windows on this display."_s};
    case WindowsProgram::Working:
        break;
    }
    return {.level = Ok, .state = "working", .text = u"can be started"_s, .advice = {}};
}

// ---- the desktop's services ------------------------------------------------------------------------------

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

Check trayCheck(const Findings &found)
{
    const Tray &tray = found.tray;
    const bool isKnown = tray.watcher != Presence::Unknown;
    return checkOf("tray", u"Tray"_s, trayVerdict(tray, found.session),
        {{"watcher", isKnown ? Detail(tray.watcher != Presence::Absent) : Detail()},
            {"host", isKnown ? Detail(tray.hasHost) : Detail()}, {"xembed", detailOf(tray.hasEmbedder)}});
}

QString keyringName(const Keyring &keyring)
{
    return keyring.kind == Keyring::Kind::KWallet ? u"KWallet"_s : u"Secret Service"_s;
}

/// What keeps the program from using the keyring that is there; absent where nothing does.
std::optional<Verdict> keyringFault(const Keyring &keyring)
{
    const QString name = keyringName(keyring);
    if (keyring.presence == Presence::Mute) {
        return Verdict{.level = Failure,
            .state = "mute",
            .text = name + u" is there, but does not answer"_s,
            .advice = u"See whether it waits for you in a window of its own, or log out and in again."_s};
    }
    if (keyring.presence == Presence::Refusing) {
        return Verdict{.level = Failure,
            .state = "refused",
            .text = name + u" is there, but refuses to answer"_s,
            .advice = u"Look into the settings of your keyring for programs that are kept out."_s};
    }
    if (!keyring.isEnabled) {
        return Verdict{.level = Failure,
            .state = "disabled",
            .text = name + u" is switched off"_s,
            .advice = u"Switch it on in the System Settings, under KDE Wallet."_s};
    }
    return std::nullopt;
}

Verdict keyringVerdict(const Keyring &keyring)
{
    if (keyring.presence == Presence::Unknown)
        return unknownWithoutBus();
    if (keyring.presence == Presence::Absent) {
        return {.level = Failure,
            .state = "absent",
            .text = u"no keyring is there"_s,
            .advice = u"Install and start GNOME Keyring, KWallet or KeePassXC."_s};
    }
    if (auto fault = keyringFault(keyring))
        return *std::move(fault);
    const QString name = keyringName(keyring);
    if (keyring.presence == Presence::Startable)
        return {.level = Ok,
            .state = "startable",
            .text = name + u", which starts when it is needed"_s,
            .advice = {}};
    QString item = u", which does not tell whether a session is kept"_s;
    if (keyring.hasItem)
        item = *keyring.hasItem ? u", a session is kept"_s : u", no session is kept"_s;
    switch (keyring.collection) {
    case Keyring::Collection::Locked:
        return {.level = Warning,
            .state = "locked",
            .text = name + u", locked"_s + item,
            .advice = u"Unlock it with your keyring manager, or give its password when you are asked."_s};
    case Keyring::Collection::None:
        return {.level = Info,
            .state = "no-collection",
            .text = name + u", without a default keyring yet"_s + item,
            .advice = u"Signing in makes one, for which you choose a password."_s};
    case Keyring::Collection::Unknown:
    case Keyring::Collection::Unlocked:
        break;
    }
    const bool isUnlocked = keyring.collection == Keyring::Collection::Unlocked;
    return {.level = Ok,
        .state = isUnlocked ? "unlocked" : "there",
        .text = name + (isUnlocked ? u", unlocked"_s : QString()) + item,
        .advice = {}};
}

Check keyringCheck(const Keyring &keyring)
{
    using enum Keyring::Collection;
    const bool isTold = keyring.collection == Locked || keyring.collection == Unlocked;
    const QString service = keyring.kind == Keyring::Kind::KWallet ? u"kwallet"_s : u"secret-service"_s;
    return checkOf("keyring", u"Keyring"_s, keyringVerdict(keyring),
        {{"service", service}, {"locked", isTold ? Detail(keyring.collection == Locked) : Detail()},
            {"hasSession", detailOf(keyring.hasItem)}});
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

Check notificationsCheck(const Notifications &found)
{
    return checkOf("notifications", u"Notifications"_s, notificationsVerdict(found),
        {{"name", found.name}, {"vendor", found.vendor}, {"version", found.version},
            {"specification", found.specification}, {"capabilities", found.capabilities},
            {"doNotDisturb", detailOf(found.doNotDisturb)}, {"allowed", found.allows},
            {"popsUp", found.popsUp}});
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

Check portalCheck(const Portal &portal)
{
    return checkOf("portal", u"Portal"_s, portalVerdict(portal),
        {{"settingsVersion", detailOf(portal.settingsVersion)}, {"colorScheme", detailOf(portal.colorScheme)},
            {"contrast", detailOf(portal.contrast)}});
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

Check timerCheck(const Delivery &delivery)
{
    const Detail next = delivery.next ? Detail(QString::fromLatin1(delivery.next->text())) : Detail();
    return checkOf("reminderTimer", u"Reminder timer"_s, timerVerdict(delivery),
        {{"systemd", delivery.version}, {"next", next}});
}

// ---- files -----------------------------------------------------------------------------------------------

Verdict autostartVerdict(const Autostart &entry)
{
    const QString again = u"Switch \"Launch at login\" off and on again in the settings."_s;
    switch (entry.status) {
    case LoginItemStatus::NotRegistered:
        return {.level = Info, .state = "off", .text = u"off"_s, .advice = {}};
    case LoginItemStatus::RequiresApproval:
        return {.level = Info,
            .state = "switched-off",
            .text = u"switched off by the desktop, in %1"_s.arg(entry.file),
            .advice = u"Switch it on in your desktop's settings for what starts at login, if you want it."_s};
    case LoginItemStatus::NotFound:
        if (entry.program.isEmpty()) {
            return {.level = Warning,
                .state = "unreadable",
                .text = u"%1 names no program"_s.arg(entry.file),
                .advice = again};
        }
        return {.level = Warning,
            .state = "stale",
            .text = (entry.isProgramThere ? u"%1 does not start %2: it asks for something that is not there"_s
                                          : u"%1 starts %2, which is not there"_s)
                .arg(entry.file, entry.program),
            .advice = again};
    case LoginItemStatus::Enabled:
        break;
    }
    if (!entry.isThisProgram) {
        return {.level = Warning,
            .state = "other-program",
            .text = u"%1 starts another copy, %2"_s.arg(entry.file, entry.program),
            .advice = again};
    }
    return {.level = Ok, .state = "on", .text = u"on"_s, .advice = {}};
}

Check autostartCheck(const Autostart &entry)
{
    const bool hasProgram = !entry.program.isEmpty();
    return checkOf("autostart", u"Start at login"_s, autostartVerdict(entry),
        {{"file", entry.file}, {"program", hasProgram ? Detail(entry.program) : Detail()}});
}

/// As chmod(1) takes it.
QString octal(int mode)
{
    constexpr int base = 8;
    constexpr int digits = 4;
    return QString::number(mode, base).rightJustified(digits, u'0');
}

bool isForOthers(int mode)
{
    constexpr int othersBits = 077;
    return (mode & othersBits) != 0;
}

Verdict folderVerdict(const Folder &folder)
{
    const QString &path = folder.path;
    const auto failure = [](const char *state, const QString &text, const QString &advice) {
        return Verdict{.level = Failure, .state = state, .text = text, .advice = advice};
    };
    switch (folder.state) {
    case Folder::State::Nowhere:
        return failure(
            "nowhere", u"the environment names no place for it"_s, u"Set HOME to your home folder."_s);
    case Folder::State::NotAFolder:
        return failure("not-a-folder", u"something that is no folder is in the way of %1"_s.arg(path),
            u"Move that away, so that the folder can be made."_s);
    case Folder::State::NotMade:
    case Folder::State::Made:
        break;
    }
    if (!folder.isOwn && !folder.isWritable) {
        return failure("foreign", u"%1 belongs to another user"_s.arg(path),
            u"Give it back to yourself with chown, which takes an administrator."_s);
    }
    if (!folder.isWritable) {
        return failure("not-writable", u"nothing can be written to %1"_s.arg(path),
            u"Allow yourself to write there, and see that the disk is neither full nor read-only."_s);
    }
    if (folder.state == Folder::State::NotMade) {
        return {.level = Ok,
            .state = "not-made",
            .text = u"%1 is made when it is needed"_s.arg(path),
            .advice = {}};
    }
    if (isForOthers(folder.mode)) {
        return {.level = Warning,
            .state = "not-private",
            .text = u"%1 can be entered by others (mode %2)"_s.arg(path, octal(folder.mode)),
            .advice = u"Run chmod 700 on it."_s};
    }
    return {.level = Ok, .state = "writable", .text = path, .advice = {}};
}

Check folderCheck(const Folder &folder)
{
    const bool isMade = folder.state == Folder::State::Made;
    QByteArray subject = folder.subject;
    subject[0] = QChar(QLatin1Char(subject[0])).toUpper().toLatin1();
    const QString title = u"Folder for %1"_s.arg(QLatin1StringView(folder.subject));
    return checkOf(("folder" + subject).constData(), title, folderVerdict(folder),
        {{"path", folder.path}, {"writable", folder.isWritable},
            {"mode", isMade ? Detail(octal(folder.mode)) : Detail()}});
}

QString sizeText(qint64 bytes)
{
    constexpr qint64 step = 1024;
    if (bytes < step)
        return bytes == 1 ? u"1 byte"_s : u"%1 bytes"_s.arg(bytes);
    if (bytes < step * step)
        return u"%1 KiB"_s.arg(bytes / step);
    return u"%1 MiB"_s.arg(bytes / (step * step));
}

qint64 ageSeconds(const File &file, Instant now)
{
    constexpr qint64 millisecondsPerSecond = 1000;
    return (now.millisecondsSinceEpoch() - file.modified.millisecondsSinceEpoch()) / millisecondsPerSecond;
}

QString ageText(qint64 seconds)
{
    constexpr qint64 minute = 60;
    constexpr qint64 hour = 60 * minute;
    constexpr qint64 day = 24 * hour;
    const auto counted = [](qint64 count, const QString &unit) {
        return u"%1 %2%3 ago"_s.arg(count).arg(unit, count == 1 ? QString() : u"s"_s);
    };
    if (seconds < 0)
        return u"in the future, by this clock"_s;
    if (seconds < minute)
        return u"just now"_s;
    if (seconds < hour)
        return counted(seconds / minute, u"minute"_s);
    return seconds < day ? counted(seconds / hour, u"hour"_s) : counted(seconds / day, u"day"_s);
}

Verdict fileVerdict(const File &file, Instant now)
{
    const QString &path = file.path;
    switch (file.state) {
    case File::State::Missing:
        return {.level = Info, .state = "missing", .text = u"%1 is not there"_s.arg(path), .advice = {}};
    case File::State::Unreadable:
        return {.level = Warning,
            .state = "unreadable",
            .text = u"%1 cannot be read"_s.arg(path),
            .advice = u"Make it yours and readable for you, or move it away."_s};
    case File::State::Damaged:
        return {.level = Warning,
            .state = "damaged",
            .text = u"%1 is damaged"_s.arg(path),
            .advice = u"Move it away; Orbitledge makes a new one."_s};
    case File::State::Whole:
        break;
    }
    if (isForOthers(file.mode)) {
        return {.level = Warning,
            .state = "not-private",
            .text = u"others may read or change %1 (mode %2)"_s.arg(path, octal(file.mode)),
            .advice = u"Run chmod 600 on it."_s};
    }
    if (!file.isOwn) {
        return {.level = Warning,
            .state = "foreign",
            .text = u"%1 belongs to another user"_s.arg(path),
            .advice = u"Give it back to yourself with chown, which takes an administrator."_s};
    }
    const QString text
        = u"%1, %2, written %3"_s.arg(path, sizeText(file.size), ageText(ageSeconds(file, now)));
    return {.level = Ok, .state = "whole", .text = text, .advice = {}};
}

Check fileCheck(const File &file, Instant now)
{
    const bool isThere = file.state != File::State::Missing;
    const auto ifThere = [isThere](const Detail &detail) { return isThere ? detail : Detail(); };
    QByteArray subject = file.subject;
    subject[0] = QChar(QLatin1Char(subject[0])).toUpper().toLatin1();
    const QString title = u"File of %1"_s.arg(
        file.subject == "snapshot" ? u"saved data"_s : QString::fromLatin1(file.subject));
    return checkOf(("file" + subject).constData(), title, fileVerdict(file, now),
        {{"path", file.path}, {"size", ifThere(file.size)}, {"ageSeconds", ifThere(ageSeconds(file, now))},
            {"mode", ifThere(octal(file.mode))}});
}

// ---- the way out -----------------------------------------------------------------------------------------

Verdict openerVerdict(bool hasOpener)
{
    if (hasOpener)
        return {.level = Ok, .state = "there", .text = u"xdg-open is there"_s, .advice = {}};
    return {.level = Failure,
        .state = "missing",
        .text = u"xdg-open is missing"_s,
        .advice = u"Install it; its package is xdg-utils."_s};
}

Verdict networkVerdict(bool isOffline)
{
    if (!isOffline)
        return {.level = Ok, .state = "route", .text = u"there is a way to the Internet"_s, .advice = {}};
    return {.level = Warning,
        .state = "no-route",
        .text = u"there is no default route"_s,
        .advice = u"Connect to a network; until then the data saved last are shown."_s};
}

Verdict serviceVerdict(ServiceAddress service)
{
    switch (service) {
    case ServiceAddress::Refused:
        return {.level = Failure,
            .state = "refused",
            .text = u"the address in the environment is not accepted"_s,
            .advice = u"Unset ORBITLEDGE_API_URL and ORBITLEDGE_WEB_URL, or let them begin with https://."_s};
    case ServiceAddress::Environment:
        return {.level = Info,
            .state = "environment",
            .text = u"the one that the environment names"_s,
            .advice = {}};
    case ServiceAddress::BuiltIn:
        break;
    }
    return {.level = Info, .state = "built-in", .text = u"the one that is built in"_s, .advice = {}};
}

// ---- all of it -------------------------------------------------------------------------------------------

/// What comes from outside may contain anything.
void makePublic(Check &check, const Concealment &concealment)
{
    const auto clean = [&](const QString &text) { return concealment.concealed(printable(text)); };
    check.text = clean(check.text);
    for (auto &[key, detail] : check.details) {
        if (auto *const text = std::get_if<QString>(&detail))
            *text = clean(*text);
        if (auto *const texts = std::get_if<QStringList>(&detail))
            std::ranges::transform(*texts, texts->begin(), clean);
    }
}

} // namespace

QList<Check> checksOf(const Findings &findings, const OwnFacts &own)
{
    QList<Check> checks{
        librariesCheck(findings.versions, own),
        systemCheck(findings.versions),
        desktopCheck(findings.session),
        regionCheck(own),
        checkOf("panel", u"Panel"_s, runningVerdict(findings.running)),
        checkOf("windowsProgram", u"Panel program"_s, windowsVerdict(findings.windowsProgram)),
        checkOf("sessionBus", u"Session bus"_s, busVerdict(findings.bus)),
        trayCheck(findings),
        keyringCheck(findings.keyring),
        notificationsCheck(findings.notifications),
        portalCheck(findings.portal),
        timerCheck(findings.delivery),
        autostartCheck(findings.autostart),
    };
    for (const Folder &folder : findings.folders)
        checks.append(folderCheck(folder));
    for (const File &file : findings.files)
        checks.append(fileCheck(file, own.now));
    checks.append(checkOf("browser", u"Browser"_s, openerVerdict(findings.hasOpener)));
    checks.append(checkOf("service", u"Service"_s, serviceVerdict(own.service)));
    checks.append(checkOf("network", u"Network"_s, networkVerdict(findings.isOffline)));

    const Concealment concealment(findings.home, findings.userNames);
    for (Check &check : checks)
        makePublic(check, concealment);
    return checks;
}

} // namespace orbitledge
