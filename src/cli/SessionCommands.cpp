#include "cli/SessionCommands.h"

#include "cli/HelpTexts.h"
#include "cli/Operands.h"
#include "cli/Terminal.h"
#include "service/AccountData.h"
#include "state/SnapshotCache.h"

namespace orbitledge {

using namespace Qt::StringLiterals;

namespace {

ExitCode fail(const Environment &environment, const APIError &error)
{
    const QString description = error.errorDescription();
    const bool isSilent = description.isEmpty() && error.is<APIError::Unauthorized>();
    return failure(environment, isSilent ? u"Your session expired. Please sign in again."_s : description);
}

/// What was saved could not be changed.
ExitCode fail(const Environment &environment, const FileError &error)
{
    return failure(environment,
        QString::fromStdString(environment.cacheFile.string()) + u": "_s + error.errorDescription);
}

ExitCode runWithService(const Environment &environment, const ServiceCommand &command)
{
    const auto result = environment.withService(command);
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

QCoro::Task<ExitCode> save(const Environment &environment, AccountData data, QString success)
{
    SnapshotCache cache(environment.cacheFile, environment.files);
    const qsizetype count = data.subscriptions.size();
    CacheSnapshot snapshot{
        .version = {},
        .profile = std::move(data.profile),
        .subscriptions = std::move(data.subscriptions),
        .fetchedAt = environment.clock->now(),
    };
    const auto saved = co_await cache.save(std::move(snapshot));
    if (!saved)
        co_return fail(environment, saved.error());
    const QString what = count == 1 ? u"1 subscription"_s : u"%1 subscriptions"_s.arg(count);
    co_return finish(environment, writeText(environment, success + u' ' + what + u" fetched.\n"_s));
}

/// What was saved for another account must not be shown for this one, also where nothing can be fetched for
/// it.
QCoro::Task<void> removeDataOfAnother(const Environment &environment, QUuid account)
{
    SnapshotCache cache(environment.cacheFile, environment.files);
    const auto saved = co_await cache.load();
    if (saved && saved->profile.id != account)
        (void)co_await cache.clear();
}

QCoro::Task<ExitCode> signIn(const Environment &environment, ServiceAccess service, QString email)
{
    // Blocks, while there is nothing else that could go on.
    auto password = askPassword(environment, email);
    if (!password)
        co_return failure(environment, password.error());
    auto profile = co_await service.client->signIn(email, *std::move(password));
    if (!profile)
        co_return fail(environment, profile.error());
    co_await removeDataOfAnother(environment, profile->id);
    auto subscriptions = co_await service.client->fetchSubscriptions();
    if (!subscriptions)
        co_return fail(environment, subscriptions.error());
    AccountData data{*std::move(profile), *std::move(subscriptions)};
    QString success = u"Signed in as %1."_s.arg(printable(email));
    co_return co_await save(environment, std::move(data), std::move(success));
}

QCoro::Task<ExitCode> refresh(const Environment &environment, ServiceAccess service)
{
    const bool hasSession = co_await service.client->hasValidSession();
    if (!hasSession)
        co_return failure(environment, u"You are not signed in."_s);
    auto data = co_await fetchAccountData(service.client);
    if (!data)
        co_return fail(environment, data.error());
    QString success = u"Up to date."_s;
    co_return co_await save(environment, *std::move(data), std::move(success));
}

QCoro::Task<ExitCode> signOut(const Environment &environment, ServiceAccess service)
{
    co_await service.client->signOut();
    SnapshotCache cache(environment.cacheFile, environment.files);
    const auto cleared = co_await cache.clear();
    if (!cleared)
        co_return fail(environment, cleared.error());
    // Signing out has asked the person where that was needed, and tells nothing of how it ended.
    const auto forgotten = co_await service.credentials->clear(KeychainPrompt::Forbidden);
    if (!forgotten) {
        const QString reason = forgotten.error().errorDescription();
        co_return failure(environment, u"The session could not be removed: "_s + reason);
    }
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

    return runWithService(
        environment, [&](ServiceAccess service) { return signIn(environment, std::move(service), *email); });
}

ExitCode runRefresh(std::span<const QByteArray> words, const Environment &environment)
{
    ExitCode end{};
    if (!operandsOf(words, 0, "refresh"_L1, refreshHelp, environment, end))
        return end;
    return runWithService(
        environment, [&](ServiceAccess service) { return refresh(environment, std::move(service)); });
}

ExitCode runSignOut(std::span<const QByteArray> words, const Environment &environment)
{
    ExitCode end{};
    if (!operandsOf(words, 0, "sign-out"_L1, signOutHelp, environment, end))
        return end;
    return runWithService(
        environment, [&](ServiceAccess service) { return signOut(environment, std::move(service)); });
}

} // namespace orbitledge
