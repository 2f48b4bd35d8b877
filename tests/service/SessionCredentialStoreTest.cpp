#include "service/SessionCredentialStore.h"

#include "support/FakeKeychain.h"
#include "support/TestMain.h"

#include <QJsonDocument>
#include <QJsonObject>

using namespace orbitledge;
using namespace orbitledge::testing;
using namespace Qt::StringLiterals;

using Error = SessionCredentialStoreError;

class SessionCredentialStoreTest : public QObject {
    Q_OBJECT

private:
    std::shared_ptr<FakeKeychain> m_keychain;
    std::unique_ptr<SessionCredentialStore> m_store;
    const SessionCredential m_credential{u"a b\"\u00e4="_s, *Instant::fromText("2026-03-25T12:00:00.250Z")};

    QByteArray &stored() { return m_keychain->items[{u"app.example"_s, u"session"_s}]; }

private Q_SLOTS:
    void init()
    {
        m_keychain = std::make_shared<FakeKeychain>();
        m_store = std::make_unique<SessionCredentialStore>(
            m_keychain, u"app.example"_s, u"session"_s, u"Example session"_s);
    }

    void shouldFindNothingAtFirst()
    {
        const auto loaded = QCoro::waitFor(m_store->load());
        QVERIFY(loaded);
        QVERIFY(!*loaded);
    }

    void shouldLoadWhatWasSaved()
    {
        QVERIFY(QCoro::waitFor(m_store->save(m_credential)));
        const auto loaded = QCoro::waitFor(m_store->load());
        QVERIFY(loaded && *loaded);
        QVERIFY(**loaded == m_credential);
        QCOMPARE(m_keychain->labels.value({u"app.example"_s, u"session"_s}), u"Example session"_s);
    }

    void shouldStoreADocumentOfTwoKeys()
    {
        QVERIFY(QCoro::waitFor(m_store->save({u"v"_s, *Instant::fromText("2001-01-01T00:01:00.5Z")})));
        const QJsonObject object = QJsonDocument::fromJson(stored()).object();
        QCOMPARE(object.size(), 2);
        QCOMPARE(object[u"value"_s].toString(), u"v"_s);
        QCOMPARE(object[u"expiresAt"_s].toDouble(), 60.5);
    }

    void shouldReplaceWhatWasSavedBefore()
    {
        QVERIFY(QCoro::waitFor(m_store->save({u"first"_s, {}})));
        QVERIFY(QCoro::waitFor(m_store->save(m_credential)));
        QCOMPARE(m_keychain->items.size(), 1);
        QVERIFY(**QCoro::waitFor(m_store->load()) == m_credential);
    }

    void shouldClearTwiceAndSaveAgain()
    {
        QVERIFY(QCoro::waitFor(m_store->save(m_credential)));
        QVERIFY(QCoro::waitFor(m_store->clear(KeychainPrompt::Forbidden)));
        QVERIFY(QCoro::waitFor(m_store->clear(KeychainPrompt::Allowed)));
        const QList<KeychainPrompt> expected{KeychainPrompt::Forbidden, KeychainPrompt::Allowed};
        QVERIFY(m_keychain->removals == expected);
        QVERIFY(!*QCoro::waitFor(m_store->load()));
        QVERIFY(QCoro::waitFor(m_store->save(m_credential)));
        QVERIFY(**QCoro::waitFor(m_store->load()) == m_credential);
    }

    void shouldReturnAnExpiredCredentialAsItIs()
    {
        QVERIFY(QCoro::waitFor(m_store->save({u"v"_s, Instant()})));
        QVERIFY(**QCoro::waitFor(m_store->load()) == (SessionCredential{u"v"_s, Instant()}));
    }

    void shouldReadNumbersAsOthersWriteThem()
    {
        stored() = R"({"expiresAt":796478400,"value":"v","more":[]})";
        QVERIFY((**QCoro::waitFor(m_store->load())).expiresAt == *Instant::fromText("2026-03-29T12:00:00Z"));
        stored() = R"({"expiresAt":-1.5e3,"value":""})";
        QVERIFY((**QCoro::waitFor(m_store->load())).expiresAt == *Instant::fromText("2000-12-31T23:35:00Z"));
        stored() = R"({"expiresAt":316223999999,"value":"a b"})";
        QVERIFY((**QCoro::waitFor(m_store->load())).value == u"a b");
    }

