#include "platform/linux/PosixFileStore.h"
#include "state/CacheSnapshot.h"
#include "support/SampleRecords.h"
#include "support/TestMain.h"

#include <QDir>
#include <QProcess>

#include <unistd.h>

#include <random>

using namespace orbitledge;
using namespace orbitledge::testing;
using namespace Qt::StringLiterals;

class SnapshotKillTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void shouldLeaveTheOldOrTheNewSnapshotWholeWhereverItIsKilled()
    {
        const CacheSnapshot small = sampleSnapshot(150);
        const CacheSnapshot large = sampleSnapshot(400);
        const QTemporaryDir home;
        const QString folder = home.path() + u"/data"_s;
        const QString path = folder + u"/snapshot.json"_s;
        const auto seed = std::random_device()();
        std::mt19937 random(seed);
        qInfo("seed %u", seed);

        PosixFileStore files;
        constexpr int kills = 200;
        int leftSmall = 0;
        int leftLarge = 0;
        int leftUnfinished = 0;
        for (int i = 0; i < kills; ++i) {
            QProcess writer;
            writer.start(QStringLiteral(ORBITLEDGE_SNAPSHOT_WRITER), {path});
            QVERIFY(writer.waitForReadyRead());
            // Anywhere in the next two rounds, however fast this machine and this build are.
            const auto round = writer.readLine().trimmed().toUInt();
            QVERIFY(round > 0);
            ::usleep(std::uniform_int_distribution<useconds_t>(0, 2 * round)(random));
            writer.kill();
            QVERIFY(writer.waitForFinished());
            QCOMPARE(writer.exitStatus(), QProcess::CrashExit);

            auto content = files.read(path.toStdString());
            QVERIFY(content);
            const auto snapshot = decodeCacheSnapshot(*std::move(content));
            QVERIFY(snapshot);
            QVERIFY(*snapshot == small || *snapshot == large);
            ++(*snapshot == small ? leftSmall : leftLarge);

            const QStringList left = QDir(folder).entryList(QDir::Files | QDir::Hidden, QDir::Name);
            QVERIFY2(left.size() <= 2, "what interrupted writers leave must not pile up");
            if (left.size() == 2)
                ++leftUnfinished;
        }
        qInfo(
            "%d small, %d large, %d with an unfinished file beside it", leftSmall, leftLarge, leftUnfinished);
        QVERIFY2(
            leftSmall > 0 && leftLarge > 0 && leftUnfinished > 0, "the kills did not fall where they should");
    }
};

ORBITLEDGE_TEST_MAIN(SnapshotKillTest)
#include "SnapshotKillTest.moc"
