#include "platform/curl/BodyDecoder.h"

#include "support/Gzip.h"
#include "support/TestMain.h"

using namespace orbitledge;
using namespace orbitledge::testing;
using namespace Qt::StringLiterals;

using Kind = TransportFailure::Kind;

namespace {

using Result = tl::expected<QByteArray, TransportFailure>;

constexpr qint64 generous = 1 << 20;

Result decoded(QByteArrayView coding, QByteArrayView input, qsizetype pieceSize, qint64 largest = generous)
{
    BodyDecoder decoder(largest);
    if (const auto failure = decoder.setCoding(coding))
        return tl::make_unexpected(*failure);
    while (!input.isEmpty()) {
        const QByteArrayView piece = input.first(std::min(pieceSize, input.size()));
        if (const auto failure = decoder.add(piece))
            return tl::make_unexpected(*failure);
        input = input.sliced(piece.size());
    }
    return decoder.finish();
}

/// Hard to pack, and the same everywhere.
QByteArray noise(qsizetype size)
{
    QByteArray bytes(size, Qt::Uninitialized);
    quint32 state = 1;
    for (char &byte : bytes) {
        state = state * 1664525 + 1013904223;
        byte = static_cast<char>(state >> 24);
    }
    return bytes;
}

} // namespace

class BodyDecoderTest : public QObject {
    Q_OBJECT

private:
    const QByteArray m_json = "{\"a\":[1,2,3]}";

private Q_SLOTS:
    void shouldDecodeWhateverThePieces_data()
    {
        QTest::addColumn<QByteArray>("coding");
        QTest::addColumn<QByteArray>("sent");
        QTest::addColumn<QByteArray>("body");
        const auto row
            = [](const char *name, const char *coding, const QByteArray &sent, const QByteArray &body) {
                  QTest::newRow(name) << QByteArray(coding) << sent << body;
              };
        // More than the decoder writes at once, and exactly as much.
        constexpr qsizetype buffer = qsizetype{64} << 10;
        const QByteArray large = noise(3 * buffer + 1);
        const QByteArray full = noise(buffer);
        const QByteArray zeros(buffer, '\0');
        const QByteArray none = gzip({});

        row("no coding", "", m_json, m_json);
        row("identity", "Identity", m_json, m_json);
        row("gzip", "gzip", gzip(m_json), m_json);
        row("its old name, blanks around", "\tX-GZIP ", gzip(m_json), m_json);
        row("one byte", "gzip", gzip("x"), "x");
        row("nothing at all", "", {}, {});
        row("an empty member", "gzip", none, {});
        row("empty members only", "gzip", none + none + none, {});
        row("empty members around", "gzip", none + gzip(m_json) + none, m_json);
        row("three members", "gzip", gzip("{\"a\"") + gzip(":[1,2") + gzip(",3]}"), m_json);
        row("several buffers", "gzip", gzip(large), large);
        row("one full buffer", "gzip", gzip(full), full);
        row("one full buffer of few bytes", "gzip", gzip(zeros), zeros);
        row("full buffers in two members", "gzip", gzip(full) + gzip(zeros), full + zeros);
    }
    void shouldDecodeWhateverThePieces()
    {
        QFETCH(QByteArray, coding);
        QFETCH(QByteArray, sent);
        QFETCH(QByteArray, body);
        for (const qsizetype pieceSize : {qsizetype{1}, qsizetype{7}, qsizetype{4096}, qsizetype{1} << 20}) {
            const Result result = decoded(coding, sent, pieceSize);
            QVERIFY(result);
            QCOMPARE(*result, body);
            QVERIFY(result->capacity() >= body.size() + 64);
        }
    }

