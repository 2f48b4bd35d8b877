#include "support/KeychainDriver.h"
#include "support/TestMain.h"

#include <QDBusMessage>
#include <QDBusReply>

using namespace orbitledge;
using namespace orbitledge::testing;
using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

using enum KeychainStatus;

namespace {

const KeychainItem session{
    .service = u"app.example"_s, .account = u"session"_s, .label = u"Example session"_s};
const QString daemonName = u"org.kde.kwalletd5"_s;

const auto secret = KeychainDriver::secret;
const auto failure = KeychainDriver::failure;

} // namespace

/// Against a mock of the wallet's daemon.
class KWalletTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() { m_lab.emplace(); }
    void cleanup() { m_lab.reset(); }

    void shouldKeepAnItem()
    {
        startDaemon();
        m_lab->startMonitor();
        KeychainDriver keychain(plasma());
        QCOMPARE(keychain.read(session), failure(ItemNotFound));
        QCOMPARE(keychain.remove(session, KeychainPrompt::Forbidden), ItemNotFound);
        QVERIFY(!m_lab->monitored().contains("member=open\n")); // that is the person's business
        const int writing = keychain.startWriting(session, QByteArray("a\0\xff", 3));
        answer(true);
        QCOMPARE(keychain.result(writing).status, Success);
        QCOMPARE(keychain.read(session), secret(QByteArray("a\0\xff", 3)));
        QCOMPARE(keychain.write(session, "second"), Success);
        QCOMPARE(keychain.read(session), secret("second"));
        QCOMPARE(keychain.remove(session, KeychainPrompt::Forbidden), Success);
        QCOMPARE(keychain.read(session), failure(ItemNotFound));
        QCOMPARE(keychain.remove(session, KeychainPrompt::Allowed), ItemNotFound);
        QVERIFY(keychain.ranSmoothly());
    }

    void shouldWaitForThePersonWithoutLimit()
    {
        startDaemon();
        m_lab->startMonitor();
        // Long enough for what nobody is asked for, on a busy machine.
        constexpr auto limit = 2s;
        constexpr int longerThanLimit = 3000; // milliseconds
        KeychainDriver keychain(plasma(), {.answer = limit});
        const int writing = keychain.startWriting(session, "x");
        m_lab->awaitCall("open\n");
        QTest::qWait(longerThanLimit); // nothing may happen
        QVERIFY(!keychain.hasEnded(writing));
        answer(true);
        QCOMPARE(keychain.result(writing).status, Success);
        QVERIFY(keychain.ranSmoothly());
    }

    void shouldTellThatAccessWasDenied()
    {
        startDaemon();
        m_lab->startMonitor();
        KeychainDriver keychain(plasma());
        const int writing = keychain.startWriting(session, "x");
        answer(false);
        QCOMPARE(keychain.result(writing).status, AuthFailed);
        QVERIFY(keychain.ranSmoothly());
    }

    void shouldNotOpenTheWalletWhereThatIsForbidden()
    {
        startDaemon();
        m_lab->startMonitor();
        KeychainDriver keychain(plasma());
        const int writing = keychain.startWriting(session, "x");
        answer(true);
        QCOMPARE(keychain.result(writing).status, Success);
        control(u"CloseWallet"_s);
        const auto openings = m_lab->monitored().count("member=open\n");
        QCOMPARE(keychain.remove(session, KeychainPrompt::Forbidden), InteractionNotAllowed);
        QCOMPARE(m_lab->monitored().count("member=open\n"), openings);
        const int removing = keychain.startRemoving(session, KeychainPrompt::Allowed);
        DesktopLab::await(
            "the wallet to be opened", [&] { return m_lab->monitored().count("member=open\n") > openings; });
        control(u"Answer"_s, {true});
        QCOMPARE(keychain.result(removing).status, Success);
        QCOMPARE(countEntries(), 0);
        QVERIFY(keychain.ranSmoothly());
    }

    void shouldGiveUpASilentDaemon()
    {
        startDaemon();
        m_lab->pauseService(daemonName);
        KeychainDriver keychain(plasma(), {.answer = 400ms});
        QCOMPARE(keychain.read(session), failure(TimedOut));
        QCOMPARE(keychain.write(session, "x"), TimedOut);
        QCOMPARE(keychain.remove(session, KeychainPrompt::Forbidden), TimedOut);
        QVERIFY(keychain.ranSmoothly());
    }

    void shouldTellThatTheDaemonDied()
    {
        startDaemon();
        m_lab->startMonitor();
        KeychainDriver keychain(plasma());
        const int writing = keychain.startWriting(session, "x");
        m_lab->awaitCall("open\n");
        m_lab->killService(daemonName);
        QCOMPARE(keychain.result(writing).status, IoError);
        QVERIFY(keychain.ranSmoothly());
    }

    void shouldTellThatThePersonDoesWithoutWallets()
    {
        startDaemon();
        control(u"Disable"_s);
        KeychainDriver keychain(plasma());
        QCOMPARE(keychain.read(session), failure(NotAvailable));
        QCOMPARE(keychain.write(session, "x"), NotAvailable);
        QCOMPARE(keychain.remove(session, KeychainPrompt::Allowed), NotAvailable);
        QVERIFY(keychain.ranSmoothly());
    }

    void shouldUseTheSecretServiceWhereThePersonDoesWithoutWallets()
    {
        startDaemon();
        control(u"Disable"_s);
        m_lab->startKeyring(DesktopLab::Keyring::Unlocked);
        KeychainDriver keychain(plasma());
        QCOMPARE(keychain.write(session, "x"), Success);
        QCOMPARE(keychain.read(session), secret("x"));
        QCOMPARE(keychain.remove(session, KeychainPrompt::Forbidden), Success);
        QCOMPARE(countEntries(), 0);
        QVERIFY(keychain.ranSmoothly());
    }

    void shouldUseTheSecretServiceWhereThereIsNoDaemon()
    {
        m_lab->startKeyring(DesktopLab::Keyring::Unlocked);
        KeychainDriver keychain(plasma());
        QCOMPARE(keychain.write(session, "x"), Success);
        QCOMPARE(keychain.read(session), secret("x"));
        QCOMPARE(keychain.remove(session, KeychainPrompt::Forbidden), Success);
        QVERIFY(keychain.ranSmoothly());
    }

    void shouldUseTheKeyringOfTheDesktop_data()
    {
        QTest::addColumn<QStringList>("variables");
        QTest::addColumn<bool>("isWallet");
        QTest::newRow("none") << QStringList{} << false;
        QTest::newRow("Plasma 5") << QStringList{u"XDG_CURRENT_DESKTOP=KDE"_s, u"KDE_SESSION_VERSION=5"_s}
                                  << true;
        QTest::newRow("Plasma 6") << QStringList{u"XDG_CURRENT_DESKTOP=KDE"_s, u"KDE_SESSION_VERSION=6"_s}
                                  << false;
        QTest::newRow("KDE without a version") << QStringList{u"XDG_CURRENT_DESKTOP=KDE"_s} << false;
        QTest::newRow("by the session's name")
            << QStringList{u"DESKTOP_SESSION=kde"_s, u"KDE_SESSION_VERSION=5"_s} << true;
        QTest::newRow("by the oldest variable")
            << QStringList{u"KDE_FULL_SESSION=true"_s, u"KDE_SESSION_VERSION=5"_s} << true;
        QTest::newRow("several names")
            << QStringList{u"XDG_CURRENT_DESKTOP=KDE:Plasma"_s, u"KDE_SESSION_VERSION=5"_s} << false;
        QTest::newRow("GNOME") << QStringList{u"XDG_CURRENT_DESKTOP=GNOME"_s, u"KDE_SESSION_VERSION=5"_s,
            u"DESKTOP_SESSION=kde"_s}
                               << false;
        QTest::newRow("Unity") << QStringList{u"XDG_CURRENT_DESKTOP=Unity"_s, u"KDE_SESSION_VERSION=5"_s,
            u"DESKTOP_SESSION=kde"_s}
                               << false;
        QTest::newRow("XFCE") << QStringList{u"XDG_CURRENT_DESKTOP=XFCE"_s, u"KDE_SESSION_VERSION=5"_s}
                              << false;
        QTest::newRow("GNOME by the session's name")
            << QStringList{u"DESKTOP_SESSION=gnome"_s, u"KDE_FULL_SESSION=true"_s, u"KDE_SESSION_VERSION=5"_s}
            << false;
        QTest::newRow("XFCE by the session's name")
            << QStringList{u"DESKTOP_SESSION=xfce"_s, u"KDE_FULL_SESSION=true"_s, u"KDE_SESSION_VERSION=5"_s}
            << false;
        QTest::newRow("GNOME by the oldest variable") << QStringList{u"GNOME_DESKTOP_SESSION_ID=this"_s,
            u"KDE_FULL_SESSION=true"_s, u"KDE_SESSION_VERSION=5"_s}
                                                      << false;
    }
    void shouldUseTheKeyringOfTheDesktop()
    {
        QFETCH(const QStringList, variables);
        QFETCH(const bool, isWallet);
        startDaemon();
        m_lab->startKeyring(DesktopLab::Keyring::Unlocked);
        m_lab->startMonitor();
        QProcessEnvironment environment = m_lab->environment();
        for (const QString &variable : variables)
            environment.insert(variable.section(u'=', 0, 0), variable.section(u'=', 1));
        KeychainDriver keychain(environment);
        const int writing = keychain.startWriting(session, "x");
        if (isWallet)
            answer(true);
        QCOMPARE(keychain.result(writing).status, Success);
        QCOMPARE(keychain.read(session), secret("x"));
        QCOMPARE(countEntries(), isWallet ? 1 : 0);
        const QByteArray found = m_lab->run(u"secret-tool"_s, {u"search"_s, u"user"_s, session.account});
        QCOMPARE(found.isEmpty(), isWallet);
        QCOMPARE(keychain.remove(session, KeychainPrompt::Allowed), Success);
        QVERIFY(keychain.ranSmoothly());
    }

