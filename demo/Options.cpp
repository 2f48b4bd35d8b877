#include "demo/Options.h"

#include "demo/SampleData.h"

using namespace Qt::StringLiterals;

namespace orbitledge::demo {

namespace {

tl::expected<qint64, QString> number(const QString &option, const QString &text, qint64 least, qint64 most)
{
    bool isNumber = false;
    const qint64 value = text.toLongLong(&isNumber);
    if (!isNumber || value < least || value > most)
        return tl::unexpected(
            u"%1 takes a number from %2 to %3, not \"%4\""_s.arg(option).arg(least).arg(most).arg(text));
    return value;
}

constexpr qint64 maximumPopulation = 1'000'000;
constexpr qint64 maximumLifetime = 31'536'000;

/// One option with its value, or what is wrong with it.
std::optional<QString> apply(Options &options, const QString &name, const QString &value)
{
    if (name == "--port"_L1) {
        const auto port = number(name, value, 0, 65'535);
        if (!port)
            return port.error();
        options.port = static_cast<quint16>(*port);
    } else if (name == "--data"_L1) {
        if (value.isEmpty())
            return u"--data takes a folder"_s;
        options.dataFolder = value;
    } else if (name == "--session-lifetime"_L1) {
        const auto seconds = number(name, value, 1, maximumLifetime);
        if (!seconds)
            return seconds.error();
        options.sessionLifetime = std::chrono::seconds(*seconds);
    } else if (name == "--populate"_L1) {
        const auto count = number(name, value, 1, maximumPopulation);
        if (!count)
            return count.error();
        options.populate = *count;
    } else if (name == "--today"_L1) {
        options.today = LocalDate::fromText(value.toStdString());
        if (!options.today || *options.today < earliestDate || *options.today > latestDate)
            return u"--today takes a day such as 2026-03-18, not \"%1\""_s.arg(value);
    } else if (name == "--add-account"_L1) {
        options.addAccount = value;
    } else if (name == "--currency"_L1) {
        options.currency = value;
    }
    return std::nullopt;
}

} // namespace

tl::expected<Options, QString> parseOptions(const QStringList &arguments, const QString &defaultFolder)
{
    static const QStringList withValue{u"--port"_s, u"--data"_s, u"--session-lifetime"_s, u"--populate"_s,
        u"--today"_s, u"--add-account"_s, u"--currency"_s};

    Options options;
    options.dataFolder = defaultFolder;
    for (qsizetype i = 0; i < arguments.size(); ++i) {
        const QString &argument = arguments[i];
        const auto equals = argument.indexOf(u'=');
        const QString name = equals < 0 ? argument : argument.first(equals);
        if (argument == "--help"_L1 || argument == "-h"_L1) {
            options.help = true;
        } else if (argument == "--version"_L1) {
            options.version = true;
        } else if (argument == "--unverified"_L1) {
            options.isUnverified = true;
        } else if (withValue.contains(name)) {
            if (equals < 0 && i + 1 == arguments.size())
                return tl::unexpected(u"%1 needs a value"_s.arg(name));
            const QString value = equals < 0 ? arguments[++i] : argument.sliced(equals + 1);
            if (auto problem = apply(options, name, value))
                return tl::unexpected(*std::move(problem));
        } else {
            return tl::unexpected(u"\"%1\" is not known; --help tells what there is"_s.arg(argument));
        }
    }
    if (options.help || options.version)
        return options;
    if (!options.addAccount && (options.isUnverified || !options.currency.isEmpty()))
        return tl::unexpected(u"--unverified and --currency go with --add-account"_s);
    if (options.addAccount && options.populate > 0)
        return tl::unexpected(u"--populate fills the sample account; it does not go with --add-account"_s);
    if (options.currency.isEmpty())
        options.currency = u"EUR"_s;
    if (options.dataFolder.isEmpty())
        return tl::unexpected(u"this machine names no place for data; give one with --data"_s);
    return options;
}

QString helpText(const QString &defaultFolder)
{
    return uR"(Usage: orbitledge-demo-service [OPTION]...

A small web service for trying Orbitledge without an account elsewhere, and for its tests. It listens on
127.0.0.1 only, keeps its data in one SQLite file, and says where it listens in one line:

    Listening on http://127.0.0.1:8420/

Sign in, in the client or on that page, with the sample account:

    e-mail     %1
    password   %2

Options:
  --port N                the port to listen on; 0 takes any that is free (8420)
  --data DIR              the folder for the data
                          (%3)
  --session-lifetime N    seconds for which a sign-in lasts (604800, seven days)
  --today YYYY-MM-DD      behave as if it were this day (the machine's own)
  --populate N            fill the sample account up to N subscriptions first, for measuring
  --help                  show this and end
  --version               show the version and end

Adding an account, whose password (8 to 1000 characters) is asked for on a terminal, or else is what comes
from standard input:

    printf %s 'a long password' | orbitledge-demo-service --add-account ben@example.com

  --add-account EMAIL     add this account and end
  --currency CODE         its currency (EUR)
  --unverified            leave its e-mail unverified: it may read, but not add subscriptions

What programs ask, in JSON:
  POST /auth/login                     {"email": …, "password": …}; answers with the session cookie
  GET  /auth/profile                   who is signed in
  POST /auth/logout                    ends the session
  GET  /subscriptions                  the list
  POST /subscriptions                  adds one
  POST /subscriptions/<id>/cancel      marks it as cancelled
  POST /subscriptions/<id>/uncancel    takes that back
  GET  /templates/search?q=…&limit=…   the catalogue, 1 to 20 entries

Pages for people:
  /   /login   /calendar   /subscriptions/<id>/edit   /download

It ends in order on SIGTERM and SIGINT. Exit status: 0; 1 where the port or the data cannot be used or an
account cannot be added; 2 where the arguments are wrong.
)"_s.replace(u"%1"_s, sampleEmail)
        .replace(u"%2"_s, samplePassword)
        .replace(u"%3"_s, defaultFolder.isEmpty() ? u"none here"_s : defaultFolder);
}

} // namespace orbitledge::demo
