#include "composition/ProgramLocks.h"

#include "support/TestMain.h"

#include <QDir>

using namespace orbitledge;
using namespace std::chrono_literals;

namespace {

const QDeadlineTimer never(QDeadlineTimer::Forever);
const QDeadlineTimer atOnce(0);

} // namespace

class ProgramLocksTest : public QObject {
    Q_OBJECT

    QTemporaryDir m_runtime;

private Q_SLOTS:
    void init() { qputenv("XDG_RUNTIME_DIR", m_runtime.path().toUtf8()); }

    void shouldGiveEachLockToOneAtATime()
    {
        auto instance = QCoro::waitFor(ProgramLocks::takeInstance(atOnce));
        QVERIFY(instance.has_value());
        QVERIFY(instance->has_value());
        QVERIFY(!QCoro::waitFor(ProgramLocks::takeInstance(atOnce))->has_value());
        auto session = ProgramLocks::takeSession();
        QVERIFY(session.has_value());
        QVERIFY(session->has_value());
        QVERIFY(!ProgramLocks::takeSession()->has_value());

        session->reset();
        instance->reset();
        QVERIFY(ProgramLocks::takeSession()->has_value());
        QVERIFY(QCoro::waitFor(ProgramLocks::takeInstance(atOnce))->has_value());
    }

    void shouldWaitForTheOneWhoIsAboutToEnd()
    {
        auto first = QCoro::waitFor(ProgramLocks::takeInstance(atOnce));
        QVERIFY(first->has_value());
        auto taking = ProgramLocks::takeInstance(never);
        QVERIFY(!taking.isReady());
        first->reset();
        QVERIFY(QCoro::waitFor(std::move(taking))->has_value());
    }

    void shouldWaitNoLongerThanUntilTheDeadline()
    {
        const auto first = QCoro::waitFor(ProgramLocks::takeInstance(atOnce));
        QVERIFY(first->has_value());
        const QDeadlineTimer deadline(120);
        const auto second = QCoro::waitFor(ProgramLocks::takeInstance(deadline));
        QVERIFY(second.has_value());
        QVERIFY(!second->has_value());
        QVERIFY(deadline.hasExpired());
    }

    void shouldAwaitTheEndOfAnothersSession()
    {
        auto first = ProgramLocks::takeSession();
        QVERIFY(first->has_value());
        auto awaiting = ProgramLocks::awaitSession();
        QVERIFY(!awaiting.isReady());
        first->reset();
        QVERIFY(QCoro::waitFor(std::move(awaiting))->has_value());
    }

    void shouldLieBesideTheDataWhereThereIsNoFolderForRunningPrograms_data()
    {
        QTest::addColumn<QByteArray>("runtime");
        QTest::newRow("none is told of") << QByteArray();
        QTest::newRow("it cannot be made") << QByteArray("/proc/none");
    }
    void shouldLieBesideTheDataWhereThereIsNoFolderForRunningPrograms()
    {
        QFETCH(QByteArray, runtime);
        // As in a job of cron, or after su.
        if (runtime.isEmpty())
            qunsetenv("XDG_RUNTIME_DIR");
        else
            qputenv("XDG_RUNTIME_DIR", runtime);
        const auto session = ProgramLocks::takeSession();
        QVERIFY(session.has_value());
        QVERIFY(session->has_value());
        QVERIFY(!ProgramLocks::takeSession()->has_value());
        const QDir beside(
            qEnvironmentVariable("XDG_DATA_HOME") + QStringLiteral("/app.orbitledge.Orbitledge"));
        QVERIFY(!beside.entryList({QStringLiteral("*lock*")}, QDir::Files | QDir::Hidden).isEmpty());
    }

    void shouldHaveAFreeSessionAtOnce()
    {
        // The start of the program goes on without a turn of its event loop.
        const auto awaiting = ProgramLocks::awaitSession();
        QVERIFY(awaiting.isReady());
    }
};

ORBITLEDGE_TEST_MAIN(ProgramLocksTest)
#include "ProgramLocksTest.moc"
