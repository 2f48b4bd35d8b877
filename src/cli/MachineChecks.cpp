#include "cli/MachineChecks.h"

#include "cli/DoctorVerdict.h"

namespace orbitledge {

using namespace Qt::StringLiterals;
using namespace findings;

namespace {

using enum CheckLevel;
using Detail = Check::Detail;

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

} // namespace

Check librariesCheck(const Versions &versions, const OwnFacts &own)
{
    const auto named = [](const QString &name, const QString &version) {
        return name + u' ' + (version.isEmpty() ? u"of an unknown version"_s : version);
    };
    const QString text = joined({named(u"Qt"_s, versions.toolkit), named(u"libcurl"_s, versions.http),
        named(u"ICU"_s, own.icuVersion), named(u"tzdata"_s, versions.tzdata)});
    return checkOf("libraries", u"Libraries"_s,
        {.level = CheckLevel::Info, .state = "told", .text = text, .advice = {}},
        {{"qt", versions.toolkit}, {"curl", versions.http}, {"icu", own.icuVersion},
            {"tzdata", versions.tzdata}});
}

Check systemCheck(const Versions &versions)
{
    const QString text = joined({versions.system, versions.kernel});
    return checkOf("system", u"System"_s,
        {.level = CheckLevel::Info,
            .state = "told",
            .text = text.isEmpty() ? u"unknown"_s : text,
            .advice = {}},
        {{"name", versions.system}, {"kernel", versions.kernel}});
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
    return checkOf("region", u"Region"_s,
        {.level = CheckLevel::Info, .state = "told", .text = text, .advice = {}},
        {{"dates", own.dates}, {"money", own.money}, {"collation", own.collation}, {"encoding", own.encoding},
            {"timeZone", own.timeZone}});
}

Check runningCheck(Running running)
{
    return checkOf("panel", u"Panel"_s, runningVerdict(running));
}

Check windowsProgramCheck(WindowsProgram program)
{
    return checkOf("windowsProgram", u"Panel program"_s, windowsVerdict(program));
}

} // namespace orbitledge
