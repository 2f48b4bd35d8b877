#include "cli/TimelineCommand.h"

#include "cli/HelpTexts.h"
#include "cli/TimelineJson.h"
#include "cli/TimelineTable.h"
#include "state/CacheSnapshot.h"
#include "timeline/TimelineBuilder.h"

#include <algorithm>
#include <array>

namespace orbitledge {

using namespace Qt::StringLiterals;

namespace {

bool isCurrencyCode(const QByteArray &text)
{
    return text.size() == 3
        && std::ranges::all_of(text, [](char c) { return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z'); });
}

QString quoted(const QByteArray &word)
{
    return u'"' + QString::fromUtf8(word) + u'"';
}

/// Takes the value of one option; on failure, what is wrong with it.
using Setter = std::optional<QString> (*)(TimelineArguments &, const QByteArray &);

struct ValueOption {
    QByteArrayView name;
    Setter set = nullptr;
};

std::optional<QString> setSnapshot(TimelineArguments &arguments, const QByteArray &value)
{
    if (value.isEmpty())
        return u"--snapshot needs the name of a file, or \"-\""_s;
    arguments.snapshot = std::filesystem::path(value.toStdString());
    return std::nullopt;
}

std::optional<QString> setCurrency(TimelineArguments &arguments, const QByteArray &value)
{
    if (!isCurrencyCode(value))
        return u"%1 is not a currency code of three letters, like EUR"_s.arg(quoted(value));
    arguments.currency = QString::fromLatin1(value);
    return std::nullopt;
}

std::optional<QString> setNow(TimelineArguments &arguments, const QByteArray &value)
{
    arguments.now = Instant::fromText(value.toStdString());
    if (!arguments.now)
        return u"%1 is not an instant like 2026-03-18T09:30:00Z"_s.arg(quoted(value));
    return std::nullopt;
}

std::optional<QString> setTimeZone(TimelineArguments &arguments, const QByteArray &value)
{
    arguments.timeZone = TimeZone::named(value);
    if (!arguments.timeZone)
        return u"the time zone %1 is not known, it should be like Europe/Berlin"_s.arg(quoted(value));
    return std::nullopt;
}

std::optional<QString> setLocale(TimelineArguments &arguments, const QByteArray &value)
{
    arguments.locale = Locale::named(value);
    if (!arguments.locale)
        return u"the locale %1 is not known, it should be like de_CH"_s.arg(quoted(value));
    return std::nullopt;
}

constexpr std::array valueOptions{
    ValueOption{"--snapshot", setSnapshot},
    ValueOption{"--currency", setCurrency},
    ValueOption{"--now", setNow},
    ValueOption{"--time-zone", setTimeZone},
    ValueOption{"--locale", setLocale},
};

QString fileName(const std::filesystem::path &path)
{
    return path == "-" ? u"standard input"_s : QString::fromStdString(path.string());
}

/// The snapshot, or one sentence that names the file, the place in it, and the reason.
tl::expected<CacheSnapshot, QString> load(
    const std::optional<std::filesystem::path> &chosen, const Environment &environment)
{
    const std::filesystem::path path = chosen.value_or(environment.cacheFile);
    auto content = chosen == "-" ? environment.readStandardInput() : environment.files->read(path);
    if (!content) {
        const bool nothingSaved = !chosen && content.error().kind == FileError::Kind::NotFound;
        const QString reason
            = nothingSaved ? u"No data has been saved yet"_s : content.error().errorDescription;
        return tl::make_unexpected(fileName(path) + u": "_s + reason);
    }
    auto snapshot = decodeCacheSnapshot(*std::move(content));
    if (!snapshot) {
        const DecodingError &error = snapshot.error();
        const QString place = error.pathText();
        return tl::make_unexpected(fileName(path) + u": "_s + (place.isEmpty() ? QString() : place + u": "_s)
            + error.debugDescription);
    }
    return *std::move(snapshot);
}

} // namespace

tl::expected<TimelineArguments, QString> parseTimelineArguments(std::span<const QByteArray> words)
{
    TimelineArguments arguments;
    for (std::size_t i = 0; i < words.size(); ++i) {
        const QByteArray &word = words[i];
        if (word == "--json") {
            arguments.json = true;
            continue;
        }
        if (word == "--help" || word == "-h") {
            arguments.help = true;
            continue;
        }
        // "--name=value" or "--name value"
        const auto equals = word.indexOf('=');
        const QByteArray name = equals < 0 ? word : word.first(equals);
        const auto *const option = std::ranges::find(valueOptions, QByteArrayView(name), &ValueOption::name);
        if (option == valueOptions.end()) {
            if (name == "--json" || name == "--help")
                return tl::make_unexpected(u"%1 takes no value"_s.arg(QString::fromLatin1(name)));
            return tl::make_unexpected(word.startsWith('-')
                    ? u"the option %1 is not known"_s.arg(quoted(name))
                    : u"%1 was not expected"_s.arg(quoted(word)));
        }
        if (equals < 0 && i + 1 == words.size())
            return tl::make_unexpected(u"%1 needs a value"_s.arg(QString::fromLatin1(name)));
        const QByteArray value = equals < 0 ? words[++i] : word.sliced(equals + 1);
        if (auto fault = option->set(arguments, value))
            return tl::make_unexpected(*std::move(fault));
    }
    return arguments;
}

ExitCode runTimeline(std::span<const QByteArray> words, const Environment &environment)
{
    const auto parsed = parseTimelineArguments(words);
    if (!parsed) {
        reportError(environment, u"timeline: "_s + parsed.error());
        return ExitCode::Usage;
    }
    const TimelineArguments &arguments = *parsed;
    if (arguments.help)
        return finish(environment, writeText(environment, timelineHelp()));

    const auto snapshot = load(arguments.snapshot, environment);
    if (!snapshot) {
        reportError(environment, snapshot.error());
        return ExitCode::Failure;
    }
    const Calendar calendar(arguments.timeZone ? *arguments.timeZone : TimeZone::system(),
        arguments.locale ? *arguments.locale : Locale::fromEnvironment(environment.variable));
    const Instant now = arguments.now ? *arguments.now : environment.clock->now();
    const QString currency = arguments.currency.value_or(snapshot->profile.defaultCurrency);
    const TimelineSnapshot timeline = buildTimeline(snapshot->subscriptions, currency, now, calendar);

    if (arguments.json)
        return finish(environment, environment.writeOutput(timelineJson(timeline)));
    const TableOptions options{
        .currency = currency,
        .colors = environment.outputIsTerminal && environment.variable("NO_COLOR").isEmpty()
            && environment.variable("TERM") != "dumb",
        .columns = environment.terminalColumns,
    };
    return finish(environment, writeText(environment, timelineTable(timeline, now, calendar, options)));
}

} // namespace orbitledge
