#include "platform/httpprocess/ProcessHttpSession.h"

#include "support/FaultServer.h"
#include "support/TestMain.h"

#include <QFile>
#include <QTemporaryDir>

#include <csignal>
#include <fstream>
#include <memory>
#include <set>

using namespace orbitledge;
using namespace orbitledge::testing;
using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

using Kind = TransportFailure::Kind;

namespace {

using Outcome = tl::expected<HttpResponse, TransportFailure>;

const std::filesystem::path program = ORBITLEDGE_HTTP_PROGRAM;

HttpRequest get(const QUrl &url)
{
    HttpRequest request;
    request.url = url;
    return request;
}

/// The processes that this one has started and that still run.
std::set<pid_t> programs()
{
    std::set<pid_t> found;
    for (const auto &task : std::filesystem::directory_iterator("/proc/self/task")) {
        std::ifstream list(task.path() / "children");
        for (pid_t process = 0; list >> process;)
            found.insert(process);
    }
    return found;
}

std::string nameOf(pid_t process)
{
    std::ifstream file("/proc/" + std::to_string(process) + "/comm");
    std::string name;
    std::getline(file, name);
    return name;
}

} // namespace

/// The client's own side of it; what it does with answers is tested for all clients.
class ProcessHttpSessionTest : public QObject {
    Q_OBJECT

private:
    std::unique_ptr<FaultServer> m_server;

private Q_SLOTS:
    void init()
    {
        m_server = std::make_unique<FaultServer>();
        m_server->answerAll(FaultServer::whole(200, "fine"));
    }

    void cleanup() { QTRY_VERIFY(programs().empty()); }

    void shouldRunTheProgramOnlyWhileItIsNeeded()
    {
        ProcessHttpSession session(program, "Agent/1");
        QVERIFY(programs().empty());
        for (int i = 0; i < 2; ++i) {
            QVERIFY(QCoro::waitFor(session.send(get(m_server->url()))));
            QCOMPARE(programs().size(), 1U);
            QCOMPARE(nameOf(*programs().begin()), "orbitledge-http");
            QTRY_VERIFY(programs().empty());
        }
    }

    void shouldSendByOneProgramWhatFollowsSoon()
    {
        ProcessHttpSession session(program, "Agent/1");
        QVERIFY(QCoro::waitFor(session.send(get(m_server->url()))));
        const auto first = programs();
        QVERIFY(QCoro::waitFor(session.send(get(m_server->url()))));
        QVERIFY(programs() == first);
    }

    void shouldTellApartWhatIsUnderWayTogether()
    {
        const QByteArray large(8 << 20, 'x');
        m_server->answerAll(FaultServer::whole(200, large));
        ProcessHttpSession session(program, "Agent/1");
        std::vector<QCoro::Task<Outcome>> tasks;
        tasks.push_back(session.send(get(m_server->url())));
        tasks.push_back(session.send(get(QUrl(u"http://127.0.0.1:1/"_s))));
        tasks.push_back(session.send(get(m_server->url())));
        const Outcome first = QCoro::waitFor(tasks[0]);
        const Outcome second = QCoro::waitFor(tasks[1]);
        const Outcome third = QCoro::waitFor(tasks[2]);
        QVERIFY(first && !second && third);
        QVERIFY(first->body == large && third->body == large);
        QCOMPARE(second.error().kind, Kind::CannotConnect);
    }

    void shouldSayThatAProgramWasKilled()
    {
        m_server->answerAll({FaultServer::StayMute{}});
        ProcessHttpSession session(program, "Agent/1");
        auto task = session.send(get(m_server->url()));
        QTRY_COMPARE(m_server->requests().size(), 1);
        ::kill(*programs().begin(), SIGKILL);
        const Outcome outcome = QCoro::waitFor(task);
        QVERIFY(!outcome);
        QCOMPARE(outcome.error().kind, Kind::ConnectionLost);
        QCOMPARE(m_server->requests().size(), 1);
        m_server->answerAll(FaultServer::whole(200, "fine"));
        QVERIFY(QCoro::waitFor(session.send(get(m_server->url()))));
    }

    void shouldNotWaitForAProgramThatIsStopped()
    {
        HttpSessionConfiguration configuration;
        configuration.resourceTimeout = 1ms;
        ProcessHttpSession session(program, "Agent/1", configuration);
        QCoro::waitFor(session.send(get(m_server->url()))); // in time or not
        QCOMPARE(programs().size(), 1U);
        ::kill(*programs().begin(), SIGSTOP);
        const Outcome outcome = QCoro::waitFor(session.send(get(m_server->url())));
        QVERIFY(!outcome);
        QCOMPARE(outcome.error().kind, Kind::TimedOut);
    }

    void shouldSayThatThereIsNoProgram()
    {
        ProcessHttpSession session("/nowhere/program", "Agent/1");
        const Outcome outcome = QCoro::waitFor(session.send(get(m_server->url())));
        QVERIFY(!outcome);
        QCOMPARE(outcome.error().kind, Kind::Other);
    }

    void shouldSayThatAProgramIsAnother_data()
    {
        QTest::addColumn<QByteArray>("path");
        QTest::newRow("ends at once") << "/bin/true"_ba;
        QTest::newRow("fails at once") << "/bin/false"_ba;
        QTest::newRow("says what it is told") << "/bin/cat"_ba;
        QTest::newRow("never ends to talk") << "/usr/bin/yes"_ba;
    }

    void shouldSayThatAProgramIsAnother()
    {
        QFETCH(QByteArray, path);
        ProcessHttpSession session(path.toStdString(), "Agent/1");
        const Outcome outcome = QCoro::waitFor(session.send(get(m_server->url())));
        QVERIFY(!outcome);
        QCOMPARE(outcome.error().kind, Kind::Other);
    }

    void shouldKeepToTheProgramThatWasThere()
    {
        const QTemporaryDir folder;
        const QString path = folder.filePath(u"program"_s);
        QVERIFY(QFile::copy(QString::fromStdString(program.string()), path));
        ProcessHttpSession session(path.toStdString(), "Agent/1");
        QVERIFY(QFile::remove(path));
        QVERIFY(QFile::copy(u"/bin/false"_s, path));
        QVERIFY(QCoro::waitFor(session.send(get(m_server->url()))));
    }

    void shouldEndWithTheOneWhoAsks()
    {
        m_server->answerAll({FaultServer::StayMute{}});
        auto session = std::make_unique<ProcessHttpSession>(program, "Agent/1");
        auto task = session->send(get(m_server->url()));
        QTRY_COMPARE(m_server->requests().size(), 1);
        session.reset();
        const Outcome outcome = QCoro::waitFor(task);
        QVERIFY(!outcome);
        QCOMPARE(outcome.error().kind, Kind::Cancelled);
    }
};

ORBITLEDGE_TEST_MAIN(ProcessHttpSessionTest)
#include "ProcessHttpSessionTest.moc"
