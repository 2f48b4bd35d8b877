#include "platform/linux/PosixFileStore.h"
#include "state/AppStore.h"
#include "support/StoreDesk.h"
#include "support/TestMain.h"

#include <QRandomGenerator>
#include <QTemporaryDir>

using namespace orbitledge;
using namespace orbitledge::testing;
using namespace Qt::StringLiterals;

namespace {

/// Long enough for saving and planning to take a moment.
constexpr int many = 1000;

CacheSnapshot snapshotOf(int account, int subscriptions)
{
    CacheSnapshot snapshot = sampleSnapshot(subscriptions);
    snapshot.profile.id = QUuid(static_cast<uint>(account), 1, 2, 3, 4, 5, 6, 7, 8, 9, 10);
    for (Subscription &subscription : snapshot.subscriptions)
        subscription.name = QString::number(account);
    return snapshot;
}

/// A store whose file and threads are real.
struct Workshop {
    QTemporaryDir folder;
    std::filesystem::path file = folder.filePath(u"data/snapshot.json"_s).toStdString();
    std::shared_ptr<PosixFileStore> files = std::make_shared<PosixFileStore>();
    StoreDesk desk;

    Workshop()
    {
        renewCache();
        desk.api->isQuick = true;
        desk.settings->setNotificationsEnabled(true);
    }

    /// The one before ends with the last that uses it.
    void renewCache() { desk.cache = std::make_shared<SnapshotCache>(file, files); }

    void serve(const CacheSnapshot &snapshot) const
    {
        desk.api->profile = snapshot.profile;
        desk.api->subscriptions = snapshot.subscriptions;
    }

    [[nodiscard]] std::optional<CacheSnapshot> saved() const
    {
        const auto content = files->read(file);
        if (!content)
            return std::nullopt;
        auto snapshot = decodeCacheSnapshot(*content);
        if (!snapshot)
            qFatal("the file is damaged");
        return *std::move(snapshot);
    }
};

} // namespace

class AppStoreThreadsTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void shouldShowSaveAndPlanWithThreadsOfTheirOwn()
    {
        Workshop workshop;
        const CacheSnapshot before = snapshotOf(1, many);
        QVERIFY(workshop.files->replace(workshop.file, encodeCacheSnapshot(before)));
        CacheSnapshot after = snapshotOf(1, many + 1);
        after.fetchedAt = workshop.desk.clock->now();
        workshop.serve(after);
        workshop.desk.api->isQuick = false;
        AppStore &store = workshop.desk.make();
        auto starting = store.start();
        QTRY_COMPARE(store.state().refreshState, RefreshState::Refreshing);
        QCOMPARE(store.state().subscriptions, before.subscriptions);
        workshop.desk.api->answerAll();
        QCoro::waitFor(std::move(starting));
        QCOMPARE(store.state().subscriptions, after.subscriptions);
        QVERIFY(workshop.saved() == after);
        QCOMPARE(workshop.desk.center->requests.size(), 60);
        QCOMPARE(store.state().notificationsSkippedOverBudget, many + 1 - 60);
    }

    void shouldBeDestroyedWhileItsThreadsAreAtWork_data()
    {
        QTest::addColumn<quint32>("seed");
        QTest::addColumn<bool>("takesItsPartsAlong");
        QRandomGenerator *const random = QRandomGenerator::system();
        for (int i = 0; i < 30; ++i) {
            const quint32 seed = random->generate();
            QTest::addRow("%u", seed) << seed << (seed % 2 == 0);
        }
    }

    void shouldBeDestroyedWhileItsThreadsAreAtWork()
    {
        QFETCH(const quint32, seed);
        QFETCH(const bool, takesItsPartsAlong);
        QRandomGenerator random(seed);
        Workshop workshop;
        const CacheSnapshot before = snapshotOf(1, many);
        QVERIFY(workshop.files->replace(workshop.file, encodeCacheSnapshot(before)));
        CacheSnapshot after = snapshotOf(1, many + 1);
        after.fetchedAt = workshop.desk.clock->now();
        workshop.serve(after);
        AppStore &store = workshop.desk.make();
        std::vector<QCoro::Task<>> tasks;
        tasks.push_back(store.start());
        const bool isSigningOut = random.bounded(3) == 0;
        // Each round lets one of the threads hand something over, or none.
        const int rounds = random.bounded(6);
        for (int round = 0; round < rounds; ++round) {
            QCoreApplication::processEvents(
                random.bounded(2) == 0 ? QEventLoop::AllEvents : QEventLoop::WaitForMoreEvents);
            if (round == rounds / 2) {
                tasks.push_back(store.synchroniseReminders());
                tasks.push_back(store.refresh());
            }
        }
        if (isSigningOut)
            tasks.push_back(store.signOut());

        int announcements = 0;
        connect(&store, &AppStore::changed, this, [&announcements] { ++announcements; });
        connect(&store, &AppStore::aboutToChange, this, [&announcements] { ++announcements; });
        workshop.desk.store.reset();
        if (takesItsPartsAlong)
            workshop.renewCache();
        for (QCoro::Task<> &task : tasks)
            QCoro::waitFor(std::move(task));
        workshop.desk.settle();
        QCOMPARE(announcements, 0);
        const auto saved = workshop.saved();
        if (isSigningOut)
            QVERIFY(!saved);
        else
            QVERIFY(saved == before || saved == after);
    }
};

ORBITLEDGE_TEST_MAIN(AppStoreThreadsTest)
#include "AppStoreThreadsTest.moc"
