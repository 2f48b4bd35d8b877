#include "cli/SessionCommands.h"

#include "cli/HelpTexts.h"
#include "cli/Operands.h"
#include "cli/Terminal.h"
#include "state/AppStore.h"

namespace orbitledge {

using namespace Qt::StringLiterals;

namespace {

/// What was saved could not be changed.
ExitCode fail(const Environment &environment, const FileError &error)
{
    return failure(environment,
        QString::fromStdString(environment.cacheFile.string()) + u": "_s + error.errorDescription);
}

ExitCode runWithStore(const Environment &environment, const StoreCommand &command)
{
    const auto result = environment.withStore(command);
    return result ? *result : failure(environment, result.error());
}

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

// Free functions, as a coroutine must not outlive the lambda that it was; the environment lives until the
// command has ended.
// NOLINTBEGIN(cppcoreguidelines-avoid-reference-coroutine-parameters)

/// What was fetched is for the next command, so it must have been saved.
ExitCode tellFetched(const Environment &environment, const StoreAccess &access, const QString &success)
{
    if (const auto &failed = access.cache->lastFailure())
        return fail(environment, *failed);
    const AppState &state = access.store->state();
    if (state.notificationFailureMessage)
        reportError(environment, *state.notificationFailureMessage);
    const qsizetype count = state.subscriptions.size();
    const QString what = count == 1 ? u"1 subscription"_s : u"%1 subscriptions"_s.arg(count);
    return finish(environment, writeText(environment, success + u' ' + what + u" fetched.\n"_s));
}

QCoro::Task<ExitCode> signIn(const Environment &environment, StoreAccess access, QString email)
{
    // Blocks, while there is nothing else that could go on.
    auto password = askPassword(environment, email);
    if (!password)
        co_return failure(environment, password.error());
    const auto signedIn = co_await access.store->signIn(email, *std::move(password));
    if (!signedIn)
        co_return failure(environment, access.store->state().errorMessage.value_or(QString()));
    co_return tellFetched(environment, access, u"Signed in as %1."_s.arg(printable(email)));
}

QCoro::Task<ExitCode> refresh(const Environment &environment, StoreAccess access)
{
    co_await access.store->refresh();
    const AppState &state = access.store->state();
    if (state.errorMessage)
        co_return failure(environment, *state.errorMessage);
    if (state.authState != AuthState::SignedIn)
        co_return failure(environment, u"You are not signed in."_s);
    co_return tellFetched(environment, access, u"Up to date."_s);
}

/// The store tells nothing of how it ended, and has asked the person where that was needed.
QCoro::Task<ExitCode> signOut(const Environment &environment, StoreAccess access)
{
    co_await access.store->signOut();
    if (const auto &failed = access.cache->lastFailure())
        co_return fail(environment, *failed);
    const auto forgotten = co_await access.credentials->clear(KeychainPrompt::Forbidden);
    if (!forgotten) {
        const QString reason = forgotten.error().errorDescription();
        co_return failure(environment, u"The session could not be removed: "_s + reason);
    }
    const auto removed = co_await access.notifier->removeAll();
    if (!removed)
        co_return failure(environment, removed.error().errorDescription);
    co_return finish(environment, writeText(environment, u"Signed out.\n"_s));
}

// NOLINTEND(cppcoreguidelines-avoid-reference-coroutine-parameters)

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

    return runWithStore(
        environment, [&](StoreAccess access) { return signIn(environment, std::move(access), *email); });
}

ExitCode runRefresh(std::span<const QByteArray> words, const Environment &environment)
{
    ExitCode end{};
    if (!operandsOf(words, 0, "refresh"_L1, refreshHelp, environment, end))
        return end;
    return runWithStore(
        environment, [&](StoreAccess access) { return refresh(environment, std::move(access)); });
}

ExitCode runSignOut(std::span<const QByteArray> words, const Environment &environment)
{
    ExitCode end{};
    if (!operandsOf(words, 0, "sign-out"_L1, signOutHelp, environment, end))
        return end;
    return runWithStore(
        environment, [&](StoreAccess access) { return signOut(environment, std::move(access)); });
}

} // namespace orbitledge
