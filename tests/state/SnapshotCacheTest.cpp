#include "state/SnapshotCache.h"

#include "platform/linux/PosixFileStore.h"
#include "support/FakeFileStore.h"
#include "support/SampleRecords.h"
#include "support/StretchWatch.h"
#include "support/TestMain.h"

#include <QCoroTask>

#include <sys/stat.h>

#include <ctime>

using namespace orbitledge;
using namespace orbitledge::testing;
using namespace Qt::StringLiterals;

namespace {

class FakeDirectories final : public UserDirectories {
public:
    std::optional<std::filesystem::path> dataFolder;

    std::optional<std::filesystem::path> data() const override { return dataFolder; }
    std::optional<std::filesystem::path> configuration() const override { return std::nullopt; }
    std::optional<std::filesystem::path> state() const override { return std::nullopt; }
    std::optional<std::filesystem::path> cache() const override { return std::nullopt; }
    std::filesystem::path temporary() const override { return "/temporary"; }
};

const std::filesystem::path location = "/data/snapshot.json";

} // namespace

class SnapshotCacheTest : public QObject {
    Q_OBJECT

private:
    std::shared_ptr<FakeFileStore> m_files;
    std::unique_ptr<SnapshotCache> m_cache;

    void put(const QByteArray &content) { QVERIFY(m_files->replace(location, content)); }

private Q_SLOTS:
    void init()
    {
        m_files = std::make_shared<FakeFileStore>();
        m_cache = std::make_unique<SnapshotCache>(location, m_files);
    }

    void shouldLiveInTheApplicationsFolderOfTheDataDirectory()
    {
        FakeDirectories directories;
        directories.dataFolder = "/home/ada/.local/share";
        QCOMPARE(SnapshotCache::defaultLocation(directories).string(),
            "/home/ada/.local/share/app.orbitledge.Orbitledge/subscription-snapshot-v1.json");
    }

    void shouldLiveInTheTemporaryFolderWhereThereIsNoOther()
    {
        QCOMPARE(SnapshotCache::defaultLocation(FakeDirectories()).string(),
            "/temporary/app.orbitledge.Orbitledge/subscription-snapshot-v1.json");
    }

    void shouldHaveNothingAndCreateNothingWithoutAFile()
    {
        QVERIFY(!QCoro::waitFor(m_cache->load()));
        QVERIFY(m_files->isEmpty());
        QCOMPARE(m_files->removals(), 0);
    }

    void shouldLoadWhatItSaved()
    {
        const CacheSnapshot snapshot = sampleSnapshot(5);
        QVERIFY(QCoro::waitFor(m_cache->save(snapshot)));
        const auto loaded = QCoro::waitFor(m_cache->load());
        QVERIFY(loaded);
        QVERIFY(*loaded == snapshot);
    }

    void shouldRemoveAFileThatItCannotUse_data()
    {
        QTest::addColumn<QByteArray>("content");
        QTest::newRow("version 2") << "{\"version\":2}"_ba;
        QTest::newRow("not JSON") << "not json"_ba;
        QTest::newRow("cut short") << encodeCacheSnapshot(sampleSnapshot(2)).chopped(1);
        QTest::newRow("empty") << ""_ba;
    }
    void shouldRemoveAFileThatItCannotUse()
    {
        QFETCH(QByteArray, content);
        put(content);
        QVERIFY(!QCoro::waitFor(m_cache->load()));
        QVERIFY(!m_files->exists(location));
    }

    void shouldRemoveAFileThatCannotBeRead()
    {
        put("{}");
        m_files->failReading({.kind = FileError::Kind::Other, .errorDescription = u"Input/output error"_s});
        QVERIFY(!QCoro::waitFor(m_cache->load()));
        QVERIFY(!m_files->exists(location));
    }

