#include "model/RecordCodecs.h"
#include "state/CacheSnapshot.h"
#include "support/Browser.h"
#include "support/DemoService.h"
#include "support/DesktopLab.h"
#include "support/FaultServer.h"
#include "support/ProgramEnd.h"
#include "support/SampleRecords.h"
#include "support/TestMain.h"

#include <QDirIterator>

#include <optional>

using namespace orbitledge;
using namespace orbitledge::testing;
using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

const QByteArray password = "pass-phrase-that-nobody-sees";
const QByteArray cookie = "cookie-value-that-nobody-sees";

QByteArray memoryOf(qint64 process, quint64 from, quint64 to)
{
    QFile memory(u"/proc/%1/mem"_s.arg(process));
    if (!memory.open(QIODevice::ReadOnly | QIODevice::Unbuffered) || !memory.seek(qint64(from)))
        return {};
    return memory.read(qint64(to - from));
}

/// What a program keeps in its global variables: the writable parts of the file it was started from, and the
/// zeroes behind them.
QByteArray globalsOf(qint64 process)
{
    QFile maps(u"/proc/%1/maps"_s.arg(process));
    QByteArray globals;
    if (!maps.open(QIODevice::ReadOnly))
        return globals;
    // Up to where the program's own parts reach; what is nameless behind a gap is somebody else's.
    quint64 programEnd = 0;
    for (const QByteArray &line : maps.readAll().split('\n')) {
        const QList<QByteArray> columns = line.simplified().split(' ');
        if (columns.size() < 5)
            continue;
        const QList<QByteArray> range = columns[0].split('-');
        const quint64 start = range[0].toULongLong(nullptr, 16);
        const quint64 end = range[1].toULongLong(nullptr, 16);
        const bool isProgram = columns.size() > 5 && columns[5].endsWith("/orbitledge-command");
        const bool isNameless = columns.size() == 5;
        if (!isProgram && !(isNameless && start == programEnd))
            continue;
        programEnd = end;
        if (columns[1].startsWith("rw"))
            globals += memoryOf(process, start, end);
    }
    return globals;
}

QByteArray contentOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

/// A shell on a terminal of its own, and what has appeared there.
class TerminalProgram {
public:
    TerminalProgram(const QProcessEnvironment &environment, const QString &command)
    {
        m_process.setProcessEnvironment(environment);
        m_process.start(u"script"_s, {u"-qec"_s, command, u"/dev/null"_s});
    }

    void type(const QByteArray &keys) { m_process.write(keys); }
    bool shows(const QByteArray &text) { return shown().contains(text); }
    const QByteArray &shown()
    {
        m_shown += m_process.readAll();
        return m_shown;
    }
    [[nodiscard]] bool hasEnded() const { return m_process.state() == QProcess::NotRunning; }

private:
    QProcess m_process;
    QByteArray m_shown;
};

} // namespace

/// The program in a session with a real keyring, with a real service and a real browser beside it.
class SessionProgramTest : public QObject {
    Q_OBJECT

private:
    std::optional<DesktopLab> m_lab;
    QUrl m_service;

    /// The session's, with the service that the test is about.
    [[nodiscard]] QProcessEnvironment serviceEnvironment() const
    {
        QProcessEnvironment environment = m_lab->environment();
        environment.insert(u"ORBITLEDGE_API_URL"_s, m_service.toString());
        return environment;
    }

    [[nodiscard]] std::unique_ptr<QProcess> start(const QStringList &arguments, const QByteArray &input = {},
        const QString &locale = u"C.UTF-8"_s) const
    {
        auto process = std::make_unique<QProcess>();
        QProcessEnvironment environment = serviceEnvironment();
        environment.insert(u"LC_ALL"_s, locale);
        process->setProcessEnvironment(environment);
        process->start(QStringLiteral(ORBITLEDGE_PROGRAM), arguments);
        process->write(input);
        process->closeWriteChannel();
        return process;
    }

