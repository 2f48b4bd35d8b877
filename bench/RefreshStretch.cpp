// Measures for how long a refresh of a long list keeps the user-interface thread from its event loop, in any
// one stretch, with everything that a refresh does: the keyring, two requests to the demo service, decoding,
// showing it and building the timeline, saving, and bringing the reminders in step; and a start, which shows
// what was saved before. Prints the longest stretch and the time of a whole refresh, in milliseconds, of the
// worst of some refreshes and the start. Needs a session bus with a keyring: scripts/with-desktop makes one.
//
//   bench_refresh DEMO_SERVICE SUBSCRIPTIONS

#include "BuildInfo.h"
#include "platform/curl/CurlHttpSession.h"
#include "platform/linux/PosixFileStore.h"
#include "platform/linux/SettingsFile.h"
#include "platform/linux/SystemClock.h"
#include "platform/linux/keychain/DesktopKeychain.h"
#include "platform/linux/notifications/DesktopNotificationCenter.h"
#include "service/APIClient.h"
#include "service/SessionCredentialStore.h"
#include "state/AppStore.h"
#include "support/FakeConnectivity.h"
#include "support/FakeIntervalTimer.h"
#include "support/FakeLoginItemService.h"
#include "support/FakeReleaseChecker.h"
#include "support/FakeWallClockAlarm.h"
#include "support/FakeWorkspace.h"
#include "support/NotificationDesk.h"
#include "support/StretchWatch.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QProcess>
#include <QTemporaryDir>

#include <algorithm>
#include <cstdio>

using namespace orbitledge;
using namespace Qt::StringLiterals;

namespace {

/// The demo service in a process of its own.
class Service {
public:
    Service(const QString &program, const QString &folder, const QString &subscriptions)
    {
        m_process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        m_process.start(program, {u"--port"_s, u"0"_s, u"--data"_s, folder, u"--populate"_s, subscriptions});
        while (!m_process.canReadLine()) {
            if (!m_process.waitForReadyRead())
                qFatal("the demo service did not start");
        }
        const QByteArray announcement = m_process.readLine().trimmed();
        m_address = QUrl(QString::fromLatin1(announcement.mid(qsizetype(std::strlen("Listening on ")))));
    }
    ~Service()
    {
        m_process.terminate();
        m_process.waitForFinished();
    }
    Q_DISABLE_COPY_MOVE(Service)

    [[nodiscard]] const QUrl &address() const { return m_address; }

private:
    QProcess m_process;
    QUrl m_address;
};

/// Real where a refresh goes through it; what it does not ask for is not there.
class Program {
public:
    Program(const QUrl &address, const QTemporaryDir &folder)
    {
        const auto clock = std::make_shared<SystemClock>();
        const auto files = std::make_shared<PosixFileStore>();
        const auto defaults
            = std::make_shared<SettingsFile>(folder.filePath(u"settings/settings.json"_s).toStdString());
        const auto alarm = std::make_shared<testing::FakeWallClockAlarm>(
            std::make_shared<testing::StoppedClock>(clock->now()));
        const auto center = std::make_shared<DesktopNotificationCenter>(DesktopNotificationCenter::Parts{
            .file = folder.filePath(u"state/reminders.json"_s).toStdString(),
            .files = files,
            .clock = clock,
            .timeZone = TimeZone::system,
            .alarm = alarm,
            .display = std::make_shared<testing::FakeNotificationDisplay>(),
            .switches = std::make_shared<testing::FakeNotificationSwitches>(),
            .unattended = std::make_shared<testing::FakeUnattendedDelivery>(),
        });
        auto api = std::make_shared<APIClient>(address, std::make_shared<CurlHttpSession>("Bench/1"),
            std::make_shared<SessionCredentialStore>(std::make_shared<DesktopKeychain>(),
                QString::fromLatin1(build::applicationId), u"benchmark"_s, u"Orbitledge benchmark"_s),
            clock);
        auto settings = std::make_shared<AppSettings>(defaults);
        settings->setNotificationsEnabled(true);
        settings->setNotificationLeadDays(1);
        const QUrl web(u"https://example.com/"_s);
        m_store = std::make_unique<AppStore>(
            AppStore::Collaborators{
                .api = api,
                .cache = std::make_shared<SnapshotCache>(
                    folder.filePath(u"cache/snapshot.json"_s).toStdString(), files),
                .notifier = std::make_shared<RenewalNotifier>(center, defaults, web),
                .releaseChecker = std::make_shared<testing::FakeReleaseChecker>(),
                .settings = settings,
                .launchAtLogin = std::make_shared<LaunchAtLoginController>(
                    std::make_shared<testing::FakeLoginItemService>()),
                .workspace = std::make_shared<testing::FakeWorkspace>(),
                .clock = clock,
                .calendar = [calendar = testing::calendarIn("Europe/Berlin")] { return calendar; },
                .refreshTimer = std::make_shared<testing::FakeIntervalTimer>(),
                .dayAlarm = alarm,
                .connectivity = std::make_shared<testing::FakeConnectivity>(),
            },
            AppStore::Identity{.currentVersion = std::nullopt, .currentBuild = {}, .webURL = web});
        // As a view does it.
        QObject::connect(m_store.get(), &AppStore::changed, m_store.get(),
            [this] { m_shownSections = m_store->timeline().sections.size(); });
    }