private:
    void startDaemon()
    {
        m_lab->startService(daemonName, u"/usr/bin/python3"_s,
            {QStringLiteral(ORBITLEDGE_TEST_SUPPORT) + u"/mock_kwalletd.py"_s, daemonName});
    }

    [[nodiscard]] QProcessEnvironment plasma() const
    {
        QProcessEnvironment environment = m_lab->environment();
        environment.insert(u"XDG_CURRENT_DESKTOP"_s, u"KDE"_s);
        environment.insert(u"KDE_SESSION_VERSION"_s, u"5"_s);
        return environment;
    }

    QDBusMessage control(const QString &method, const QVariantList &arguments = {})
    {
        QDBusMessage call = QDBusMessage::createMethodCall(
            daemonName, u"/modules/kwalletd5"_s, u"app.orbitledge.Mock"_s, method);
        call.setArguments(arguments);
        const QDBusMessage reply = m_lab->bus().call(call);
        if (reply.type() != QDBusMessage::ReplyMessage)
            qFatal("%s: %s", qPrintable(method), qPrintable(reply.errorMessage()));
        return reply;
    }

    /// Answers for the person once somebody opens the wallet.
    void answer(bool consents)
    {
        m_lab->awaitCall("open\n");
        control(u"Answer"_s, {consents});
    }

    int countEntries() { return control(u"CountEntries"_s).arguments().value(0).toInt(); }

    std::optional<DesktopLab> m_lab;
};

ORBITLEDGE_TEST_MAIN(KWalletTest)
#include "KWalletTest.moc"
