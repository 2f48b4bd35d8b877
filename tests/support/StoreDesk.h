#pragma once

#include "state/AppStore.h"
#include "support/FakeConnectivity.h"
#include "support/FakeFileStore.h"
#include "support/FakeIntervalTimer.h"
#include "support/FakeLoginItemService.h"
#include "support/FakeNotificationCenter.h"
#include "support/FakeReleaseChecker.h"
#include "support/FakeUserDefaults.h"
#include "support/FakeWallClockAlarm.h"
#include "support/FakeWorkspace.h"
#include "support/HeldAPIClient.h"
#include "support/SampleRecords.h"
#include "support/StoppedClock.h"
#include "support/Times.h"

#include <QAbstractEventDispatcher>

namespace orbitledge::testing {

/// Counts what this thread's event loop hands out.
class EventCount final : public QObject {
public:
    EventCount() { QCoreApplication::instance()->installEventFilter(this); }

    int count = 0;

    bool eventFilter(QObject * /*receiver*/, QEvent * /*event*/) override
    {
        ++count;
        return false;
    }
};

/// A store among fakes, all of which the test can reach.
struct StoreDesk {
    std::filesystem::path cacheFile = "/data/cache.json";
    std::shared_ptr<StoppedClock> clock = std::make_shared<StoppedClock>(at("2026-03-18T12:00:00Z"));
    std::shared_ptr<HeldAPIClient> api = std::make_shared<HeldAPIClient>();
    std::shared_ptr<FakeFileStore> files = std::make_shared<FakeFileStore>();
    std::shared_ptr<SnapshotCache> cache = std::make_shared<SnapshotCache>(cacheFile, files);
    std::shared_ptr<FakeNotificationCenter> center = std::make_shared<FakeNotificationCenter>();
    std::shared_ptr<FakeReleaseChecker> releases = std::make_shared<FakeReleaseChecker>();
    std::shared_ptr<FakeUserDefaults> defaults = std::make_shared<FakeUserDefaults>();
    std::shared_ptr<AppSettings> settings = std::make_shared<AppSettings>(defaults);
    std::shared_ptr<FakeLoginItemService> loginItem = std::make_shared<FakeLoginItemService>();
    std::shared_ptr<FakeWorkspace> workspace = std::make_shared<FakeWorkspace>();
    std::shared_ptr<FakeIntervalTimer> refreshTimer = std::make_shared<FakeIntervalTimer>();
    std::shared_ptr<FakeWallClockAlarm> dayAlarm = std::make_shared<FakeWallClockAlarm>(clock);
    std::shared_ptr<FakeConnectivity> connectivity = std::make_shared<FakeConnectivity>();
    /// What the store is given, where the test does not put others there.
    std::shared_ptr<APIClientProtocol> client = api;
    std::shared_ptr<UserNotificationCenter> notifications = center;
    QByteArray zone = "Europe/Berlin";
    std::function<Calendar()> calendar = [this] { return calendarIn(zone); };
    AppStore::Identity identity{.currentVersion = QStringLiteral("1.0.0"),
        .currentBuild = QStringLiteral("100"),
        .webURL = QUrl(QStringLiteral("https://example.com/app/"))};
    std::unique_ptr<AppStore> store;

    StoreDesk() = default;
    Q_DISABLE_COPY_MOVE(StoreDesk)

    /// What is under way ends first, as it would in a program that goes on.
    ~StoreDesk()
    {
        store.reset();
        api->isQuick = true;
        api->answerAll();
        releases->answerAll();
        center->decideAll();
        center->forgetNow();
        settle();
    }

    /// Until nothing moves by itself: neither here nor on the threads of the cache and of the planning.
    void settle() const
    {
        EventCount events;
        constexpr int eventsOfOneLoad = 1;
        while (true) {
            while (QAbstractEventDispatcher::instance()->processEvents(QEventLoop::AllEvents)) { }
            while (isPlanning())
                QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
            events.count = 0;
            (void)QCoro::waitFor(cache->load()); // behind what was asked of it before
            // Where something else came back meanwhile, it may have asked for more.
            if (events.count == eventsOfOneLoad && !isPlanning())
                return;
        }
    }

    /// Every planning that began, and could read what is pending, ends by writing what was shown.
    [[nodiscard]] bool isPlanning() const
    {
        return center->readings > defaults->writes.value(QStringLiteral("notifications.immediateLedger"));
    }

    AppStore &make()
    {
        const QUrl web = identity.webURL;
        store = std::make_unique<AppStore>(
            AppStore::Collaborators{
                .api = client,
                .cache = cache,
                .notifier = std::make_shared<RenewalNotifier>(notifications, defaults, web),
                .releaseChecker = releases,
                .settings = settings,
                .launchAtLogin = std::make_shared<LaunchAtLoginController>(loginItem),
                .workspace = workspace,
                .clock = clock,
                .calendar = calendar,
                .refreshTimer = refreshTimer,
                .dayAlarm = dayAlarm,
                .connectivity = connectivity,
            },
            identity);
        return *store;
    }

    /// A store that has data on display, and nothing under way.
    AppStore &makeSignedIn(int subscriptions = 3)
    {
        api->isQuick = true;
        api->profile = sampleProfile();
        api->subscriptions = sampleSnapshot(subscriptions).subscriptions;
        make();
        QCoro::waitFor(store->start());
        if (store->state().authState != AuthState::SignedIn)
            qFatal("the store is not signed in");
        api->isQuick = false;
        api->calls.clear();
        return *store;
    }

    void keepInCache(const CacheSnapshot &snapshot) const
    {
        (void)files->replace(cacheFile, encodeCacheSnapshot(snapshot));
    }

    [[nodiscard]] std::optional<CacheSnapshot> cached() const
    {
        if (!files->exists(cacheFile))
            return std::nullopt;
        auto snapshot = decodeCacheSnapshot(files->content(cacheFile));
        return snapshot ? std::optional(*snapshot) : std::nullopt;
    }
};

} // namespace orbitledge::testing
