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

/// Of what nobody is asked for. Long enough for that on a busy machine.
constexpr auto limit = 2s;
constexpr int longerThanLimit = 3000; // milliseconds

} // namespace

/// Against GNOME's keyring, locked, with a person before an X server's screen.
class KeyringPromptTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() { m_lab.emplace(DesktopLab::Options{.hasDisplay = true}); }
    void cleanup() { m_lab.reset(); }

    void shouldUnlockToRead()
    {
        lockUpItem();
        KeychainDriver keychain(m_lab->environment());
        const int reading = keychain.startReading(session);
        m_lab->answerPrompt(DesktopLab::keyringPassword());
        QCOMPARE(keychain.result(reading), secret("locked up"));
        // Once is enough.
        QCOMPARE(keychain.read(session), secret("locked up"));
        QVERIFY(keychain.ranSmoothly());
    }

    void shouldUnlockToWrite()
    {
        lockUpItem();
        KeychainDriver keychain(m_lab->environment());
        const int writing = keychain.startWriting(session, "new");
        m_lab->answerPrompt(DesktopLab::keyringPassword());
        QCOMPARE(keychain.result(writing).status, Success);
        QCOMPARE(keychain.read(session), secret("new"));
        QVERIFY(keychain.ranSmoothly());
    }

    void shouldUnlockToRemove()
    {
        lockUpItem();
        KeychainDriver keychain(m_lab->environment());
        const int removing = keychain.startRemoving(session, KeychainPrompt::Allowed);
        m_lab->answerPrompt(DesktopLab::keyringPassword());
        QCOMPARE(keychain.result(removing).status, Success);
        QCOMPARE(keychain.read(session), failure(ItemNotFound));
        QVERIFY(keychain.ranSmoothly());
    }

    void shouldWaitForThePersonWithoutLimit()
    {
        lockUpItem();
        m_lab->startMonitor();
        KeychainDriver keychain(m_lab->environment(), {.answer = limit});
        const int reading = keychain.startReading(session);
        m_lab->tryAtPrompt(u"not the password"_s);
        DesktopLab::await(
            "another question", [&] { return m_lab->monitored().count("member=PerformPrompt") == 2; });
        QTest::qWait(longerThanLimit); // nothing may happen
        QVERIFY(!keychain.hasEnded(reading));
        m_lab->answerPrompt(DesktopLab::keyringPassword());
        QCOMPARE(keychain.result(reading), secret("locked up"));
        QVERIFY(keychain.ranSmoothly());
    }

    void shouldTellThatThePersonDeclined()
    {
        lockUpItem();
        KeychainDriver keychain(m_lab->environment());
        const int reading = keychain.startReading(session);
        m_lab->dismissPrompt();
        QCOMPARE(keychain.result(reading), failure(UserCanceled));
        const int writing = keychain.startWriting(session, "new");
        m_lab->dismissPrompt();
        QCOMPARE(keychain.result(writing).status, UserCanceled);
        const int removing = keychain.startRemoving(session, KeychainPrompt::Allowed);
        m_lab->dismissPrompt();
        QCOMPARE(keychain.result(removing).status, UserCanceled);
        // Nothing happened to the item.
        const int readingAgain = keychain.startReading(session);
        m_lab->answerPrompt(DesktopLab::keyringPassword());
        QCOMPARE(keychain.result(readingAgain), secret("locked up"));
        QVERIFY(keychain.ranSmoothly());
    }

    void shouldNotPromptForWhatIsNotThere()
    {
        lockUpItem();
        KeychainItem other = session;
        other.account = u"other"_s;
        m_lab->startMonitor();
        KeychainDriver keychain(m_lab->environment());
        QCOMPARE(keychain.read(other), failure(ItemNotFound));
        QCOMPARE(keychain.remove(other, KeychainPrompt::Allowed), ItemNotFound);
        QCOMPARE(keychain.remove(other, KeychainPrompt::Forbidden), ItemNotFound);
        verifyNobodyWasAsked();
        QVERIFY(keychain.ranSmoothly());
    }

    void shouldNotPromptWhereThatIsForbidden()
    {
        lockUpItem();
        m_lab->startMonitor();
        KeychainDriver keychain(m_lab->environment());
        QCOMPARE(keychain.remove(session, KeychainPrompt::Forbidden), InteractionNotAllowed);
        verifyNobodyWasAsked();
        // The same look at the bus does find a prompt where there is one.
        const int removing = keychain.startRemoving(session, KeychainPrompt::Allowed);
        m_lab->answerPrompt(DesktopLab::keyringPassword());
        QCOMPARE(keychain.result(removing).status, Success);
        const QByteArray seen = m_lab->monitored();
        QVERIFY(seen.contains("interface=org.freedesktop.Secret.Prompt"));
        QVERIFY(seen.contains("org.gnome.keyring.SystemPrompter"));
        QVERIFY(keychain.ranSmoothly());
    }

    void shouldTakeAwayWhatIsUnlockedAlsoWithoutAPrompt()
    {
        lockUpItem();
        m_lab->run(u"secret-tool"_s,
            {u"store"_s, u"--collection=session"_s, u"--label=copy"_s, u"user"_s, session.account,
                u"server"_s, session.service, u"type"_s, u"base64"_s},
            "Y29weQ==");
        m_lab->startMonitor();
        KeychainDriver keychain(m_lab->environment());
        QCOMPARE(keychain.read(session), secret("copy"));
        QCOMPARE(keychain.remove(session, KeychainPrompt::Forbidden), InteractionNotAllowed);
        verifyNobodyWasAsked();
        const int reading = keychain.startReading(session);
        m_lab->answerPrompt(DesktopLab::keyringPassword());
        QCOMPARE(keychain.result(reading), secret("locked up"));
    }

    void shouldEndTheWaitWhenTheKeyringDies()
    {
        lockUpItem();
        KeychainDriver keychain(m_lab->environment());
        m_lab->startMonitor();
        const int reading = keychain.startReading(session);
        m_lab->awaitPrompt();
        m_lab->killKeyring();
        QCOMPARE(keychain.result(reading), failure(IoError));
        m_lab->startKeyring(DesktopLab::Keyring::Unlocked);
        QCOMPARE(keychain.read(session), secret("locked up"));
        QVERIFY(keychain.ranSmoothly());
    }

    void shouldEndTheWaitWhenThePrompterDies()
    {
        lockUpItem();
        KeychainDriver keychain(m_lab->environment());
        const int reading = keychain.startReading(session);
        m_lab->killPrompter();
        QCOMPARE(keychain.result(reading), failure(IoError));
        const int readingAgain = keychain.startReading(session);
        m_lab->answerPrompt(DesktopLab::keyringPassword());
        QCOMPARE(keychain.result(readingAgain), secret("locked up"));
        QVERIFY(keychain.ranSmoothly());
    }

    void shouldLetThePersonMakeAKeyringWhereThereIsNone()
    {
        m_lab->startKeyring(DesktopLab::Keyring::Locked);
        KeychainDriver keychain(m_lab->environment());
        QCOMPARE(keychain.read(session), failure(ItemNotFound));
        const int declined = keychain.startWriting(session, "x");
        m_lab->dismissPrompt();
        QCOMPARE(keychain.result(declined).status, UserCanceled);
        KeychainStatus written = makeKeyringFor(keychain);
        if (written == UserCanceled && m_lab->hasMisreadPassword())
            written = makeKeyringFor(keychain);
        QCOMPARE(written, Success);
        QCOMPARE(keychain.read(session), secret("x"));
        QVERIFY(keychain.ranSmoothly());
    }

    void shouldKeepTheOthersWaitingWhileOneAsks()
    {
        lockUpItem();
        KeychainDriver keychain(m_lab->environment(), {.answer = limit});
        const int reading = keychain.startReading(session);
        const int removing = keychain.startRemoving(session, KeychainPrompt::Forbidden);
        const int readingAgain = keychain.startReading(session);
        m_lab->awaitPrompt();
        QTest::qWait(longerThanLimit); // nothing may happen
        QVERIFY(!keychain.hasEnded(reading) && keychain.ended().isEmpty());
        m_lab->answerPrompt(DesktopLab::keyringPassword());
        QCOMPARE(keychain.result(reading), secret("locked up"));
        QCOMPARE(keychain.result(removing).status, Success);
        QCOMPARE(keychain.result(readingAgain), failure(ItemNotFound));
        QVERIFY(keychain.ranSmoothly());
    }

