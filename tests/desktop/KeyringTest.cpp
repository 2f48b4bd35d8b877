#include "support/KeychainDriver.h"
#include "support/TestMain.h"

using namespace orbitledge;
using namespace orbitledge::testing;
using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

using enum KeychainStatus;

namespace {

const KeychainItem session{
    .service = u"app.example"_s, .account = u"session"_s, .label = u"Example session"_s};

const auto secret = KeychainDriver::secret;
const auto failure = KeychainDriver::failure;

} // namespace

/// Against GNOME's keyring, unlocked.
class KeyringTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_lab.emplace();
        m_lab->startKeyring(DesktopLab::Keyring::Unlocked);
    }
    void cleanup() { m_lab.reset(); }

    void shouldKeepAnItem()
    {
        KeychainDriver keychain(m_lab->environment());
        QCOMPARE(keychain.read(session), failure(ItemNotFound));
        QCOMPARE(keychain.write(session, "first"), Success);
        QCOMPARE(keychain.read(session), secret("first"));
        QCOMPARE(keychain.write(session, "second"), Success);
        QCOMPARE(keychain.read(session), secret("second"));
        QCOMPARE(keychain.remove(session, KeychainPrompt::Allowed), Success);
        QCOMPARE(keychain.read(session), failure(ItemNotFound));
        QCOMPARE(keychain.remove(session, KeychainPrompt::Allowed), ItemNotFound);
        QCOMPARE(keychain.remove(session, KeychainPrompt::Forbidden), ItemNotFound);
        QCOMPARE(keychain.write(session, "third"), Success);
        QCOMPARE(keychain.read(session), secret("third"));
        QCOMPARE(keychain.remove(session, KeychainPrompt::Forbidden), Success);
        QCOMPARE(keychain.read(session), failure(ItemNotFound));
        QVERIFY(keychain.ranSmoothly());
    }

    void shouldNotGrowWithEachRead()
    {
#ifdef __SANITIZE_ADDRESS__
        QSKIP("AddressSanitizer keeps what is let go of for a while.");
#endif
        KeychainDriver keychain(m_lab->environment());
        QCOMPARE(keychain.write(session, "first"), Success);
        const auto readOften = [&](int times) {
            for (int i = 0; i < times; ++i)
                QCOMPARE(keychain.read(session), secret("first"));
        };
        constexpr int warmUp = 100;
        constexpr int times = 500;
        readOften(warmUp);
        const int before = keychain.memory();
        readOften(times);
        const int growth = keychain.memory() - before;
        QVERIFY(before > 0);
        // A kilobyte each would be a service's answer that nobody lets go of.
        QVERIFY2(growth < times / 2, qPrintable(QString::number(growth)));
    }

    void shouldKeepItForTheNextProgram()
    {
        KeychainDriver writer(m_lab->environment());
        QCOMPARE(writer.write(session, "kept"), Success);
        QVERIFY(writer.ranSmoothly());
        m_lab->stopKeyring();
        m_lab->startKeyring(DesktopLab::Keyring::Unlocked);
        KeychainDriver reader(m_lab->environment());
        QCOMPARE(reader.read(session), secret("kept"));
    }

    void shouldKeepAnyBytes_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QByteArray all;
        for (int byte = 0; byte < 256; ++byte)
            all.append(static_cast<char>(byte));
        QTest::newRow("none") << QByteArray("");
        QTest::newRow("every value") << all;
        QTest::newRow("zero in the middle") << QByteArray("a\0b", 3);
        QTest::newRow("not UTF-8") << QByteArray("\xff\xfe");
        QTest::newRow("UTF-8") << QByteArray("\u00e5\u00df\u6f22\U0001f511");
        QTest::newRow("line ends") << QByteArray("\r\n\n");
        QTest::newRow("JSON") << QByteArray("{\"value\":\"x=y; z\",\"expiresAt\":1.5}");
        QTest::newRow("large") << all.repeated(256);
    }
    void shouldKeepAnyBytes()
    {
        QFETCH(const QByteArray, bytes);
        KeychainDriver keychain(m_lab->environment());
        QCOMPARE(keychain.write(session, bytes), Success);
        QCOMPARE(keychain.read(session), secret(bytes));
        QVERIFY(keychain.ranSmoothly());
    }

    void shouldTellServicesAndAccountsApart()
    {
        const KeychainItem otherAccount{.service = session.service, .account = u"other"_s, .label = {}};
        const KeychainItem otherService{.service = u"app.other"_s, .account = session.account, .label = {}};
        const KeychainItem swapped{.service = session.account, .account = session.service, .label = {}};
        KeychainDriver keychain(m_lab->environment());
        QCOMPARE(keychain.write(session, "1"), Success);
        QCOMPARE(keychain.write(otherAccount, "2"), Success);
        QCOMPARE(keychain.write(otherService, "3"), Success);
        QCOMPARE(keychain.write(swapped, "4"), Success);
        QCOMPARE(keychain.read(session), secret("1"));
        QCOMPARE(keychain.read(otherAccount), secret("2"));
        QCOMPARE(keychain.read(otherService), secret("3"));
        QCOMPARE(keychain.read(swapped), secret("4"));
        QCOMPARE(keychain.remove(session, KeychainPrompt::Forbidden), Success);
        QCOMPARE(keychain.read(session), failure(ItemNotFound));
        QCOMPARE(keychain.read(otherAccount), secret("2"));
        QCOMPARE(keychain.read(otherService), secret("3"));
        QCOMPARE(keychain.read(swapped), secret("4"));
    }

    void shouldLabelTheItemForPeople()
    {
        KeychainDriver keychain(m_lab->environment());
        QCOMPARE(keychain.write(session, "x"), Success);
        QCOMPARE(labels(), QByteArrayList{"label = Example session"});
        KeychainItem renamed = session;
        renamed.label = u"Sitzung für Beispiel"_s;
        QCOMPARE(keychain.write(renamed, "x"), Success);
        QCOMPARE(labels(), QByteArrayList{"label = Sitzung für Beispiel"});
    }

    void shouldLeaveOneItemWhereThereWereSeveral()
    {
        // In another collection, of another encoding, and of another origin.
        addItemTo(u"session"_s, u"base64"_s, "b2xk");
        addItemTo(u"login"_s, u"plaintext"_s, "old");
        addItemTo(u"login"_s, u"base64"_s, "b2xk");
        KeychainDriver keychain(m_lab->environment());
        QCOMPARE(keychain.write(session, "new"), Success);
        QCOMPARE(keychain.read(session), secret("new"));
        QCOMPARE(labels().size(), 1);
    }

    void shouldRemoveFromAllCollections()
    {
        addItemTo(u"session"_s, u"base64"_s, "b2xk");
        addItemTo(u"login"_s, u"plaintext"_s, "old");
        addItemTo(u"login"_s, u"base64"_s, "b2xk");
        QCOMPARE(labels().size(), 3);
        KeychainDriver keychain(m_lab->environment());
        QCOMPARE(keychain.remove(session, KeychainPrompt::Forbidden), Success);
        QCOMPARE(labels().size(), 0);
        QCOMPARE(keychain.read(session), failure(ItemNotFound));
    }

    void shouldRunOperationsInTheOrderOfTheCalls()
    {
        KeychainDriver keychain(m_lab->environment());
        QList<int> started;
        QList<KeychainDriver::Result> expected;
        for (int i = 0; i < 10; ++i) {
            const QByteArray bytes = QByteArray::number(i);
            started << keychain.startWriting(session, bytes) << keychain.startReading(session)
                    << keychain.startRemoving(session, KeychainPrompt::Allowed)
                    << keychain.startReading(session);
            expected << failure(Success) << secret(bytes) << failure(Success) << failure(ItemNotFound);
        }
        for (qsizetype i = 0; i < started.size(); ++i)
            QCOMPARE(keychain.result(started[i]), expected[i]);
        QCOMPARE(keychain.ended(), started);
        QVERIFY(keychain.ranSmoothly());
    }

    void shouldFinishWhatWaitsWhenTheStoreIsDestroyed()
    {
        KeychainDriver keychain(m_lab->environment());
        const int write = keychain.startWriting(session, "last will");
        const int read = keychain.startReading(session);
        const int remove = keychain.startRemoving(session, KeychainPrompt::Allowed);
        const int readAgain = keychain.startReading(session);
        keychain.destroyStore();
        QCOMPARE(keychain.result(write).status, Success);
        QCOMPARE(keychain.result(read), secret("last will"));
        QCOMPARE(keychain.result(remove).status, Success);
        QCOMPARE(keychain.result(readAgain), failure(ItemNotFound));
        QVERIFY(keychain.ranSmoothly());
    }

    void shouldNotShowTheSecretOnTheBus()
    {
        m_lab->startMonitor();
        const QByteArray bytes = "a-secret-that-nobody-may-see";
        KeychainDriver keychain(m_lab->environment());
        QCOMPARE(keychain.write(session, bytes), Success);
        QCOMPARE(keychain.read(session), secret(bytes));
        const QByteArray seen = m_lab->monitored();
        QVERIFY(seen.contains("member=CreateItem"));
        QVERIFY(seen.contains("member=GetSecret"));
        QVERIFY(seen.contains("dh-ietf1024-sha256-aes128-cbc-pkcs7"));
        QVERIFY(!seen.contains("string \"plain\""));
        QVERIFY(!seen.contains(bytes));
        QVERIFY(!seen.contains(bytes.toBase64()));
        QVERIFY(!seen.contains(bytes.toBase64().left(8)));
    }

    void shouldWorkWithAnyEventLoop()
    {
        QProcessEnvironment environment = m_lab->environment();
        environment.insert(u"QT_NO_GLIB"_s, u"1"_s);
        KeychainDriver keychain(environment);
        QCOMPARE(keychain.write(session, "x"), Success);
        QCOMPARE(keychain.read(session), secret("x"));
        QCOMPARE(keychain.remove(session, KeychainPrompt::Allowed), Success);
        QVERIFY(keychain.ranSmoothly());
    }

    void shouldReadWhatOthersWroteAsText()
    {
        addItemTo(u"login"_s, u"plaintext"_s, "by hand");
        KeychainDriver keychain(m_lab->environment());
        QCOMPARE(keychain.read(session), secret("by hand"));
        addItemTo(u"login"_s, u"base64"_s, QByteArray("of bytes").toBase64());
        QCOMPARE(keychain.read(session), secret("of bytes"));
    }

private:
    /// The lines with labels that a search for the item finds.
    QByteArrayList labels()
    {
        const QByteArray found = m_lab->run(u"secret-tool"_s,
            {u"search"_s, u"--all"_s, u"user"_s, session.account, u"server"_s, session.service});
        QByteArrayList lines = found.split('\n');
        lines.removeIf([](const QByteArray &line) { return !line.startsWith("label = "); });
        return lines;
    }

    void addItemTo(const QString &collection, const QString &type, const QByteArray &bytes)
    {
        m_lab->run(u"secret-tool"_s,
            {u"store"_s, u"--collection="_s + collection, u"--label=old"_s, u"user"_s, session.account,
                u"server"_s, session.service, u"type"_s, type},
            bytes);
    }

    std::optional<DesktopLab> m_lab;
};

ORBITLEDGE_TEST_MAIN(KeyringTest)
#include "KeyringTest.moc"
