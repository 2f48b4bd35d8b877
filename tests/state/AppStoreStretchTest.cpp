#include "model/RecordCodecs.h"
#include "platform/curl/CurlHttpSession.h"
#include "platform/linux/PosixFileStore.h"
#include "service/APIClient.h"
#include "service/SessionCredentialStore.h"
#include "support/FakeKeychain.h"
#include "support/FaultServer.h"
#include "support/NotificationDesk.h"
#include "support/StoreDesk.h"
#include "support/StretchWatch.h"
#include "support/TestMain.h"

using namespace orbitledge;
using namespace orbitledge::testing;
using namespace Qt::StringLiterals;

namespace {

constexpr int many = 10'000;

#if defined(ORBITLEDGE_COVERAGE)
constexpr double limit = 1000; // nothing is optimised
#elif defined(__SANITIZE_THREAD__) || defined(__SANITIZE_ADDRESS__)
constexpr double limit = 100;
#else
constexpr double limit = 16; // milliseconds: a frame
#endif

QByteArray listJson()
{
    QByteArray json = "[";
    for (int i = 0; i < many; ++i) {
        Subscription subscription = sampleSubscription(i);
        subscription.nextBillingDate
            = LocalDate::fromDaysSinceEpoch(LocalDate{2026, 3, 20}.daysSinceEpoch() + i % 300);
        json += (i == 0 ? "" : ",") + encodeJson(subscription);
    }
    return json + "]";
}

} // namespace

class AppStoreStretchTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void shouldNotHoldUpTheThreadWithALongList()
    {
        FaultServer server;
        const QByteArray list = listJson();
        server.answerWith([&list](const QByteArray &request) {
            return FaultServer::whole(
                200, request.startsWith("GET /auth/profile ") ? encodeJson(sampleProfile()) : list);
        });
        NotificationDesk notifications("2026-03-18T12:00:00Z");
        const QTemporaryDir folder;
        StoreDesk desk;
        const auto credentials = std::make_shared<SessionCredentialStore>(
            std::make_shared<FakeKeychain>(), u"service"_s, u"account"_s, u"label"_s);
        QVERIFY(QCoro::waitFor(credentials->save({u"abc"_s, at("2030-01-01T00:00:00Z")})));
        desk.client = std::make_shared<APIClient>(
            server.url(), std::make_shared<CurlHttpSession>("Test/1"), credentials, desk.clock);
        notifications.makeCenter();
        desk.notifications = std::shared_ptr<UserNotificationCenter>(std::move(notifications.center));
        desk.cache = std::make_shared<SnapshotCache>(
            folder.filePath(u"snapshot.json"_s).toStdString(), std::make_shared<PosixFileStore>());
        desk.settings->setNotificationsEnabled(true);
        AppStore &store = desk.make();
        qsizetype sections = 0;
        // As a view does it.
        connect(&store, &AppStore::changed, this, [&] { sections = store.timeline().sections.size(); });

        int refreshes = 0;
        const auto refresh = [&] {
            ++refreshes;
            QCoro::waitFor(store.refresh());
        };
        const double stretch = longestStretch(refresh, limit);
        // First: after many refreshes fewer are due at once than is said below.
        QVERIFY2(stretch < limit, QByteArray::number(stretch).constData());
        QCOMPARE(store.state().errorMessage, std::nullopt);
        QCOMPARE(store.state().subscriptions.size(), many);
        QVERIFY(sections > 0);
        QCOMPARE(store.state().notificationFailureMessage, std::nullopt);
        // Those that are due at once wait to be shown, and the next refresh plans as many others.
        QCOMPARE(store.state().notificationsSkippedOverBudget, many - 60 * refreshes);
        QCOMPARE(QCoro::waitFor(desk.notifications->pendingRequests())->size(), 60 * refreshes);
        QCOMPARE(QCoro::waitFor(desk.cache->load())->subscriptions.size(), many);
        desk.store.reset();
        desk.notifications.reset();
    }
};

ORBITLEDGE_TEST_MAIN(AppStoreStretchTest)
#include "AppStoreStretchTest.moc"