    void shouldTakeNoByteMoreThanTheLargestBody_data()
    {
        QTest::addColumn<QByteArray>("coding");
        QTest::addColumn<QByteArray>("sent");
        QTest::addColumn<qint64>("size");
        const auto row = [](const char *name, const char *coding, const QByteArray &sent, qint64 size) {
            QTest::newRow(name) << QByteArray(coding) << sent << size;
        };
        row("no coding", "", m_json, m_json.size());
        row("gzip", "gzip", gzip(m_json), m_json.size());
        row("several members", "gzip", gzip(m_json) + gzip({}) + gzip(m_json), 2 * m_json.size());
        row("a thousand times larger than it travels", "gzip", gzip(QByteArray(200'000, '\0')), 200'000);
        row("one byte", "gzip", gzip("x"), 1);
    }
    void shouldTakeNoByteMoreThanTheLargestBody()
    {
        QFETCH(QByteArray, coding);
        QFETCH(QByteArray, sent);
        QFETCH(qint64, size);
        for (const qsizetype pieceSize : {qsizetype{1}, qsizetype{7}, qsizetype{1} << 20}) {
            const Result largest = decoded(coding, sent, pieceSize, size);
            QVERIFY(largest);
            QCOMPARE(largest->size(), size);
            const Result tooLarge = decoded(coding, sent, pieceSize, size - 1);
            QVERIFY(!tooLarge);
            QCOMPARE(tooLarge.error().kind, Kind::TooLarge);
        }
    }

    void shouldTakeAnEmptyBodyWhereNoneIsAllowed()
    {
        QVERIFY(decoded("", {}, 1, 0));
        QVERIFY(decoded("gzip", gzip({}), 1, 0));
    }

    void shouldRefuseWhatIsNoGzip_data()
    {
        QTest::addColumn<QByteArray>("sent");
        const auto row = [](const char *name, const QByteArray &sent) { QTest::newRow(name) << sent; };
        const QByteArray packed = gzip(noise(2000));
        const auto changed = [&packed](qsizetype at) {
            QByteArray bytes = packed;
            bytes[at] = static_cast<char>(bytes.at(at) ^ 0x55);
            return bytes;
        };
        row("plain text", m_json);
        row("zeros", QByteArray(100, '\0'));
        row("half of the magic number", "\x1f");
        row("the magic number alone", "\x1f\x8b");
        row("another method of compression", changed(2));
        row("flags that nobody knows", changed(3));
        row("changed in the middle", changed(packed.size() / 2));
        row("a wrong sum", changed(packed.size() - 8));
        row("a wrong length", changed(packed.size() - 4));
        row("the last byte missing", packed.chopped(1));
        row("a member that is cut behind a whole one", packed + packed.first(5));
        row("text behind a whole member", packed + m_json);
        row("a zero behind a whole member", packed + QByteArray(1, '\0'));
        row("a line break behind a whole member", packed + "\r\n");
        // A stream of zlib's own format (RFC 1950), for which some take "deflate".
        row("another format", QByteArray::fromHex("789c4b04000062006200"));
    }
    void shouldRefuseWhatIsNoGzip()
    {
        QFETCH(QByteArray, sent);
        for (const qsizetype pieceSize : {qsizetype{1}, qsizetype{7}, qsizetype{1} << 20}) {
            const Result result = decoded("gzip", sent, pieceSize);
            QVERIFY(!result);
            QCOMPARE(result.error().kind, Kind::BadAnswer);
        }
    }

    void shouldRefuseAStreamThatIsCutAnywhere()
    {
        const QByteArray packed = gzip(m_json);
        for (qsizetype size = 1; size < packed.size(); ++size)
            QVERIFY2(!decoded("gzip", packed.first(size), 3), QByteArray::number(size).constData());
    }

    void shouldNameTheSameFaultWhateverThePieces()
    {
        // Larger than allowed first, broken after that.
        QByteArray sent = gzip(noise(2000));
        sent.chop(8);
        sent += QByteArray(8, '\0');
        for (const qsizetype pieceSize : {qsizetype{1}, qsizetype{1} << 20}) {
            const Result result = decoded("gzip", sent, pieceSize, 1000);
            QVERIFY(!result);
            QCOMPARE(result.error().kind, Kind::TooLarge);
        }
    }

    void shouldRefuseCodingsThatNobodyAskedFor_data()
    {
        QTest::addColumn<QByteArray>("coding");
        for (const char *coding : {"deflate", "br", "zstd", "compress", "gzip, gzip", "identity, gzip",
                 "gzip;q=1", "gzi", "gzipp", ",", "\xff"})
            QTest::newRow(coding) << QByteArray(coding);
    }
    void shouldRefuseCodingsThatNobodyAskedFor()
    {
        QFETCH(QByteArray, coding);
        BodyDecoder decoder(generous);
        const auto failure = decoder.setCoding(coding);
        QVERIFY(failure);
        QCOMPARE(failure->kind, Kind::BadAnswer);
    }
};

ORBITLEDGE_TEST_MAIN(BodyDecoderTest)
#include "BodyDecoderTest.moc"
