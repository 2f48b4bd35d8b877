#pragma once

#include "cli/CommandLine.h"
#include "service/SessionCredentialStore.h"
#include "state/StoreSession.h"
#include "support/FakeAPIClient.h"
#include "support/FakeConnectivity.h"
#include "support/FakeFileStore.h"
#include "support/FakeIntervalTimer.h"
#include "support/FakeKeychain.h"
#include "support/FakeLoginItemService.h"
#include "support/FakeNotificationCenter.h"
#include "support/FakeReleaseChecker.h"
#include "support/FakeUserDefaults.h"
#include "support/FakeWallClockAlarm.h"
#include "support/FakeWorkspace.h"
#include "support/StoppedClock.h"
#include "support/Times.h"

#include <QHash>

#include <optional>
#include <vector>

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
    std::shared_ptr<FakeNotificationCenter> center = std::make_shared<FakeNotificationCenter>();
    QHash<QByteArray, QByteArray> variables{{"LANG", "en_US.UTF-8"}};
    /// What is typed, or piped in; a reason where that fails.
    tl::expected<QByteArray, QString> password = QByteArray();
    /// Why nobody can be asked to do something about the session.
    std::optional<QString> noSession;

    /// How showing what is due ends.
    NotificationDelivery delivery = NotificationDelivery::Done;

    /// What is found of the machine and the desktop.
    Findings findings;

    /// With what the program with windows was started; absent where it was not.
    std::optional<std::vector<QByteArray>> desktopArguments;

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
        .performSession = [this](SessionRequest request) -> tl::expected<SessionOutcome, QString> {
            if (noSession)
                return tl::make_unexpected(*noSession);
            StoreSession session(makeStore());
            return QCoro::waitFor(session.perform(std::move(request)));
        },
        .deliverReminders = [this] { return delivery; },
        .lookAround = [this] { return findings; },
        .becomeDesktop =
            [this](const std::vector<QByteArray> &arguments) {
                desktopArguments = arguments;
                return QStringLiteral("/usr/libexec/orbitledge-desktop: No such file or directory");
            },
        .writeOutput =
            [this](const QByteArray &bytes) {
                output += bytes;
                return true;
            },
        .writeError = [this](const QByteArray &bytes) { errors += bytes; },
    };

    CommandHarness() = default;
    Q_DISABLE_COPY_MOVE(CommandHarness)

    StoreSession::Parts makeStore()
    {
        const QUrl web(QStringLiteral("https://example.com/app/"));
        auto cache = std::make_shared<SnapshotCache>(cacheFile, files);
        auto notifier = std::make_shared<RenewalNotifier>(center, defaults, web);
        auto store = std::make_shared<AppStore>(
            AppStore::Collaborators{
                .api = client,
                .cache = cache,
                .notifier = notifier,
                .releaseChecker = std::make_shared<FakeReleaseChecker>(),
                .settings = std::make_shared<AppSettings>(defaults),
                .launchAtLogin
                = std::make_shared<LaunchAtLoginController>(std::make_shared<FakeLoginItemService>()),
                .workspace = std::make_shared<FakeWorkspace>(),
                .clock = clock,
                .calendar = [] { return calendarIn("Europe/Berlin"); },
                .refreshTimer = std::make_shared<FakeIntervalTimer>(),
                .dayAlarm = std::make_shared<FakeWallClockAlarm>(clock),
                .connectivity = std::make_shared<FakeConnectivity>(),
            },
            AppStore::Identity{.currentVersion = {}, .currentBuild = {}, .webURL = web});
        return {std::move(store), std::move(cache), std::move(notifier), credentials, cacheFile};
    }

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