    [[nodiscard]] AppStore &store() const { return *m_store; }

    /// Fetched, shown, saved and planned.
    [[nodiscard]] bool isInStep(qsizetype subscriptions) const
    {
        const AppState &state = m_store->state();
        return state.authState == AuthState::SignedIn && state.refreshState == RefreshState::Idle
            && !state.errorMessage && state.subscriptions.size() >= subscriptions && m_shownSections > 0
            && !state.notificationFailureMessage
            && (state.notificationsSkippedOverBudget > 0 || subscriptions < moreThanRemindersFor);
    }

private:
    /// So many have more renewals within a month than reminders are planned.
    static constexpr qsizetype moreThanRemindersFor = 1000;

    std::unique_ptr<AppStore> m_store;
    qsizetype m_shownSections = 0;
};

} // namespace

int main(int argc, char **argv)
{
    if (argc != 3) {
        std::fputs("usage: bench_refresh DEMO_SERVICE SUBSCRIPTIONS\n", stderr);
        return 2;
    }
    const QCoreApplication application(argc, argv);
    const QTemporaryDir folder;
    const Service service(
        QString::fromLocal8Bit(argv[1]), folder.filePath(u"service"_s), QString::fromLocal8Bit(argv[2]));
    auto program = std::make_unique<Program>(service.address(), folder);
    const auto signedIn = QCoro::waitFor(program->store().signIn(u"ada@example.com"_s, u"orbit-ledger"_s));
    if (!signedIn) {
        std::fprintf(stderr, "%s\n", qUtf8Printable(signedIn.error().errorDescription()));
        return 1;
    }

    constexpr int refreshes = 10;
    const qsizetype subscriptions = QByteArray(argv[2]).toInt();
    double longestStretch = 0;
    double longestRefresh = 0;
    for (int i = 0; i <= refreshes; ++i) {
        const bool isStart = i == refreshes;
        if (isStart)
            program = std::make_unique<Program>(service.address(), folder);
        AppStore &store = program->store();
        const testing::StretchWatch watch;
        QElapsedTimer timer;
        timer.start();
        // From the event loop, as the program's timer and button start it.
        const auto run = [&]() -> QCoro::Task<> {
            auto task = isStart ? store.start() : store.refresh();
            co_await task;
        };
        QCoro::waitFor(run());
        if (!program->isInStep(subscriptions) || watch.count() == 0) {
            std::fprintf(stderr, "the refresh failed: %s\n",
                qUtf8Printable(store.state().errorMessage.value_or(u"not everything is in step"_s)));
            return 1;
        }
        longestStretch = std::max(longestStretch, watch.longestMilliseconds());
        longestRefresh = std::max(longestRefresh, double(timer.nsecsElapsed()) / 1e6);
    }
    QCoro::waitFor(program->store().signOut());
    std::printf("%.3f %.3f\n", longestStretch, longestRefresh);
    return 0;
}
