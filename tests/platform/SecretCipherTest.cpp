#include "platform/linux/keychain/SecretCipher.h"

#include "support/TestMain.h"

using namespace orbitledge;

namespace {

/// Two sides that know each other.
struct Pair {
    Pair()
        : ours(*SecretCipher::make())
        , theirs(*SecretCipher::make())
    {
        if (!ours.agree(theirs.publicKey()) || !theirs.agree(ours.publicKey()))
            qFatal("no agreement");
    }

    SecretCipher ours;
    SecretCipher theirs;
};

} // namespace

class SecretCipherTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void shouldBeOpenedByTheOtherSide()
    {
        // Often enough for keys that begin with zeros.
        for (int i = 0; i < 600; ++i) {
            const Pair pair;
            QCOMPARE(pair.ours.publicKey().size(), 128);
            const auto sealed = pair.ours.seal("secret");
            QVERIFY(sealed);
            QCOMPARE(pair.theirs.open(*sealed), QByteArray("secret"));
        }
    }

    void shouldSealAnyLength()
    {
        const Pair pair;
        for (int length = 0; length < 70; ++length) {
            const QByteArray secret(length, '\x10'); // which looks like padding
            const auto sealed = pair.ours.seal(secret);
            QVERIFY(sealed && !sealed->value.contains("\x10\x10\x10\x10"));
            QCOMPARE(sealed->value.size(), (length / 16 + 1) * 16);
            QCOMPARE(pair.theirs.open(*sealed), secret);
        }
    }

    void shouldNeverSealTwiceInTheSameWay()
    {
        const Pair pair;
        const auto first = pair.ours.seal("secret");
        const auto second = pair.ours.seal("secret");
        QVERIFY(first && second);
        QVERIFY(first->parameters != second->parameters && first->value != second->value);
    }

    void shouldRefuseAKeyThatIsNone_data()
    {
        QTest::addColumn<QByteArray>("key");
        const QByteArray prime
            = QByteArray::fromHex("FFFFFFFFFFFFFFFFC90FDAA22168C234C4C6628B80DC1CD129024E088A67CC74"
                                  "020BBEA63B139B22514A08798E3404DDEF9519B3CD3A431B302B0A6DF25F1437"
                                  "4FE1356D6D51C245E485B576625E7EC6F44C42E9A637ED6B0BFF5CB6F406B7ED"
                                  "EE386BFB5A899FA5AE9F24117C4B1FE649286651ECE65381FFFFFFFFFFFFFFFF");
        QByteArray oneLess = prime;
        oneLess.back() = '\xfe';
        QTest::newRow("none") << QByteArray();
        QTest::newRow("zero") << QByteArray(128, '\0');
        QTest::newRow("one") << QByteArray(127, '\0') + '\1';
        QTest::newRow("one less than the prime") << oneLess;
        QTest::newRow("the prime") << prime;
        QTest::newRow("too long") << QByteArray(129, '\x55');
    }

    void shouldRefuseAKeyThatIsNone()
    {
        QFETCH(QByteArray, key);
        auto cipher = SecretCipher::make();
        QVERIFY(cipher);
        QVERIFY(!cipher->agree(key));
        QVERIFY(!cipher->seal("secret"));
        QVERIFY(!cipher->open({.parameters = QByteArray(16, 'x'), .value = QByteArray(16, 'x')}));
    }

    void shouldRefuseWhatWasNotSealedSo()
    {
        const Pair pair;
        const auto sealed = pair.ours.seal("0123456789abcdef");
        QVERIFY(sealed);
        const QByteArray &parameters = sealed->parameters;
        QVERIFY(!pair.theirs.open({.parameters = parameters, .value = {}}));
        QVERIFY(!pair.theirs.open({.parameters = parameters, .value = sealed->value.chopped(1)}));
        QVERIFY(!pair.theirs.open({.parameters = parameters.chopped(1), .value = sealed->value}));
        QVERIFY(!pair.theirs.open({.parameters = {}, .value = sealed->value}));
        // The last block is the padding; the one before it is what it is opened with.
        QByteArray changed = sealed->value;
        changed[15] = static_cast<char>(changed[15] ^ 0x20);
        QVERIFY(!pair.theirs.open({.parameters = parameters, .value = changed}));
        const Pair others;
        int opened = 0;
        for (int i = 0; i < 20; ++i)
            opened += others.theirs.open(*pair.ours.seal("0123456789abcdef")) ? 1 : 0;
        QVERIFY(opened < 3); // one in 256 looks right by chance
    }
};

ORBITLEDGE_TEST_MAIN(SecretCipherTest)
#include "SecretCipherTest.moc"