private:
    /// A keyring as it is after a login that did not unlock it.
    void lockUpItem()
    {
        m_lab->startKeyring(DesktopLab::Keyring::Unlocked);
        KeychainDriver keychain(m_lab->environment());
        QCOMPARE(keychain.write(session, "locked up"), Success);
        m_lab->stopKeyring();
        m_lab->startKeyring(DesktopLab::Keyring::Locked);
    }

    KeychainStatus makeKeyringFor(KeychainDriver &keychain)
    {
        const int writing = keychain.startWriting(session, "x");
        m_lab->choosePassword(u"new password"_s);
        return keychain.result(writing).status;
    }

    void verifyNobodyWasAsked()
    {
        const QByteArray seen = m_lab->monitored();
        QVERIFY(seen.contains("member=SearchItems")); // it saw what there was to see
        QVERIFY(!seen.contains("interface=org.freedesktop.Secret.Prompt"));
        QVERIFY(!seen.contains("member=Unlock"));
        QVERIFY(!seen.contains("SystemPrompter"));
        QVERIFY(!m_lab->isOnBus(u"org.gnome.keyring.SystemPrompter"_s));
    }

    std::optional<DesktopLab> m_lab;
};

ORBITLEDGE_TEST_MAIN(KeyringPromptTest)
#include "KeyringPromptTest.moc"
