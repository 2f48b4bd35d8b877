// The whole program in a real desktop, while nobody looks at it, and over many who do.

#include "support/DemoService.h"
#include "support/ProcessActivity.h"
#include "support/TestMain.h"
#include "support/XfceDesk.h"

#include <QElapsedTimer>

#include <sys/prctl.h>

#include <csignal>
#include <optional>

using namespace orbitledge;
using namespace orbitledge::testing;
using namespace Qt::StringLiterals;

class PanelAtRestTest : public QObject {
    Q_OBJECT

private:
    std::optional<DesktopLab> m_lab;
    std::optional<XfceDesk> m_desk;
    DemoService m_service;
    QProcessEnvironment m_environment;
    std::unique_ptr<QProcess> m_program;

    void signIn()
    {
        QProcess program;
        program.setProcessEnvironment(m_environment);
        program.start(QStringLiteral(ORBITLEDGE_PROGRAM), {u"sign-in"_s, QString(DemoService::email)});
        program.write(QByteArray(DemoService::password.data()) + '\n');
        program.closeWriteChannel();
        QVERIFY(program.waitForFinished());
        QCOMPARE(program.exitCode(), 0);
    }

    /// To the icon, which the pointer then stays on.
    void startInBackground()
    {
        m_program = std::make_unique<QProcess>();
        m_program->setProcessEnvironment(m_environment);
        m_program->setProcessChannelMode(QProcess::ForwardedErrorChannel);
        m_program->setChildProcessModifier([] { ::prctl(PR_SET_PDEATHSIG, SIGKILL); });
        m_program->start(QStringLiteral(ORBITLEDGE_PROGRAM), {u"--background"_s});
        QVERIFY(m_program->waitForStarted());
        m_desk->pointAt(m_desk->awaitBadge().center());
    }

    void click() { m_lab->run(u"xdotool"_s, {u"click"_s, u"1"_s}); }
    void awaitPanel(bool isOpen)
    {
        DesktopLab::await("the panel", [&] { return m_desk->isWindowOpen(u"Orbitledge"_s) == isOpen; });
    }
    void openAndClose()
    {
        click();
        awaitPanel(true);
        click();
        awaitPanel(false);
    }

    /// Until it has slept for a while. What never sleeps for so long is told of by what is measured then.
    void awaitRest()
    {
        constexpr qint64 longEnough = 3000;
        constexpr int patience = 60'000;
        ProcessActivity last(m_program->processId());
        QElapsedTimer sinceLast;
        sinceLast.start();
        (void)QTest::qWaitFor(
            [&] {
                const ProcessActivity now(m_program->processId());
                // Those that the toolkit draws with end when they were idle for half a minute.
                if (now.wakeUpsSince(last) > 0 || now.hasThread(u"Thread (pooled)"_s)) {
                    last = now;
                    sinceLast.start();
                }
                return sinceLast.hasExpired(longEnough);
            },
            patience);
    }

    /// Two wake-ups a minute are as many as it may have. One of them may fall into the stretch.
    void verifyRest()
    {
        constexpr int stretch = 10'000;
        awaitRest();
        const ProcessActivity before(m_program->processId());
        QTest::qWait(stretch); // which is what is measured
        const ProcessActivity after(m_program->processId());
        QCOMPARE(after.ticksSince(before), 0);
        QVERIFY2(after.wakeUpsSince(before) <= 1, after.describeSince(before).constData());
    }

private Q_SLOTS:
    void init()
    {
        m_lab.emplace(DesktopLab::Options{.hasDisplay = true});
        m_lab->startKeyring(DesktopLab::Keyring::Unlocked);
        QVERIFY2(m_service.start({}, {u"--today"_s, QDate::currentDate().toString(Qt::ISODate)}),
            qPrintable(m_service.problem()));
        m_environment = m_lab->environment();
        m_environment.insert(u"ORBITLEDGE_API_URL"_s, m_service.baseUrl().toString());
        m_environment.insert(u"ORBITLEDGE_WEB_URL"_s, m_service.baseUrl().toString());
        m_environment.insert(u"LC_ALL"_s, u"C.UTF-8"_s);
        m_environment.insert(u"LSAN_OPTIONS"_s,
            u"suppressions=%1/lsan-desktop.supp print_suppressions=0"_s.arg(
                QStringLiteral(ORBITLEDGE_TEST_SUPPORT)));
        m_desk.emplace(*m_lab);
        m_desk->startWindowManager(XfceDesk::Compositing::Off);
        m_desk->startBar();
        signIn();
        startInBackground();
    }
    void cleanup()
    {
        if (m_program && m_program->state() != QProcess::NotRunning) {
            m_program->kill();
            m_program->waitForFinished();
        }
        m_program.reset();
        m_desk.reset();
        m_lab.reset();
        m_service.stop();
    }

    void shouldSleepWhileThePanelIsHidden()
    {
#ifdef __SANITIZE_THREAD__
        QSKIP("the sanitizer has a thread of its own, which wakes all the time");
#endif
        verifyRest();
        openAndClose();
        verifyRest();
        // What turns while something is fetched does not turn where nobody sees it.
        m_service.freeze();
        openAndClose();
        verifyRest();
        m_service.resume();
    }

    void shouldNotGrowWithEachOpening()
    {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
        QSKIP("the sanitizers keep what was freed, and notes of it");
#endif
        constexpr int warmUp = 20;
        constexpr int openings = 60;
        constexpr qint64 limit = 1024;
        for (int i = 0; i < warmUp; ++i)
            openAndClose();
        awaitRest();
        const qint64 before = ProcessActivity::memory(m_program->processId());
        QVERIFY(before > 0);
        for (int i = 0; i < openings; ++i)
            openAndClose();
        awaitRest();
        QCOMPARE_LT(ProcessActivity::memory(m_program->processId()) - before, limit);
    }
};

ORBITLEDGE_TEST_MAIN(PanelAtRestTest)
#include "PanelAtRestTest.moc"
