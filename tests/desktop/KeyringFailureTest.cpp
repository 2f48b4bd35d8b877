#include "support/KeychainDriver.h"
#include "support/TestMain.h"

#include <QElapsedTimer>

using namespace orbitledge;
using namespace orbitledge::testing;
using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

using enum KeychainStatus;

namespace {

const KeychainItem session{
    .service = u"app.example"_s, .account = u"session"_s, .label = u"Example session"_s};
const QString keyringName = u"org.freedesktop.secrets"_s;

const auto secret = KeychainDriver::secret;
const auto failure = KeychainDriver::failure;

/// Of an operation on something that falls silent. Long enough for one that does not, on a busy machine.
constexpr auto limit = 2s;

/// All three operations end so.
void verifyEverything(KeychainDriver &keychain, KeychainStatus status)
{
    QCOMPARE(keychain.read(session), failure(status));
    QCOMPARE(keychain.write(session, "x"), status);
    QCOMPARE(keychain.remove(session, KeychainPrompt::Forbidden), status);
    QCOMPARE(keychain.remove(session, KeychainPrompt::Allowed), status);
}

void startMockService(DesktopLab &lab, const QString &behaviour)
{
    lab.startService(keyringName, u"/usr/bin/python3"_s,
        {QStringLiteral(ORBITLEDGE_TEST_SUPPORT) + u"/mock_secret_service.py"_s, behaviour});
}

} // namespace

class KeyringFailureTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    // ---- nobody there ----

    void shouldTellThatThereIsNoSessionBus()
    {
        const DesktopLab lab;
        QProcessEnvironment environment = lab.environment();
        environment.insert(u"DBUS_SESSION_BUS_ADDRESS"_s, u"unix:path="_s + lab.path(u"no such bus"_s));
        KeychainDriver keychain(environment);
        verifyEverything(keychain, NotAvailable);
        QVERIFY(keychain.ranSmoothly());
    }

    void shouldWaitOnceForAServiceThatIsNotThere()
    {
        const DesktopLab lab;
        constexpr qint64 almost = 2800; // milliseconds: timers may come a twentieth early
        KeychainDriver keychain(lab.environment(), {.serviceStart = 3s});
        QElapsedTimer time;
        time.start();
        QCOMPARE(keychain.read(session), failure(NotAvailable));
        QVERIFY(time.elapsed() >= almost);
        time.start();
        verifyEverything(keychain, NotAvailable);
        QVERIFY(time.elapsed() < almost);
        QVERIFY(keychain.ranSmoothly());
    }

    void shouldFindAServiceThatComesLate()
    {
        DesktopLab lab;
        makeItem(lab);
        lab.stopKeyring();
        lab.startMonitor();
        KeychainDriver keychain(lab.environment(), {.serviceStart = 15s});
        const int reading = keychain.startReading(session);
        lab.awaitCall("ListActivatableNames");
        QVERIFY(!keychain.hasEnded(reading));
        lab.startKeyring(DesktopLab::Keyring::Unlocked);
        QCOMPARE(keychain.result(reading), secret("kept"));
        QVERIFY(keychain.ranSmoothly());
    }

    void shouldStartAServiceThatTheBusKnows()
    {
        DesktopLab lab({.keyringCommand = DesktopLab::defaultKeyringCommand()});
        KeychainDriver keychain(lab.environment(), {.serviceStart = 0ms});
        QVERIFY(!lab.isOnBus(keyringName));
        QCOMPARE(keychain.read(session), failure(ItemNotFound));
        QVERIFY(lab.isOnBus(keyringName));
        QVERIFY(keychain.ranSmoothly());
    }

    void shouldAwaitAServiceThatIsSlowToStart()
    {
        // The bus starts it, but it comes up only when the test says so.
        const QTemporaryDir folder;
        const QString gate = folder.filePath(u"gate"_s);
        DesktopLab lab(
            {.keyringCommand = u"/bin/sh -c \"until test -e %1; do sleep 0.05; done; exec %2\""_s.arg(
                 gate, DesktopLab::defaultKeyringCommand())});
        lab.startMonitor();
        KeychainDriver keychain(lab.environment(), {.serviceStart = 0ms});
        const int reading = keychain.startReading(session);
        lab.awaitCall("StartServiceByName");
        QVERIFY(!keychain.hasEnded(reading));
        QVERIFY(QFile(gate).open(QIODevice::WriteOnly));
        QCOMPARE(keychain.result(reading), failure(ItemNotFound));
        QVERIFY(keychain.ranSmoothly());
    }

    void shouldTellThatAServiceDoesNotStart_data()
    {
        QTest::addColumn<QString>("command");
        QTest::addColumn<std::chrono::milliseconds>("answer");
        QTest::addColumn<KeychainStatus>("status");
        constexpr std::chrono::milliseconds usual = 20s;
        QTest::newRow("it ends at once") << u"/bin/false"_s << usual << NotAvailable;
        QTest::newRow("it is not installed") << u"/no/such/program"_s << usual << NotAvailable;
        QTest::newRow("it never comes up") << u"/bin/sleep 60"_s << 500ms << TimedOut;
    }
    void shouldTellThatAServiceDoesNotStart()
    {
        QFETCH(const QString, command);
        QFETCH(const std::chrono::milliseconds, answer);
        QFETCH(const KeychainStatus, status);
        const DesktopLab lab({.keyringCommand = command});
        KeychainDriver keychain(lab.environment(), {.answer = answer, .serviceStart = 100ms});
        QCOMPARE(keychain.read(session), failure(status));
        QVERIFY(keychain.ranSmoothly());
    }

    // ---- there, but silent ----

    void shouldGiveUpASilentService()
    {
        DesktopLab lab;
        makeItem(lab);
        KeychainDriver keychain(lab.environment(), {.answer = limit});
        QCOMPARE(keychain.read(session), secret("kept"));
        lab.pauseKeyring();
        verifyEverything(keychain, TimedOut);
        lab.resumeKeyring();
        QCOMPARE(keychain.write(session, "awake"), Success);
        QCOMPARE(keychain.read(session), secret("awake"));
        QVERIFY(keychain.ranSmoothly());
    }

    void shouldGiveUpAServiceThatFallsSilentInTheMiddle()
    {
        DesktopLab lab;
        startMockService(lab, u"mute"_s);
        KeychainDriver keychain(lab.environment(), {.answer = limit});
        QCOMPARE(keychain.read(session), failure(TimedOut));
        // What hangs there must not keep up what comes after it, once there is a service again.
        lab.killService(keyringName);
        lab.startKeyring(DesktopLab::Keyring::Unlocked);
        QCOMPARE(keychain.write(session, "back"), Success);
        QCOMPARE(keychain.read(session), secret("back"));
        QVERIFY(keychain.ranSmoothly());
    }

    void shouldGiveUpASilentBus()
    {
        DesktopLab lab;
        makeItem(lab);
        KeychainDriver keychain(lab.environment(), {.answer = limit});
        QCOMPARE(keychain.read(session), secret("kept"));
        lab.pauseBus();
        verifyEverything(keychain, TimedOut);
        lab.resumeBus();
        QCOMPARE(keychain.read(session), secret("kept"));
        QVERIFY(keychain.ranSmoothly());
    }

    // ---- there, and then not ----

    void shouldTellThatTheServiceDied()
    {
        DesktopLab lab;
        makeItem(lab);
        lab.startMonitor();
        KeychainDriver keychain(lab.environment());
        lab.pauseKeyring();
        const int reading = keychain.startReading(session);
        lab.awaitCall("SearchItems");
        const int writing = keychain.startWriting(session, "new");
        lab.killKeyring();
        QCOMPARE(keychain.result(reading), failure(IoError));
        // This one waited for its turn, and now waits for the service.
        lab.startKeyring(DesktopLab::Keyring::Unlocked);
        QCOMPARE(keychain.result(writing).status, Success);
        QCOMPARE(keychain.read(session), secret("new"));
        QVERIFY(keychain.ranSmoothly());
    }

    void shouldGoOnWithAServiceThatWasStartedAnew()
    {
        DesktopLab lab;
        makeItem(lab);
        KeychainDriver keychain(lab.environment());
        for (int round = 0; round < 3; ++round) {
            QCOMPARE(keychain.read(session), secret("kept"));
            lab.killKeyring();
            lab.startKeyring(DesktopLab::Keyring::Unlocked);
            QCOMPARE(keychain.read(session), secret("kept"));
            lab.stopKeyring();
            lab.startKeyring(DesktopLab::Keyring::Unlocked);
            QCOMPARE(keychain.write(session, "kept"), Success);
        }
        QVERIFY(keychain.ranSmoothly());
    }

    void shouldTellThatTheServiceDiedOverTheSecret()
    {
        DesktopLab lab;
        startMockService(lab, u"die"_s);
        KeychainDriver keychain(lab.environment(), {.serviceStart = 0ms});
        QCOMPARE(keychain.read(session), failure(IoError));
        QCOMPARE(keychain.read(session), failure(NotAvailable));
        lab.startKeyring(DesktopLab::Keyring::Unlocked);
        QCOMPARE(keychain.write(session, "back"), Success);
        QCOMPARE(keychain.read(session), secret("back"));
        QVERIFY(keychain.ranSmoothly());
    }

    void shouldFinishWhenTheStoreIsDestroyedBeforeTheServiceDies()
    {
        DesktopLab lab;
        makeItem(lab);
        lab.startMonitor();
        KeychainDriver keychain(lab.environment(), {.serviceStart = 0ms});
        lab.pauseKeyring();
        const int reading = keychain.startReading(session);
        const int waiting = keychain.startReading(session);
        lab.awaitCall("SearchItems");
        keychain.destroyStore();
        lab.killKeyring();
        QCOMPARE(keychain.result(reading), failure(IoError));
        QCOMPARE(keychain.result(waiting), failure(NotAvailable));
        QVERIFY(keychain.ranSmoothly());
    }

    // ---- not for us ----

    void shouldTellThatTheBusDeniesAccess()
    {
        DesktopLab lab({.busPolicy
            = u"<deny send_destination=\"org.freedesktop.secrets\" send_interface=\"org.freedesktop.Secret.Service\"/>"_s});
        lab.startKeyring(DesktopLab::Keyring::Unlocked);
        KeychainDriver keychain(lab.environment());
        verifyEverything(keychain, AuthFailed);
        QVERIFY(keychain.ranSmoothly());
    }

    void shouldTellThatThereIsNobodyToUnlockTheKeyring()
    {
        DesktopLab lab; // without a display
        makeItem(lab);
        lab.stopKeyring();
        lab.startKeyring(DesktopLab::Keyring::Locked);
        KeychainDriver keychain(lab.environment());
        verifyEverything(keychain, InteractionNotAllowed);
        QVERIFY(keychain.ranSmoothly());
    }

    void shouldTellThatTheServiceKeepsTheSecret()
    {
        DesktopLab lab;
        startMockService(lab, u"deny"_s);
        KeychainDriver keychain(lab.environment());
        QCOMPARE(keychain.read(session), failure(AuthFailed));
        QVERIFY(keychain.ranSmoothly());
    }

    void shouldTellThatThePersonDeclinedOneItem()
    {
        DesktopLab lab;
        startMockService(lab, u"ask"_s);
        lab.startMonitor();
        KeychainDriver keychain(lab.environment());
        QCOMPARE(keychain.read(session), failure(UserCanceled));
        QCOMPARE(keychain.remove(session, KeychainPrompt::Allowed), UserCanceled);
        const auto prompts = lab.monitored().count("member=Prompt");
        QVERIFY(prompts > 0);
        QCOMPARE(keychain.remove(session, KeychainPrompt::Forbidden), InteractionNotAllowed);
        QCOMPARE(lab.monitored().count("member=Prompt"), prompts);
        QVERIFY(keychain.ranSmoothly());
    }

private:
    static void makeItem(DesktopLab &lab)
    {
        lab.startKeyring(DesktopLab::Keyring::Unlocked);
        KeychainDriver keychain(lab.environment());
        QCOMPARE(keychain.write(session, "kept"), Success);
    }
};

ORBITLEDGE_TEST_MAIN(KeyringFailureTest)
#include "KeyringFailureTest.moc"
