#include "cli/DoctorChecks.h"

#include "cli/Concealment.h"
#include "cli/DoctorVerdict.h"
#include "cli/FileChecks.h"
#include "cli/KeyringCheck.h"
#include "cli/MachineChecks.h"
#include "cli/SessionChecks.h"
#include "cli/Terminal.h"

#include <algorithm>

namespace orbitledge {

using namespace Qt::StringLiterals;
using namespace findings;

namespace {

using enum CheckLevel;

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
        runningCheck(findings.running),
        windowsProgramCheck(findings.windowsProgram),
        busCheck(findings.bus),
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
