#pragma once

#include "cli/CommandLine.h"
#include "service/SessionCredentialStore.h"
#include "support/FakeAPIClient.h"
#include "support/FakeFileStore.h"
#include "support/FakeKeychain.h"
#include "support/FakeUserDefaults.h"
#include "support/StoppedClock.h"

#include <QHash>

namespace orbitledge::testing {

/// The command line without a machine: files, streams, variables and the service are the test's.
struct CommandHarness {
    std::filesystem::path cacheFile = "/data/cache.json";
    std::shared_ptr<StoppedClock> clock
        = std::make_shared<StoppedClock>(*Instant::fromText("2026-03-18T09:00:00Z"));
    std::shared_ptr<FakeFileStore> files = std::make_shared<FakeFileStore>();
    std::shared_ptr<FakeAPIClient> client = std::make_shared<FakeAPIClient>();
    std::shared_ptr<FakeKeychain> keychain = std::make_shared<FakeKeychain>();
    std::shared_ptr<SessionCredentialStore> credentials = std::make_shared<SessionCredentialStore>(keychain,
        QStringLiteral("app.example"), QStringLiteral("session"), QStringLiteral("Example session"));
    std::shared_ptr<FakeUserDefaults> defaults = std::make_shared<FakeUserDefaults>();
    QHash<QByteArray, QByteArray> variables{{"LANG", "en_US.UTF-8"}};
    /// What is typed, or piped in; a reason where that fails.
    tl::expected<QByteArray, QString> password = QByteArray();
    /// Why there is no service.
    std::optional<QString> noService;

    /// How showing what is due ends.
    NotificationDelivery delivery = NotificationDelivery::Done;

    // Of the last run
    QByteArray output;
    QByteArray errors;
    /// What the password was asked with.
    QStringList prompts;

    Environment environment{
        .clock = clock,
        .files = files,
        .cacheFile = cacheFile,
        .variable = [this](const char *name) { return variables.value(name); },
        .userDefaults = [this] { return defaults; },
        .readStandardInput = [] { return tl::expected<QByteArray, FileError>(QByteArray()); },
        .readPassword =
            [this](const QString &prompt) {
                prompts.append(prompt);
                return password;
            },
        .withService = [this](const ServiceCommand &command) -> tl::expected<ExitCode, QString> {
            if (noService)
                return tl::make_unexpected(*noService);
            return QCoro::waitFor(command({client, credentials}));
        },
        .deliverReminders = [this] { return delivery; },
        .writeOutput =
            [this](const QByteArray &bytes) {
                output += bytes;
                return true;
            },
        .writeError = [this](const QByteArray &bytes) { errors += bytes; },
    };

    CommandHarness() = default;
    Q_DISABLE_COPY_MOVE(CommandHarness)

    ExitCode run(const QList<QByteArray> &words)
    {
        output.clear();
        errors.clear();
        prompts.clear();
        return runCommandLine(
            std::span(words.constData(), static_cast<std::size_t>(words.size())), environment);
    }
};

} // namespace orbitledge::testing