    void shouldRefuseWhatIsNoCredential_data()
    {
        QTest::addColumn<QByteArray>("content");
        const auto row = [](const char *name, const QByteArray &content) { QTest::newRow(name) << content; };
        row("an empty object", "{}");
        row("no JSON", "a=b");
        row("nothing", "");
        row("not UTF-8", "\xff\xfe");
        row("a list", "[]");
        row("no value", R"({"expiresAt":1})");
        row("no expiry", R"({"value":"v"})");
        row("null", R"({"value":null,"expiresAt":null})");
        row("a value that is no text", R"({"value":1,"expiresAt":1})");
        row("an expiry that is no number", R"({"value":"v","expiresAt":"2026-03-29T00:00:00Z"})");
        row("an expiry beyond all calendars", R"({"value":"v","expiresAt":1e300})");
        row("an expiry ten thousand years from the epoch", R"({"value":"v","expiresAt":316224000000})");
        row("an expiry ten thousand years before it", R"({"value":"v","expiresAt":-316224000000})");
        row("a line break in the value", R"({"value":"v\r\nX-Evil: 1","expiresAt":1})");
        row("a zero byte in the value", R"({"value":"v\u0000","expiresAt":1})");
        row("the last control character in the value", R"({"value":"v\u001F","expiresAt":1})");
        row("a delete character in the value", R"({"value":"v\u007f","expiresAt":1})");
    }
    void shouldRefuseWhatIsNoCredential()
    {
        QFETCH(QByteArray, content);
        stored() = content;
        const auto loaded = QCoro::waitFor(m_store->load());
        QVERIFY(!loaded);
        QVERIFY(loaded.error() == Error(Error::InvalidStoredData{}));
        QCOMPARE(loaded.error().errorDescription(), u"The stored session is invalid."_s);
    }

    void shouldTellTheStatusOfAFailure()
    {
        m_keychain->failure = KeychainStatus::UserCanceled;
        const auto expected = Error(Error::Keychain{KeychainStatus::UserCanceled});
        QVERIFY(QCoro::waitFor(m_store->load()).error() == expected);
        QVERIFY(QCoro::waitFor(m_store->save(m_credential)).error() == expected);
        QVERIFY(QCoro::waitFor(m_store->clear(KeychainPrompt::Allowed)).error() == expected);
        QVERIFY(expected != Error(Error::Keychain{KeychainStatus::TimedOut}));
        QVERIFY(expected != Error(Error::InvalidStoredData{}));
    }

    void shouldDescribeFailures_data()
    {
        QTest::addColumn<qint32>("status");
        QTest::addColumn<QString>("description");
        const auto row = [](qint32 status, const QString &text) {
            QTest::addRow("%d", status) << status << u"Keychain error: "_s + text;
        };
        row(-128, u"Unlocking the keyring was cancelled."_s);
        row(-36, u"The keyring could not carry out the request."_s);
        row(-1001, u"The keyring did not answer in time."_s);
        row(-25291,
            u"No keyring is available. Install and start GNOME Keyring, KWallet or KeePassXC, then try again."_s);
        row(-25293, u"The keyring denied access."_s);
        row(-25300, u"The item could not be found in the keyring."_s);
        row(-25308, u"The keyring is locked."_s);
        QTest::addRow("a status without a text") << -4711 << u"Keychain error (-4711)"_s;
    }
    void shouldDescribeFailures()
    {
        QFETCH(qint32, status);
        QFETCH(QString, description);
        QCOMPARE(Error(Error::Keychain{static_cast<KeychainStatus>(status)}).errorDescription(), description);
    }

    void shouldOutliveItsOwner()
    {
        auto task = m_store->save(m_credential);
        m_store.reset();
        QVERIFY(QCoro::waitFor(task));
    }
};

ORBITLEDGE_TEST_MAIN(SessionCredentialStoreTest)
#include "SessionCredentialStoreTest.moc"