    void shouldHaveNothingAlsoWhereADamagedFileCannotBeRemoved()
    {
        put("damaged");
        m_files->failWriting({.kind = FileError::Kind::AccessDenied, .errorDescription = u"Read-only"_s});
        QVERIFY(!QCoro::waitFor(m_cache->load()));
    }

    void shouldReportAFailedSaveUnchanged()
    {
        const FileError full{
            .kind = FileError::Kind::NoSpace, .errorDescription = u"No space left on device"_s};
        m_files->failWriting(full);
        const auto saved = QCoro::waitFor(m_cache->save(sampleSnapshot(1)));
        QVERIFY(!saved);
        QCOMPARE(saved.error(), full);
    }

    void shouldReportAFailedClearUnchanged()
    {
        const FileError denied{.kind = FileError::Kind::AccessDenied, .errorDescription = u"Denied"_s};
        m_files->failWriting(denied);
        QCOMPARE(QCoro::waitFor(m_cache->clear()).error(), denied);
    }

    void shouldClearTwiceInARow()
    {
        QVERIFY(QCoro::waitFor(m_cache->save(sampleSnapshot(1))));
        QVERIFY(QCoro::waitFor(m_cache->clear()));
        QVERIFY(QCoro::waitFor(m_cache->clear()));
        QVERIFY(!m_files->exists(location));
    }

    void shouldRunOperationsInTheOrderOfTheCalls()
    {
        const auto last = sampleSnapshot(7);
        const auto use = [&]() -> QCoro::Task<bool> {
            auto first = m_cache->save(sampleSnapshot(400));
            auto cleared = m_cache->clear();
            auto second = m_cache->save(last);
            const auto loaded = co_await m_cache->load();
            co_return loaded && *loaded == last;
        };
        QVERIFY(QCoro::waitFor(use()));
    }

    void shouldFinishASaveWhenItIsDestroyed()
    {
        const auto snapshot = sampleSnapshot(50);
        const auto task = m_cache->save(snapshot);
        m_cache.reset();
        QVERIFY(m_files->exists(location));
        QVERIFY(*decodeCacheSnapshot(m_files->content(location)) == snapshot);
        QCoreApplication::processEvents();
    }

    void shouldCreateItsFolderAndKeepAllOfItPrivate()
    {
        const QTemporaryDir home;
        const std::filesystem::path folder = home.path().toStdString() + "/data/app";
        SnapshotCache cache(folder / "snapshot.json", std::make_shared<PosixFileStore>());
        QVERIFY(QCoro::waitFor(cache.save(sampleSnapshot(1))));

        struct stat status{};
        QVERIFY(::stat(folder.c_str(), &status) == 0);
        QCOMPARE(status.st_mode & 07777U, 0700U);
        QVERIFY(::stat((folder / "snapshot.json").c_str(), &status) == 0);
        QCOMPARE(status.st_mode & 07777U, 0600U);
    }

    void shouldNotHoldUpTheEventLoopWithALargeList()
    {
        const auto large = sampleSnapshot(20'000);
        const QTemporaryDir home;
        SnapshotCache cache(home.path().toStdString() + "/snapshot.json", std::make_shared<PosixFileStore>());
        const auto use = [&]() -> QCoro::Task<> {
            if (!co_await cache.save(large))
                qFatal("not saved");
            if (!co_await cache.load())
                qFatal("not loaded");
        };
        const StretchWatch watch;
        const std::clock_t before = std::clock();
        QCoro::waitFor(use());
        const double whole = 1000.0 * double(std::clock() - before) / CLOCKS_PER_SEC;
        // Either half of the work, done on this thread, would hold it for a good part of the whole.
        const double longest = watch.longestMilliseconds();
        QVERIFY(watch.count() > 0);
        QVERIFY2(longest < whole / 4 + 5, qPrintable(u"held for %1 ms of %2 ms"_s.arg(longest).arg(whole)));
    }
};

ORBITLEDGE_TEST_MAIN(SnapshotCacheTest)
#include "SnapshotCacheTest.moc"
