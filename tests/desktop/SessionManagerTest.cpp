#include "support/ProgramDesk.h"
#include "support/TestMain.h"

#include <QProcess>

using namespace orbitledge::testing;
using namespace Qt::StringLiterals;

/// The program in a session whose manager saves what runs, to start it again with the next one.
class SessionManagerTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    /// What starts with the session is for the person's own switch to say.
    void shouldNotBeStartedAgainWithTheSession()
    {
        ProgramDesk desk;
        QProcess manager;
        manager.setProcessEnvironment(desk.environment());
        manager.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        manager.setChildProcessModifier([] { ::prctl(PR_SET_PDEATHSIG, SIGKILL); });
        manager.start(QStringLiteral(ORBITLEDGE_SESSION_MANAGER), QStringList());
        QByteArray heard;
        const auto hear = [&](const QByteArray &words) {
            DesktopLab::await("the session manager", [&] {
                manager.waitForReadyRead(1);
                heard += manager.readAllStandardOutput();
                return heard.contains(words);
            });
        };
        hear("\n");
        desk.set("SESSION_MANAGER", QString::fromLocal8Bit(heard.left(heard.indexOf('\n'))));
        desk.start({u"--background"_s});
        hear("saved 1\n");
        QVERIFY2(heard.contains("restart 3\n"), heard.constData()); // SmRestartNever
        // And it goes when the session does.
        manager.closeWriteChannel();
        hear("closed\n");
        QVERIFY(awaitEnd(*desk.program()));
        QCOMPARE(desk.program()->exitStatus(), QProcess::NormalExit);
        QCOMPARE(desk.program()->exitCode(), 0);
        endAtOnce(manager);
    }
};

ORBITLEDGE_TEST_MAIN(SessionManagerTest)
#include "SessionManagerTest.moc"
