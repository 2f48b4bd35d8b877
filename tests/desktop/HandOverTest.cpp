// Commands and the running program have one session between them, and one of them works on it at a time.

#include "model/RecordCodecs.h"
#include "support/FaultServer.h"
#include "support/ResidentDesk.h"
#include "support/SampleRecords.h"
#include "support/TestMain.h"

#include <QDBusUnixFileDescriptor>
#include <QDBusVirtualObject>

#include <fcntl.h>
#include <unistd.h>

using namespace orbitledge;
using namespace orbitledge::testing;
using namespace Qt::StringLiterals;

namespace {

const QByteArray password = "pass-phrase-that-nobody-sees";
const QByteArray cookie = "cookie-value-that-nobody-sees";

/// An answer to signing in, and to everything asked afterwards.
FaultServer::Answer answerTo(const QByteArray &request)
{
    if (request.startsWith("POST /auth/login "))
        return FaultServer::whole(200, "{\"user\":" + encodeJson(sampleProfile()) + '}',
            "Set-Cookie: orbitledge_user_session=" + cookie + "; Max-Age=3600\r\n");
    if (request.startsWith("GET /auth/profile "))
        return FaultServer::whole(200, encodeJson(sampleProfile()));
    return FaultServer::whole(200, '[' + encodeJson(sampleSubscription()) + ']');
}

/// Has the program's name, and gives one answer to everything.
class Impostor final : public QDBusVirtualObject {
public:
    Impostor(QDBusConnection bus, QVariantList answer)
        : m_bus(std::move(bus))
        , m_answer(std::move(answer))
    {
        m_bus.registerVirtualObject(u"/"_s, this, QDBusConnection::SubPath);
        m_bus.registerService(ResidentDesk::name());
    }
    ~Impostor() override
    {
        m_bus.unregisterService(ResidentDesk::name());
        m_bus.unregisterObject(u"/"_s, QDBusConnection::UnregisterTree);
    }
    Q_DISABLE_COPY_MOVE(Impostor)

    [[nodiscard]] QString introspect(const QString & /*path*/) const override { return {}; }
    bool handleMessage(const QDBusMessage &message, const QDBusConnection &connection) override
    {
        return connection.send(message.createReply(m_answer));
    }

private:
    QDBusConnection m_bus;
    QVariantList m_answer;
};

FaultServer::Answer noAnswer(const QByteArray & /*request*/)
{
    return {FaultServer::StayMute{}};
}

} // namespace

class HandOverTest : public QObject {
    Q_OBJECT

private:
    std::optional<ResidentDesk> m_desk;

    void askOf(const FaultServer &server)
    {
        m_desk->environment.insert(u"ORBITLEDGE_API_URL"_s, server.url().toString());
    }

