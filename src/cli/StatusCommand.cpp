#include "cli/StatusCommand.h"

#include "cli/HelpTexts.h"
#include "cli/Operands.h"
#include "cli/Status.h"

namespace orbitledge {

using namespace Qt::StringLiterals;

namespace {

struct StatusArguments {
    ViewArguments view;
    bool waybar = false;
};

tl::expected<StatusArguments, QString> parse(std::span<const QByteArray> words)
{
    StatusArguments arguments;
    auto view = parseViewArguments(words, {}, {{"--waybar", [&arguments] { arguments.waybar = true; }}});
    if (!view)
        return tl::make_unexpected(std::move(view.error()));
    if (view->json && arguments.waybar)
        return tl::make_unexpected(u"--json and --waybar exclude each other"_s);
    arguments.view = *std::move(view);
    return arguments;
}

} // namespace

ExitCode runStatus(std::span<const QByteArray> words, const Environment &environment)
{
    const auto arguments = parse(words);
    if (!arguments)
        return usageError(environment, "status"_L1, arguments.error());
    if (arguments->view.help)
        return finish(environment, writeText(environment, statusHelp()));

    const auto snapshot = loadSnapshotIfSaved(arguments->view, environment);
    if (!snapshot)
        return failure(environment, snapshot.error());
    std::optional<Status> status;
    const View view = viewOf(arguments->view, snapshot->value_or(CacheSnapshot{}), environment);
    if (const std::optional<CacheSnapshot> &saved = *snapshot)
        status = statusOf(*saved, view);

    if (arguments->view.json)
        return finish(environment, environment.writeOutput(statusJson(status)));
    const Locale &locale = view.calendar.locale();
    if (arguments->waybar)
        return finish(environment, environment.writeOutput(waybarJson(status, locale)));
    return finish(environment, writeText(environment, statusLine(status, locale)));
}

} // namespace orbitledge
