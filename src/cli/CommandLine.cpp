#include "cli/CommandLine.h"

#include "BuildInfo.h"
#include "cli/DeliverRemindersCommand.h"
#include "cli/DoctorCommand.h"
#include "cli/HelpTexts.h"
#include "cli/PanelCommand.h"
#include "cli/RemindersCommand.h"
#include "cli/SessionCommands.h"
#include "cli/StatusCommand.h"
#include "cli/TimelineCommand.h"

namespace orbitledge {

using namespace Qt::StringLiterals;

ExitCode runCommandLine(std::span<const QByteArray> words, const Environment &environment)
{
    if (words.empty())
        return runPanel(words, environment);
    const QByteArray &command = words.front();
    const auto rest = words.subspan(1);
    if (isPanelOption(command))
        return runPanel(words, environment);
    if (command == "timeline")
        return runTimeline(rest, environment);
    if (command == "status")
        return runStatus(rest, environment);
    if (command == "reminders")
        return runReminders(rest, environment);
    if (command == "deliver-reminders")
        return runDeliverReminders(rest, environment);
    if (command == "doctor")
        return runDoctor(rest, environment);
    if (command == "sign-in")
        return runSignIn(rest, environment);
    if (command == "refresh")
        return runRefresh(rest, environment);
    if (command == "sign-out")
        return runSignOut(rest, environment);

    const auto print = [&](const QString &text) {
        if (words.size() == 1)
            return finish(environment, writeText(environment, text));
        reportError(environment, u"\"%1\" was not expected"_s.arg(QString::fromUtf8(words[1])));
        return ExitCode::Usage;
    };
    if (command == "--help" || command == "-h")
        return print(generalHelp());
    if (command == "--version")
        return print(u"orbitledge %1 (build %2)\n"_s.arg(
            QLatin1StringView(build::version), QLatin1StringView(build::buildNumber)));
    reportError(environment,
        u"the command \"%1\" is not known, \"orbitledge --help\" lists them"_s.arg(
            QString::fromUtf8(command)));
    return ExitCode::Usage;
}

} // namespace orbitledge
