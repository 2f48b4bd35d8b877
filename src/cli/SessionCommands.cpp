#include "cli/SessionCommands.h"

#include "cli/HelpTexts.h"
#include "cli/Operands.h"
#include "cli/Terminal.h"
#include "service/ServiceAddresses.h"

#include <functional>
#include <utility>

namespace orbitledge {

using namespace Qt::StringLiterals;

namespace {

/// Nothing but the line's end that the terminal, or echo, put there.
void dropLineBreak(QByteArray &text)
{
    if (text.endsWith("\r\n"))
        text.chop(2);
    else if (text.endsWith('\n'))
        text.chop(1);
}

tl::expected<QString, QString> askPassword(const Environment &environment, const QString &email)
{
    auto line = environment.readPassword(u"Password for %1: "_s.arg(printable(email)));
    if (!line)
        return tl::make_unexpected(std::move(line.error()));
    dropLineBreak(*line);
    auto password = decodedText(environment, *line);
    line->fill('\0');
    if (!password)
        return tl::make_unexpected(u"The password is not in your locale's encoding"_s);
    if (password->isEmpty())
        return tl::make_unexpected(u"The password is missing"_s);
    return *std::move(password);
}

/// Tells how it ended; `success` is what is said where it is done.
ExitCode performed(const Environment &environment, SessionRequest request,
    const std::function<QString(const SessionOutcome &)> &success)
{
    const auto outcome = environment.performSession(std::move(request));
    if (!outcome)
        return failure(environment, outcome.error());
    if (!outcome->isDone)
        return failure(environment, outcome->problem);
    if (!outcome->problem.isEmpty())
        reportError(environment, outcome->problem);
    return finish(environment, writeText(environment, success(*outcome) + u'\n'));
}

QString withCount(const QString &sentence, const SessionOutcome &outcome)
{
    const qint64 count = outcome.subscriptionCount;
    const QString what = count == 1 ? u"1 subscription"_s : u"%1 subscriptions"_s.arg(count);
    return sentence + u' ' + what + u" fetched."_s;
}

/// Before anything else, so that nobody types a password for nothing.
tl::expected<void, QString> checkAddresses(const Environment &environment)
{
    const auto addresses = ServiceAddresses::fromEnvironment(environment.variable);
    if (!addresses)
        return tl::make_unexpected(addresses.error());
    return {};
}

} // namespace

ExitCode runSignIn(std::span<const QByteArray> words, const Environment &environment)
{
    constexpr auto command = "sign-in"_L1;
    ExitCode end{};
    const auto operands = operandsOf(words, 1, command, signInHelp, environment, end);
    if (!operands)
        return end;
    if (operands->isEmpty() || operands->front().isEmpty())
        return usageError(environment, command, u"the e-mail address of your account is missing"_s);
    const auto email = decodedText(environment, operands->front());
    if (!email)
        return usageError(environment, command, u"the e-mail address is not in your locale's encoding"_s);

    const auto checked = checkAddresses(environment);
    if (!checked)
        return failure(environment, checked.error());
    auto password = askPassword(environment, *email);
    if (!password)
        return failure(environment, password.error());
    return performed(environment, SignInRequest{.email = *email, .password = *std::move(password)},
        [&email](const SessionOutcome &outcome) {
            return withCount(u"Signed in as %1."_s.arg(printable(*email)), outcome);
        });
}

ExitCode runRefresh(std::span<const QByteArray> words, const Environment &environment)
{
    ExitCode end{};
    if (!operandsOf(words, 0, "refresh"_L1, refreshHelp, environment, end))
        return end;
    return performed(environment, RefreshRequest(),
        [](const SessionOutcome &outcome) { return withCount(u"Up to date."_s, outcome); });
}

ExitCode runSignOut(std::span<const QByteArray> words, const Environment &environment)
{
    ExitCode end{};
    if (!operandsOf(words, 0, "sign-out"_L1, signOutHelp, environment, end))
        return end;
    return performed(
        environment, SignOutRequest(), [](const SessionOutcome & /*outcome*/) { return u"Signed out."_s; });
}

} // namespace orbitledge
