#include "support/KeychainDriver.h"
#include "support/TestMain.h"

#include <QElapsedTimer>

using namespace orbitledge;
using namespace orbitledge::testing;
using namespace Qt::StringLiterals;

/// Apart from the others, since it takes as long as a person would have to wait.
class KeyringPatienceTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void shouldGiveUpASilentServiceAfterTwentySeconds()
    {
        DesktopLab lab;
        lab.startKeyring(DesktopLab::Keyring::Unlocked);
        lab.pauseKeyring();
        KeychainDriver keychain(lab.environment()); // with what the program has as a default
        QElapsedTimer waiting;
        waiting.start();
        const int reading = keychain.startReading({u"app.example"_s, u"session"_s, {}});
        QVERIFY(QTest::qWaitFor([&] { return keychain.hasEnded(reading); }, 30'000));
        // The timers of calls on the bus are coarse: a twentieth, to either side.
        QVERIFY(waiting.elapsed() >= 19'000);
        QVERIFY(waiting.elapsed() < 24'000);
        QCOMPARE(keychain.result(reading), KeychainDriver::failure(KeychainStatus::TimedOut));
        QVERIFY(keychain.ranSmoothly());
    }
};

ORBITLEDGE_TEST_MAIN(KeyringPatienceTest)
#include "KeyringPatienceTest.moc"
