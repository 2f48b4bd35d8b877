#include "state/CacheSnapshot.h"

#include "support/Printing.h"
#include "support/SampleRecords.h"
#include "support/TestMain.h"

#include <QFile>

using namespace orbitledge;
using namespace orbitledge::testing;
using namespace Qt::StringLiterals;

class CacheSnapshotTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void shouldWriteItsKeysSortedAndWithoutWhiteSpace()
    {
        CacheSnapshot snapshot = sampleSnapshot(1);
        snapshot.subscriptions[0].categoryName = u"A \"quoted\" name"_s;
        QFile expected(QStringLiteral(ORBITLEDGE_TEST_DATA "/state/snapshot-of-one.json"));
        QVERIFY(expected.open(QFile::ReadOnly));
        QCOMPARE(encodeCacheSnapshot(snapshot), expected.readAll().trimmed());
    }

    void shouldReadBackWhatItWrote()
    {
        const CacheSnapshot snapshot = sampleSnapshot(25);
        const auto read = decodeCacheSnapshot(encodeCacheSnapshot(snapshot));
        QVERIFY(read);
        QVERIFY(*read == snapshot);
    }

    void shouldRoundInstantsDownToTheSecondAlsoBefore1970()
    {
        CacheSnapshot snapshot = sampleSnapshot(0);
        snapshot.fetchedAt = Instant::fromMillisecondsSinceEpoch(-1);
        const auto read = decodeCacheSnapshot(encodeCacheSnapshot(snapshot));
        QVERIFY(read);
        QCOMPARE(read->fetchedAt, Instant::fromMillisecondsSinceEpoch(-1000));
    }

    void shouldNameThePlaceAndTheReasonOfAFault_data()
    {
        QTest::addColumn<QByteArray>("from");
        QTest::addColumn<QByteArray>("to");
        QTest::addColumn<DecodingError::Kind>("kind");
        QTest::addColumn<QString>("path");
        QTest::addColumn<QString>("reason");
        using Kind = DecodingError::Kind;
        QTest::newRow("another version")
            << "\"version\":1"_ba << "\"version\":2"_ba << Kind::DataCorrupted << u"version"_s
            << u"Version 2 of the file format is not supported, only version 1 is"_s;
        QTest::newRow("version as text") << "\"version\":1"_ba << "\"version\":\"1\""_ba << Kind::TypeMismatch
                                         << u"version"_s << u"Expected a number but found a string"_s;
        QTest::newRow("no profile") << "\"profile\":"_ba << "\"profil\":"_ba << Kind::KeyNotFound
                                    << u"profile"_s << u"The key \"profile\" is missing"_s;
        QTest::newRow("no cost in the second subscription")
            << "\"cost\":2,"_ba << ""_ba << Kind::KeyNotFound << u"subscriptions[1].cost"_s
            << u"The key \"cost\" is missing"_s;
        QTest::newRow("a bad timestamp is quoted")
            << "2026-03-18T09:00:00Z"_ba << "2026-03-18 09:00"_ba << Kind::DataCorrupted << u"fetchedAt"_s
            << u"Expected an ISO-8601 timestamp, got \"2026-03-18 09:00\""_s;
        QTest::newRow("a bad timestamp inside a record is quoted too")
            << "2025-11-05T08:15:30Z"_ba << "yesterday"_ba << Kind::DataCorrupted << u"profile.created_at"_s
            << u"Expected an ISO-8601 timestamp, got \"yesterday\""_s;
    }
    void shouldNameThePlaceAndTheReasonOfAFault()
    {
        QFETCH(QByteArray, from);
        QFETCH(QByteArray, to);
        QFETCH(DecodingError::Kind, kind);
        QFETCH(QString, path);
        QFETCH(QString, reason);
        CacheSnapshot snapshot = sampleSnapshot(3);
        snapshot.subscriptions[1].cost = Decimal(2);
        QByteArray json = encodeCacheSnapshot(snapshot);
        const auto at = json.indexOf(from);
        QVERIFY(at >= 0);
        json.replace(at, from.size(), to);

        const auto read = decodeCacheSnapshot(json);
        QVERIFY(!read);
        QCOMPARE(read.error().kind, kind);
        QCOMPARE(read.error().pathText(), path);
        QCOMPARE(read.error().debugDescription, reason);
    }

    void shouldComplainAboutTheVersionBeforeAnythingElse()
    {
        const auto read = decodeCacheSnapshot("{\"profile\":7,\"version\":2}");
        QVERIFY(!read);
        QCOMPARE(read.error().pathText(), u"version"_s);
    }
};

ORBITLEDGE_TEST_MAIN(CacheSnapshotTest)
#include "CacheSnapshotTest.moc"