    /// The call that another program could make.
    [[nodiscard]] QDBusMessage callSession(const QString &method, const QVariantList &more = {}) const
    {
        QDBusMessage message = QDBusMessage::createMethodCall(
            ResidentDesk::name(), ResidentDesk::path(), u"app.orbitledge.Orbitledge.Session1"_s, method);
        message.setArguments(
            QVariantList{m_desk->environment.value(u"ORBITLEDGE_API_URL"_s), m_desk->cacheFile()} + more);
        return m_desk->lab.bus().call(message, QDBus::BlockWithGui, 60'000);
    }

private Q_SLOTS:
    void init() { m_desk.emplace(); }
    void cleanup() { m_desk.reset(); }

    void shouldShowWhatCommandsDo()
    {
        m_desk->desk.startBar();
        m_desk->startResident();
        m_desk->desk.awaitNoBadge();
        m_desk->lab.startMonitor();

        const auto signIn = m_desk->signIn();
        QCOMPARE(signIn.errors, ""_ba);
        QCOMPARE(signIn.output, "Signed in as ada@example.com. 16 subscriptions fetched.\n"_ba);
        QCOMPARE(signIn.complaint(), "");
        m_desk->desk.awaitBadge();

        QVERIFY(QFile::remove(m_desk->cacheFile()));
        const auto refresh = m_desk->run({u"refresh"_s});
        QCOMPARE(refresh.errors, ""_ba);
        QCOMPARE(refresh.output, "Up to date. 16 subscriptions fetched.\n"_ba);
        QVERIFY(QFile::exists(m_desk->cacheFile()));

        const auto signOut = m_desk->run({u"sign-out"_s});
        QCOMPARE(signOut.errors, ""_ba);
        QCOMPARE(signOut.output, "Signed out.\n"_ba);
        QVERIFY(!QFile::exists(m_desk->cacheFile()));
        m_desk->desk.awaitNoBadge();

        const auto late = m_desk->run({u"refresh"_s});
        QCOMPARE(late.exitCode, 1);
        QCOMPARE(late.errors, "orbitledge: You are not signed in.\n"_ba);

        const QByteArray monitored = m_desk->lab.monitored();
        for (const char *method : {"SignIn", "Refresh", "SignOut"})
            QVERIFY(monitored.contains(QByteArray("Session1; member=") + method));
        QVERIFY(!monitored.contains(DemoService::password.data()));
    }

    void shouldSayTheSameWhoeverDoesIt_data()
    {
        QTest::addColumn<bool>("isRunning");
        QTest::newRow("the command") << false;
        QTest::newRow("the program") << true;
    }
    void shouldSayTheSameWhoeverDoesIt()
    {
        QFETCH(bool, isRunning);
        FaultServer server;
        askOf(server);
        if (isRunning)
            m_desk->startResident();
        server.answerNext(FaultServer::whole(401, R"({"error":"Wrong e-mail or password."})"));
        const auto wrong = m_desk->run({u"sign-in"_s, u"a@b"_s}, "no\n");
        QCOMPARE(wrong.errors, "orbitledge: Wrong e-mail or password.\n"_ba);
        QCOMPARE(wrong.exitCode, 1);
        // What was said before is not said again.
        const auto none = m_desk->run({u"refresh"_s});
        QCOMPARE(none.errors, "orbitledge: You are not signed in.\n"_ba);
        QCOMPARE(none.exitCode, 1);

        server.answerWith(answerTo);
        QCOMPARE(m_desk->run({u"sign-in"_s, u"a@b"_s}, password).output,
            "Signed in as a@b. 1 subscription fetched.\n"_ba);
        server.answerWith([](const QByteArray & /*request*/) {
            return FaultServer::whole(503, R"({"error":"Down for a moment."})");
        });
        const auto down = m_desk->run({u"refresh"_s});
        QCOMPARE(down.errors, "orbitledge: Down for a moment.\n"_ba);
        QCOMPARE(down.exitCode, 1);
        server.answerWith(
            [](const QByteArray & /*request*/) { return FaultServer::whole(401, R"({"error":""})"); });
        const auto expired = m_desk->run({u"refresh"_s});
        QCOMPARE(expired.errors, "orbitledge: Your session expired. Please sign in again.\n"_ba);
        QCOMPARE(expired.exitCode, 1);
    }

    void shouldLeaveNoSecretOnTheBus()
    {
        FaultServer server;
        askOf(server);
        server.answerWith(answerTo);
        m_desk->startResident();
        m_desk->lab.startMonitor();
        QCOMPARE(m_desk->run({u"sign-in"_s, u"a@b"_s}, password + '\n').complaint(), "");
        QVERIFY(server.requests()[0].contains(password)); // the only place where it belongs
        QCOMPARE(m_desk->run({u"refresh"_s}).complaint(), "");
        QVERIFY(server.requests().last().contains(cookie));
        QCOMPARE(m_desk->run({u"sign-out"_s}).complaint(), "");
        const QByteArray monitored = m_desk->lab.monitored();
        QVERIFY(monitored.contains("Session1; member=SignIn"));
        QVERIFY(!monitored.contains(password));
        QVERIFY(!monitored.contains(cookie));
    }

    void shouldReadCredentialsFromNothingElse()
    {
        m_desk->startResident();
        const QString file = m_desk->lab.path(u"secret"_s);
        QFile secret(file);
        QVERIFY(secret.open(QIODevice::WriteOnly));
        secret.write(QByteArray("ada@example.com\0", 16) + DemoService::password.data());
        secret.close();
        const int ofFile = ::open(qPrintable(file), O_RDONLY | O_CLOEXEC);
        std::array<int, 2> ofPipe{};
        QCOMPARE(::pipe2(ofPipe.data(), O_CLOEXEC), 0);
        for (const int descriptor : {ofFile, ofPipe[0]}) {
            // Not even waiting for what may come through the pipe.
            const QDBusMessage answer
                = callSession(u"SignIn"_s, {QVariant::fromValue(QDBusUnixFileDescriptor(descriptor))});
            QCOMPARE(answer.type(), QDBusMessage::ErrorMessage);
            QCOMPARE(answer.errorName(), u"org.freedesktop.DBus.Error.InvalidArgs"_s);
        }
        for (const int descriptor : {ofFile, ofPipe[0], ofPipe[1]})
            ::close(descriptor);
        QCOMPARE(m_desk->run({u"refresh"_s}).errors, "orbitledge: You are not signed in.\n"_ba);
    }

    void shouldNotHandOverToAProgramThatWorksWithSomethingElse()
    {
        m_desk->startResident();
        FaultServer other;
        const QString before = m_desk->environment.value(u"ORBITLEDGE_API_URL"_s);
        askOf(other);
        const auto result = m_desk->run({u"sign-in"_s, u"a@b"_s}, password);
        QCOMPARE(result.exitCode, 1);
        QCOMPARE(result.errors,
            u"orbitledge: Orbitledge is running with the service at %1 and the data in %2. Quit it first, or "
            u"use "
            "the same.\n"_s.arg(before, m_desk->cacheFile())
                .toUtf8());
        QCOMPARE(other.connectionCount(), 0);
    }

    void shouldSayThatTheProgramDoesNotAnswer()
    {
        const QProcess &first = m_desk->startResident();
        ::kill(static_cast<pid_t>(first.processId()), SIGSTOP);
        const auto result = m_desk->run({u"refresh"_s});
        QCOMPARE(result.exitCode, 1);
        QCOMPARE(result.errors,
            "orbitledge: Orbitledge is running, but does not answer. End it, then try again.\n"_ba);
    }

    void shouldSayThatTheAnswerIsNotUnderstood_data()
    {
        QTest::addColumn<QVariantList>("answer");
        QTest::newRow("nothing") << QVariantList();
        QTest::newRow("of other types") << QVariantList{u"done"_s, 3};
        QTest::newRow("fewer than none") << QVariantList{true, QString(), qlonglong(-1)};
        QTest::newRow("a failure without a reason") << QVariantList{false, QString(), qlonglong(0)};
    }
    void shouldSayThatTheAnswerIsNotUnderstood()
    {
        QFETCH(QVariantList, answer);
        const Impostor impostor(m_desk->lab.bus(), answer);
        QProcess &command = m_desk->start({u"refresh"_s});
        const auto result = ResidentDesk::finish(command);
        QCOMPARE(result.errors,
            "orbitledge: Orbitledge, which is running, gives an answer that is not understood. It may be of "
            "another version: end it, then try again.\n"_ba);
        QCOMPARE(result.exitCode, 1);
    }

    void shouldSayThatTheProgramEnded()
    {
        FaultServer server;
        askOf(server);
        server.answerWith(noAnswer);
        QProcess &first = m_desk->startResident();
        QProcess &command = m_desk->start({u"sign-in"_s, u"a@b"_s});
        command.write(password);
        command.closeWriteChannel();
        QTRY_COMPARE_WITH_TIMEOUT(server.requests().size(), 1, 20'000);
        first.kill();
        const auto result = ResidentDesk::finish(command);
        QCOMPARE(result.errors, "orbitledge: Orbitledge ended before it was done with this. Try again.\n"_ba);
        QCOMPARE(result.exitCode, 1);
        // Nothing is asked for twice.
        QCOMPARE(server.requests().size(), 1);
    }

    void shouldLetCommandsTakeTurns()
    {
        FaultServer server;
        askOf(server);
        server.answerWith(answerTo);
        QCOMPARE(m_desk->run({u"sign-in"_s, u"a@b"_s}, password).complaint(), "");
        server.answerWith(noAnswer);
        const qsizetype before = server.requests().size();
        QProcess &first = m_desk->start({u"refresh"_s});
        QTRY_COMPARE_WITH_TIMEOUT(server.requests().size(), before + 2, 20'000);

        m_desk->lab.startMonitor();
        QProcess &second = m_desk->start({u"refresh"_s});
        m_desk->lab.awaitCall("GetNameOwner"); // it has looked for somebody else, again and again
        DesktopLab::await("the second command to wait",
            [&] { return m_desk->lab.monitored().count("member=GetNameOwner") > 3; });
        QCOMPARE(server.requests().size(), before + 2);
        server.answerWith(answerTo);
        first.kill();
        const auto result = ResidentDesk::finish(second);
        QCOMPARE(result.errors, ""_ba);
        QCOMPARE(result.complaint(), "");
        QCOMPARE(server.requests().size(), before + 4);
    }

    void shouldWaitForACommandBeforeItTouchesTheSession()
    {
        FaultServer server;
        askOf(server);
        server.answerWith(answerTo);
        QCOMPARE(m_desk->run({u"sign-in"_s, u"a@b"_s}, password).complaint(), "");
        server.answerWith(noAnswer);
        const qsizetype before = server.requests().size();
        QProcess &command = m_desk->start({u"refresh"_s});
        QTRY_COMPARE_WITH_TIMEOUT(server.requests().size(), before + 2, 20'000);

        m_desk->lab.startMonitor();
        m_desk->start({});
        m_desk->awaitPanel(true);
        QVERIFY(!m_desk->lab.monitored().contains("org.freedesktop.Secret"));
        // What comes now is for the program, in its turn.
        QProcess &next = m_desk->start({u"refresh"_s});
        m_desk->lab.awaitCall("Refresh");
        QCOMPARE(server.requests().size(), before + 2);
        QCOMPARE(next.state(), QProcess::Running);

        server.answerWith(answerTo);
        command.kill();
        const auto result = ResidentDesk::finish(next);
        QCOMPARE(result.errors, ""_ba);
        QCOMPARE(result.output, "Up to date. 1 subscription fetched.\n"_ba);
        QVERIFY(m_desk->isPanelOpen());
    }

    void shouldQuitWhileItWaitsForACommand()
    {
        FaultServer server;
        askOf(server);
        server.answerWith(answerTo);
        QCOMPARE(m_desk->run({u"sign-in"_s, u"a@b"_s}, password).complaint(), "");
        server.answerWith(noAnswer);
        const qsizetype before = server.requests().size();
        QProcess &command = m_desk->start({u"refresh"_s});
        QTRY_COMPARE_WITH_TIMEOUT(server.requests().size(), before + 2, 20'000);
        QProcess &program = m_desk->startResident();
        QCOMPARE(m_desk->run({u"--quit"_s}).complaint(), "");
        QCOMPARE(ResidentDesk::finish(program).complaint(), "");
        QCOMPARE(command.state(), QProcess::Running);
    }

    void shouldQuitWhileTheServiceIsMute()
    {
        FaultServer server;
        askOf(server);
        server.answerWith(answerTo);
        QCOMPARE(m_desk->run({u"sign-in"_s, u"a@b"_s}, password).complaint(), "");
        server.answerWith(noAnswer);
        const qsizetype before = server.requests().size();
        QProcess &program = m_desk->startResident();
        QTRY_VERIFY_WITH_TIMEOUT(server.requests().size() > before, 20'000);
        QCOMPARE(m_desk->run({u"--quit"_s}).complaint(), "");
        QCOMPARE(ResidentDesk::finish(program).complaint(), "");
    }
};

ORBITLEDGE_TEST_MAIN(HandOverTest)
#include "HandOverTest.moc"