    static ProgramEnd finish(QProcess &process)
    {
        if (!process.waitForFinished(60'000) || process.exitStatus() != QProcess::NormalExit)
            return {};
        return {process.exitCode(), process.readAllStandardOutput(), process.readAllStandardError()};
    }

    [[nodiscard]] ProgramEnd run(const QStringList &arguments, const QByteArray &input = {},
        const QString &locale = u"C.UTF-8"_s) const
    {
        return finish(*start(arguments, input, locale));
    }

    [[nodiscard]] QString cacheFile() const
    {
        return m_lab->environment().value(u"XDG_DATA_HOME"_s)
            + u"/app.orbitledge.Orbitledge/subscription-snapshot-v1.json"_s;
    }

    [[nodiscard]] QByteArray keyringItem() const
    {
        QProcess search;
        search.setProcessEnvironment(m_lab->environment());
        search.setProcessChannelMode(QProcess::MergedChannels);
        search.start(
            u"secret-tool"_s, {u"search"_s, u"--all"_s, u"server"_s, u"app.orbitledge.Orbitledge"_s});
        return search.waitForFinished() ? search.readAll() : QByteArray();
    }

    /// An answer to signing in, and to everything asked afterwards.
    static FaultServer::Answer answerTo(const QByteArray &request)
    {
        if (request.startsWith("POST /auth/login "))
            return FaultServer::whole(200, "{\"user\":" + encodeJson(sampleProfile()) + '}',
                "Set-Cookie: orbitledge_user_session=" + cookie + "; Max-Age=3600\r\n");
        if (request.startsWith("GET /auth/profile "))
            return FaultServer::whole(200, encodeJson(sampleProfile()));
        return FaultServer::whole(200, '[' + encodeJson(sampleSubscription()) + ']');
    }

private Q_SLOTS:
    void init()
    {
        m_lab.emplace();
        m_lab->startKeyring(DesktopLab::Keyring::Unlocked);
    }
    void cleanup() { m_lab.reset(); }

    void shouldGoAllTheWay()
    {
        DemoService service;
        QVERIFY2(service.start(), qPrintable(service.problem()));
        m_service = service.baseUrl();

        const QString email(DemoService::email);
        const ProgramEnd signIn = run({u"sign-in"_s, email}, QByteArray(DemoService::password.data()) + '\n');
        QCOMPARE(signIn.errors, ""_ba);
        QCOMPARE(signIn.output, "Signed in as ada@example.com. 16 subscriptions fetched.\n"_ba);
        QCOMPARE(signIn.complaint(), "");
        QVERIFY(keyringItem().contains("label = Orbitledge session"));
        QVERIFY(!(QFileInfo(cacheFile()).permissions()
            & (QFile::ReadGroup | QFile::WriteGroup | QFile::ReadOther | QFile::WriteOther)));

        QVERIFY(QFile::remove(cacheFile()));
        const ProgramEnd refresh = run({u"refresh"_s});
        QCOMPARE(refresh.errors, ""_ba);
        QCOMPARE(refresh.output, "Up to date. 16 subscriptions fetched.\n"_ba);
        const ProgramEnd timeline = run({u"timeline"_s});
        QCOMPARE(timeline.complaint(), "");
        QVERIFY(timeline.output.contains("Northlight Video"));

        const QString logos = m_lab->path(u"cache/app.orbitledge.Orbitledge/logos"_s);
        QVERIFY(QDir().mkpath(logos) && QFile::copy(QStringLiteral(ORBITLEDGE_PROGRAM), logos + u"/logo"_s));

        const ProgramEnd signOut = run({u"sign-out"_s});
        QCOMPARE(signOut.errors, ""_ba);
        QVERIFY(!QFile::exists(logos));
        QCOMPARE(signOut.output, "Signed out.\n"_ba);
        QVERIFY(!QFile::exists(cacheFile()));
        QVERIFY(!keyringItem().contains("Orbitledge"));
        const ProgramEnd late = run({u"refresh"_s});
        QCOMPARE(late.exitCode, 1);
        QCOMPARE(late.errors, "orbitledge: You are not signed in.\n"_ba);
    }

    void shouldSeeWhatSomebodyEditsInABrowser()
    {
        QVERIFY2(Browser::isInstalled(), "the packages chromium and chromium-driver are needed");
        DemoService service;
        QVERIFY2(service.start({}, {u"--today"_s, u"2026-03-11"_s}), qPrintable(service.problem()));
        m_service = service.baseUrl();
        const QString email(DemoService::email);
        const QString secret(DemoService::password);
        QCOMPARE(run({u"sign-in"_s, email}, secret.toUtf8()).complaint(), "");

        Browser browser;
        QVERIFY2(browser.start(), qPrintable(browser.problem()));
        QVERIFY(browser.open(m_service.resolved(QUrl(u"/calendar"_s))));
        QVERIFY(browser.type(u"#email"_s, email));
        QVERIFY(browser.type(u"#password"_s, secret));
        QVERIFY2(browser.follow(u"#sign-in"_s), qPrintable(browser.problem()));
        QVERIFY2(browser.follow(u"td.today a.chip"_s), qPrintable(browser.problem()));
        QVERIFY(browser.replace(u"#cost"_s, u"123.45"_s));
        QVERIFY2(browser.follow(u"#save"_s), qPrintable(browser.problem()));

        QCOMPARE(run({u"refresh"_s}).complaint(), "");
        const auto snapshot = decodeCacheSnapshot(contentOf(cacheFile()));
        QVERIFY(snapshot);
        const auto edited
            = std::ranges::find(snapshot->subscriptions, u"Northlight Video"_s, &Subscription::name);
        QVERIFY(edited != snapshot->subscriptions.end());
        QCOMPARE(edited->cost, *Decimal::fromText("123.45"));
    }

    void shouldTellWhatTheServiceSaysOfAWrongPassword()
    {
        DemoService service;
        QVERIFY2(service.start(), qPrintable(service.problem()));
        m_service = service.baseUrl();
        const ProgramEnd result = run({u"sign-in"_s, QString(DemoService::email)}, "not the password\n");
        QCOMPARE(result.exitCode, 1);
        QCOMPARE(result.output, ""_ba);
        QVERIFY(result.errors.startsWith("orbitledge: ") && result.errors.size() > 20);
        QCOMPARE(result.errors.count('\n'), 1);
        QVERIFY(!result.errors.contains("not the password"));
        QVERIFY(!keyringItem().contains("Orbitledge"));
        QVERIFY(!QFile::exists(cacheFile()));
    }

    void shouldAskNobodyWithoutASession()
    {
        FaultServer server;
        m_service = server.url();
        for (const QString &locale : {u"C.UTF-8"_s, u"C"_s, u"xx_XX"_s, u"en_US.ISO-8859-1"_s}) {
            const ProgramEnd result = run({u"refresh"_s}, {}, locale);
            QCOMPARE(result.exitCode, 1);
            QCOMPARE(result.output, ""_ba);
            QCOMPARE(result.errors, "orbitledge: You are not signed in.\n"_ba);
        }
        QCOMPARE(server.connectionCount(), 0);
    }

    void shouldSayThatTheSessionExpired()
    {
        FaultServer server;
        m_service = server.url();
        server.answerWith(answerTo);
        QCOMPARE(run({u"sign-in"_s, u"a@b"_s}, password).complaint(), "");
        const QByteArray before = contentOf(cacheFile());
        server.answerWith(
            [](const QByteArray & /*request*/) { return FaultServer::whole(401, "{\"error\":\"\"}"); });
        const ProgramEnd result = run({u"refresh"_s});
        QCOMPARE(result.exitCode, 1);
        QCOMPARE(result.errors, "orbitledge: Your session expired. Please sign in again.\n"_ba);
        QVERIFY(!keyringItem().contains("Orbitledge"));
        QCOMPARE(contentOf(cacheFile()), before);
        QCOMPARE(run({u"refresh"_s}).errors, "orbitledge: You are not signed in.\n"_ba);
    }

    void shouldKeepTheDataWhereTheNetworkAnswersWithSomethingElse()
    {
        FaultServer server;
        m_service = server.url();
        server.answerWith(answerTo);
        QCOMPARE(run({u"sign-in"_s, u"a@b"_s}, password).complaint(), "");
        const QByteArray before = contentOf(cacheFile());
        server.answerWith([](const QByteArray & /*request*/) {
            return FaultServer::whole(
                200, "<html>Welcome to the airport</html>", "Content-Type: text/html\r\n");
        });
        const ProgramEnd result = run({u"refresh"_s});
        QCOMPARE(result.exitCode, 1);
        QCOMPARE(result.errors,
            "orbitledge: The server response could not be read: The data couldn\u2019t be read because it "
            "isn\u2019t in the correct format.\n"_ba);
        QCOMPARE(contentOf(cacheFile()), before);
        QVERIFY(keyringItem().contains("Orbitledge session"));
    }

    void shouldRefuseAnAddressThatIsNotSafeBeforeAnythingElse()
    {
        m_service = QUrl(u"http://example.com/"_s);
        for (const QStringList &arguments :
            {QStringList{u"sign-in"_s, u"a@b"_s}, {u"refresh"_s}, {u"sign-out"_s}}) {
            const ProgramEnd result = run(arguments, password);
            QCOMPARE(result.exitCode, 1);
            QVERIFY(result.errors.startsWith("orbitledge: ORBITLEDGE_API_URL must begin with https://"));
            QCOMPARE(result.errors.count('\n'), 1);
        }
    }

    void shouldSayThatThereIsNoKeyring()
    {
        m_lab.emplace();
        FaultServer server;
        m_service = server.url();
        server.answerWith(answerTo);
        const ProgramEnd result = run({u"sign-in"_s, u"a@b"_s}, password);
        QCOMPARE(result.exitCode, 1);
        QCOMPARE(result.errors,
            "orbitledge: The session could not be stored securely: Keychain error: No keyring is available. "
            "Install and start GNOME Keyring, KWallet or KeePassXC, then try again.\n"_ba);
        QVERIFY(!QFile::exists(cacheFile()));
    }

    void shouldNotTakeOtherFilesForStreamsThatAreClosed_data()
    {
        QTest::addColumn<QString>("command");
        QTest::addColumn<int>("exitCode");
        QTest::addColumn<QByteArray>("errors");
        const QByteArray notWritten = "orbitledge: The output could not be written\n";
        QTest::newRow("no input to read a password from")
            << u"sign-in a@b <&-"_s << 1
            << "orbitledge: The password could not be read: Bad file descriptor\n"_ba;
        QTest::newRow("no input") << u"refresh <&-"_s << 0 << QByteArray();
        QTest::newRow("no output") << u"refresh >&-"_s << 1 << notWritten;
        QTest::newRow("neither input nor output") << u"refresh <&- >&-"_s << 1 << notWritten;
        QTest::newRow("nothing at all") << u"refresh <&- >&- 2>&-"_s << 1 << QByteArray();
    }
    void shouldNotTakeOtherFilesForStreamsThatAreClosed()
    {
        QFETCH(QString, command);
        QFETCH(int, exitCode);
        QFETCH(QByteArray, errors);
        FaultServer server;
        server.answerWith(answerTo);
        m_service = server.url();
        QCOMPARE(run({u"sign-in"_s, u"a@b"_s}, password).complaint(), "");
        const QByteArray before = contentOf(cacheFile());
        const qsizetype asked = server.requests().size();

        QProcess shell;
        QProcessEnvironment environment = m_lab->environment();
        environment.insert(u"ORBITLEDGE_API_URL"_s, m_service.toString());
        environment.insert(u"LC_ALL"_s, u"C.UTF-8"_s);
        shell.setProcessEnvironment(environment);
        shell.start(u"/bin/sh"_s, {u"-c"_s, u"exec \"$0\" "_s + command, QStringLiteral(ORBITLEDGE_PROGRAM)});
        const ProgramEnd result = finish(shell);
        QCOMPARE(result.exitCode, exitCode);
        QCOMPARE(result.errors, errors);
        QCOMPARE(server.requests().size(), asked + (command.startsWith(u"sign-in") ? 0 : 2));
        const auto withoutMoment
            = [](QByteArray json) { return json.remove(0, json.indexOf(",\"profile\"")); };
        QCOMPARE(withoutMoment(contentOf(cacheFile())), withoutMoment(before));
    }

    void shouldLeaveNoTraceOfSecrets()
    {
        FaultServer server;
        m_service = server.url();
        m_lab->startMonitor();
        QByteArray words;

        // While the password is under way
        server.answerNext({FaultServer::StayMute{}});
        const auto signingIn = start({u"sign-in"_s, u"ada@example.com"_s}, password + '\n');
        QTRY_COMPARE_WITH_TIMEOUT(server.requests().size(), 1, 20'000);
        QVERIFY(server.requests()[0].contains(password)); // the only place where it belongs
        const auto snoop = [&words](qint64 process) {
            for (const char *file : {"cmdline", "environ"})
                words += contentOf(u"/proc/%1/%2"_s.arg(process).arg(QLatin1StringView(file)));
            const QByteArray globals = globalsOf(process);
            QVERIFY(globals.size() > 1000);
            words += globals;
        };
        snoop(signingIn->processId());
        signingIn->kill();
        QVERIFY(signingIn->waitForFinished());

        // Good and bad ends
        server.answerWith(answerTo);
        const auto note = [&words](const ProgramEnd &result) { words += result.output + result.errors; };
        note(run({u"sign-in"_s, u"ada@example.com"_s}, password + '\n'));
        QVERIFY(server.requests().last().contains(cookie));
        note(run({u"refresh"_s}));
        server.answerNext(FaultServer::whole(200, password + cookie));
        note(run({u"sign-in"_s, u"ada@example.com"_s}, password + '\n'));
        for (const char *headers : {"Location: http://localhost:1/\r\n", "Location: ftp://nowhere/\r\n"}) {
            server.answerNext(FaultServer::whole(302, cookie, headers));
            note(run({u"refresh"_s}));
        }

        // While the cookie is under way
        server.answerWith(
            [](const QByteArray & /*request*/) -> FaultServer::Answer { return {FaultServer::StayMute{}}; });
        const qsizetype before = server.requests().size();
        const auto refreshing = start({u"refresh"_s});
        QTRY_VERIFY_WITH_TIMEOUT(server.requests().size() > before, 20'000);
        QVERIFY(server.requests().last().contains("Cookie: orbitledge_user_session=" + cookie));
        snoop(refreshing->processId());
        refreshing->kill();
        QVERIFY(refreshing->waitForFinished());

        // Everything in the session's folders, and everything that passed over its bus
        words += m_lab->monitored();
        int files = 0;
        QDirIterator iterator(
            m_lab->path(QString()), QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
        while (iterator.hasNext()) {
            words += contentOf(iterator.next());
            ++files;
        }
        QVERIFY(files > 1);
        QVERIFY(words.contains("Subscription 0")); // the cache file was among them
        QVERIFY(!words.contains(password));
        QVERIFY(!words.contains(cookie));
    }

    void shouldAskOnTheTerminalWithoutEcho()
    {
        FaultServer server;
        server.answerWith(answerTo);
        m_service = server.url();
        TerminalProgram terminal(
            serviceEnvironment(), u"'%1' sign-in a@b; stty -a"_s.arg(QStringLiteral(ORBITLEDGE_PROGRAM)));
        QTRY_VERIFY_WITH_TIMEOUT(terminal.shows("Password for a@b: "), 20'000);
        terminal.type(password + '\n');
        QTRY_VERIFY_WITH_TIMEOUT(terminal.shows("Signed in as a@b."), 20'000);
        QTRY_VERIFY_WITH_TIMEOUT(terminal.shows(" echo "), 20'000); // again
        QTRY_VERIFY_WITH_TIMEOUT(terminal.hasEnded(), 20'000);
        QVERIFY(!terminal.shown().contains(password));
        QVERIFY(server.requests().value(0).contains(password + '"'));
    }

    void shouldAskOnATerminalThatIsOpenForReadingOnly()
    {
        m_service = QUrl(u"http://127.0.0.1:9/"_s);
        TerminalProgram terminal(
            serviceEnvironment(), u"'%1' sign-in a@b </dev/tty"_s.arg(QStringLiteral(ORBITLEDGE_PROGRAM)));
        QTRY_VERIFY_WITH_TIMEOUT(terminal.shows("Password for a@b: "), 20'000);
        terminal.type(password + '\n');
        QTRY_VERIFY_WITH_TIMEOUT(terminal.shows("Could not connect to the server."), 20'000);
        QTRY_VERIFY_WITH_TIMEOUT(terminal.hasEnded(), 20'000);
        QVERIFY(!terminal.shown().contains(password));
    }

    void shouldGiveTheTerminalBackWhereItIsInterrupted()
    {
        m_service = QUrl(u"http://127.0.0.1:9/"_s);
        TerminalProgram terminal(serviceEnvironment(),
            u"trap : INT; '%1' sign-in a@b; echo \"status $?\"; stty -a"_s.arg(
                QStringLiteral(ORBITLEDGE_PROGRAM)));
        QTRY_VERIFY_WITH_TIMEOUT(terminal.shows("Password for a@b: "), 20'000);
        terminal.type("half\x03");
        QTRY_VERIFY_WITH_TIMEOUT(terminal.shows("status 130"), 20'000);
        QTRY_VERIFY_WITH_TIMEOUT(terminal.shows(" echo "), 20'000);
        QTRY_VERIFY_WITH_TIMEOUT(terminal.hasEnded(), 20'000);
        QVERIFY(!terminal.shown().contains("half"));
    }
};

ORBITLEDGE_TEST_MAIN(SessionProgramTest)
#include "SessionProgramTest.moc"
