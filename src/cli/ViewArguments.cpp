#include "cli/ViewArguments.h"

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

using Setter = std::optional<QString> (*)(ViewArguments &, const QByteArray &);

struct CommonOption {
    QByteArrayView name;
    Setter set = nullptr;
};

std::optional<QString> setSnapshot(ViewArguments &arguments, const QByteArray &value)
{
    if (value.isEmpty())
        return u"--snapshot needs the name of a file, or \"-\""_s;
    arguments.snapshot = std::filesystem::path(value.toStdString());
    return std::nullopt;
}

std::optional<QString> setCurrency(ViewArguments &arguments, const QByteArray &value)
{
    if (!isCurrencyCode(value))
        return u"%1 is not a currency code of three letters, like EUR"_s.arg(quoted(value));
    arguments.currency = QString::fromLatin1(value);
    return std::nullopt;
}

std::optional<QString> setNow(ViewArguments &arguments, const QByteArray &value)
{
    arguments.now = Instant::fromText(value.toStdString());
    if (!arguments.now)
        return u"%1 is not an instant like 2026-03-18T09:30:00Z"_s.arg(quoted(value));
    return std::nullopt;
}

std::optional<QString> setTimeZone(ViewArguments &arguments, const QByteArray &value)
{
    arguments.timeZone = TimeZone::named(value);
    if (!arguments.timeZone)
        return u"the time zone %1 is not known, it should be like Europe/Berlin"_s.arg(quoted(value));
    return std::nullopt;
}

std::optional<QString> setLocale(ViewArguments &arguments, const QByteArray &value)
{
    arguments.locale = Locale::named(value);
    if (!arguments.locale)
        return u"the locale %1 is not known, it should be like de_CH"_s.arg(quoted(value));
    return std::nullopt;
}

constexpr std::array commonOptions{
    CommonOption{"--snapshot", setSnapshot},
    CommonOption{"--currency", setCurrency},
    CommonOption{"--now", setNow},
    CommonOption{"--time-zone", setTimeZone},
    CommonOption{"--locale", setLocale},
};

std::vector<ValueOption> allOptions(ViewArguments &arguments, const std::vector<ValueOption> &further)
{
    std::vector<ValueOption> options = further;
    for (const CommonOption &option : commonOptions) {
        options.push_back({option.name.toByteArray(),
            [&arguments, &option](const QByteArray &value) { return option.set(arguments, value); }});
    }
    return options;
}

std::vector<SwitchOption> allSwitches(ViewArguments &arguments, const std::vector<SwitchOption> &further)
{
    std::vector<SwitchOption> switches = further;
    const auto setHelp = [&arguments] { arguments.help = true; };
    switches.push_back({"--json", [&arguments] { arguments.json = true; }});
    switches.push_back({"--help", setHelp});
    switches.push_back({"-h", setHelp});
    return switches;
}

QString fileName(const std::filesystem::path &path)
{
    return path == "-" ? u"standard input"_s : QString::fromStdString(path.string());
}

struct SnapshotError {
    enum class Kind {
        Missing,
        Unreadable,
        /// Damaged, or of another version.
        Undecodable
    };

    Kind kind;
    /// With the file's name, for people.
    QString reason;
};

tl::expected<CacheSnapshot, SnapshotError> readSnapshot(
    const ViewArguments &arguments, const Environment &environment)
{
    using Kind = SnapshotError::Kind;
    const std::optional<std::filesystem::path> &chosen = arguments.snapshot;
    const std::filesystem::path path = chosen.value_or(environment.cacheFile);
    auto content = chosen == "-" ? environment.readStandardInput() : environment.files->read(path);
    if (!content) {
        const bool isMissing = content.error().kind == FileError::Kind::NotFound;
        const QString reason
            = isMissing && !chosen ? u"No data has been saved yet"_s : content.error().errorDescription;
        return tl::make_unexpected(SnapshotError{
            .kind = isMissing ? Kind::Missing : Kind::Unreadable,
            .reason = fileName(path) + u": "_s + reason,
        });
    }
    auto snapshot = decodeCacheSnapshot(*std::move(content));
    if (!snapshot) {
        const DecodingError &error = snapshot.error();
        const QString place = error.pathText();
        return tl::make_unexpected(SnapshotError{
            .kind = Kind::Undecodable,
            .reason = fileName(path) + u": "_s + (place.isEmpty() ? QString() : place + u": "_s)
                + error.debugDescription,
        });
    }
    return *std::move(snapshot);
}

} // namespace

tl::expected<ViewArguments, QString> parseViewArguments(std::span<const QByteArray> words,
    const std::vector<ValueOption> &further, const std::vector<SwitchOption> &furtherSwitches)
{
    ViewArguments arguments;
    const std::vector<ValueOption> valueOptions = allOptions(arguments, further);
    const std::vector<SwitchOption> switches = allSwitches(arguments, furtherSwitches);
    for (std::size_t i = 0; i < words.size(); ++i) {
        const QByteArray &word = words[i];
        const auto found = std::ranges::find(switches, word, &SwitchOption::name);
        if (found != switches.end()) {
            found->set();
            continue;
        }
        // "--name=value" or "--name value"
        const auto equals = word.indexOf('=');
        const QByteArray name = equals < 0 ? word : word.first(equals);
        const auto option = std::ranges::find(valueOptions, name, &ValueOption::name);
        if (option == valueOptions.end()) {
            if (std::ranges::find(switches, name, &SwitchOption::name) != switches.end())
                return tl::make_unexpected(u"%1 takes no value"_s.arg(QString::fromLatin1(name)));
            return tl::make_unexpected(word.startsWith('-')
                    ? u"the option %1 is not known"_s.arg(quoted(name))
                    : u"%1 was not expected"_s.arg(quoted(word)));
        }
        if (equals < 0 && i + 1 == words.size())
            return tl::make_unexpected(u"%1 needs a value"_s.arg(QString::fromLatin1(name)));
        const QByteArray value = equals < 0 ? words[++i] : word.sliced(equals + 1);
        if (auto fault = option->set(value))
            return tl::make_unexpected(*std::move(fault));
    }
    return arguments;
}

tl::expected<CacheSnapshot, QString> loadSnapshot(
    const ViewArguments &arguments, const Environment &environment)
{
    auto snapshot = readSnapshot(arguments, environment);
    if (!snapshot)
        return tl::make_unexpected(std::move(snapshot.error().reason));
    return *std::move(snapshot);
}

tl::expected<std::optional<CacheSnapshot>, QString> loadSnapshotIfSaved(
    const ViewArguments &arguments, const Environment &environment)
{
    auto snapshot = readSnapshot(arguments, environment);
    if (snapshot)
        return *std::move(snapshot);
    if (!arguments.snapshot && snapshot.error().kind != SnapshotError::Kind::Unreadable)
        return std::nullopt;
    return tl::make_unexpected(std::move(snapshot.error().reason));
}

View viewOf(const ViewArguments &arguments, const CacheSnapshot &snapshot, const Environment &environment)
{
    return {
        .now = arguments.now ? *arguments.now : environment.clock->now(),
        .calendar = Calendar(arguments.timeZone ? *arguments.timeZone : TimeZone::system(),
            arguments.locale ? *arguments.locale : Locale::fromEnvironment(environment.variable)),
        .currency = arguments.currency.value_or(snapshot.profile.defaultCurrency),
    };
}

} // namespace orbitledge
