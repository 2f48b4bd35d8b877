#include "cli/TimelineCommand.h"

#include "cli/HelpTexts.h"
#include "cli/TimelineJson.h"
#include "cli/TimelineTable.h"
#include "cli/ViewArguments.h"
#include "timeline/TimelineBuilder.h"

namespace orbitledge {

using namespace Qt::StringLiterals;

ExitCode runTimeline(std::span<const QByteArray> words, const Environment &environment)
{
    const auto arguments = parseViewArguments(words);
    if (!arguments) {
        reportError(environment, u"timeline: "_s + arguments.error());
        return ExitCode::Usage;
    }
    if (arguments->help)
        return finish(environment, writeText(environment, timelineHelp()));

    const auto snapshot = loadSnapshot(*arguments, environment);
    if (!snapshot)
        return failure(environment, snapshot.error());
    const View view = viewOf(*arguments, *snapshot, environment);
    const TimelineSnapshot timeline
        = buildTimeline(snapshot->subscriptions, view.currency, view.now, view.calendar);

    if (arguments->json)
        return finish(environment, environment.writeOutput(timelineJson(timeline)));
    const TableOptions options{
        .currency = view.currency,
        .colors = environment.outputIsTerminal && environment.variable("NO_COLOR").isEmpty()
            && environment.variable("TERM") != "dumb",
        .columns = environment.terminalColumns,
    };
    return finish(
        environment, writeText(environment, timelineTable(timeline, view.now, view.calendar, options)));
}

} // namespace orbitledge
