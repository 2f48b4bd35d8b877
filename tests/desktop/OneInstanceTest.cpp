// The program is there once, however often and however it is started, and others can reach it.

#include "support/ResidentDesk.h"
#include "support/TestMain.h"

#include <QElapsedTimer>

using namespace orbitledge;
using namespace orbitledge::testing;
using namespace Qt::StringLiterals;

class OneInstanceTest : public QObject {
    Q_OBJECT

private:
    std::optional<ResidentDesk> m_desk;

    [[nodiscard]] int panelCount()
    {
        int count = 0;
        while (m_desk->desk.isWindowOpen(ResidentDesk::panelTitle(), count + 1))
            ++count;
        return count;
    }

    /// A session without a bus.
    [[nodiscard]] QProcessEnvironment withoutBus() const
    {
        QProcessEnvironment variables = m_desk->environment;
        variables.insert(u"DBUS_SESSION_BUS_ADDRESS"_s, u"unix:path=/nonexistent"_s);
        return variables;
    }

private Q_SLOTS:
    void init() { m_desk.emplace(); }
    void cleanup() { m_desk.reset(); }

    void shouldBeOneProcessAndOnePanelWhereManyStartAtOnce()
    {
        constexpr int count = 20;
        std::vector<QProcess *> programs;
        for (int i = 0; i < count; ++i)
            programs.push_back(&m_desk->start({}));
        const auto running = [&programs] {
            return std::ranges::count(programs, QProcess::Running, [](QProcess *p) { return p->state(); });
        };
        QTRY_COMPARE_WITH_TIMEOUT(running(), 1, 60'000);
        for (QProcess *const program : programs) {
            if (program->state() == QProcess::Running) {
                QCOMPARE(m_desk->owner(), std::optional(static_cast<uint>(program->processId())));
                continue;
            }
            QCOMPARE(program->exitStatus(), QProcess::NormalExit);
            QCOMPARE(program->exitCode(), 0);
            QCOMPARE(program->readAllStandardError(), ""_ba);
        }
        m_desk->awaitPanel(true);
        QCOMPARE(panelCount(), 1);
    }

    void shouldOpenThePanelOfTheOneThatRuns()
    {
        QProcess &first = m_desk->startResident();
        QVERIFY(!m_desk->isPanelOpen());
        m_desk->lab.startMonitor();
        QProcessEnvironment launched = m_desk->environment;
        launched.insert(u"DESKTOP_STARTUP_ID"_s, u"launcher-1-desk_TIME4711"_s);
        const auto result = ResidentDesk::finish(m_desk->start({}, launched));
        QCOMPARE(result.errors, ""_ba);
        QCOMPARE(result.complaint(), "");
        m_desk->awaitPanel(true);
        QCOMPARE(first.state(), QProcess::Running);
        // With the desktop's word that a person asked for it.
        QVERIFY(m_desk->lab.monitored().contains("\"launcher-1-desk_TIME4711\""));
    }

    void shouldRaiseNothingAtLogin()
    {
        m_desk->startResident();
        m_desk->lab.startMonitor();
        QCOMPARE(m_desk->run({u"--background"_s}).complaint(), "");
        QVERIFY(!m_desk->lab.monitored().contains("org.freedesktop.Application"));
        QVERIFY(!m_desk->isPanelOpen());
    }

    void shouldStartAgainAfterItWasKilled()
    {
        for (int i = 0; i < 3; ++i) {
            QProcess &program = m_desk->start({});
            QTRY_COMPARE_WITH_TIMEOUT(
                m_desk->owner(), std::optional(static_cast<uint>(program.processId())), 20'000);
            m_desk->awaitPanel(true);
            program.kill();
        }
        QProcess &last = m_desk->start({});
        QTRY_COMPARE_WITH_TIMEOUT(
            m_desk->owner(), std::optional(static_cast<uint>(last.processId())), 20'000);
    }

    void shouldSayThatTheOneThatRunsDoesNotAnswer()
    {
        QProcess &first = m_desk->startResident();
        ::kill(static_cast<pid_t>(first.processId()), SIGSTOP);
        QElapsedTimer waited;
        waited.start();
        const auto result = m_desk->run({});
        QCOMPARE(result.exitCode, 1);
        QCOMPARE(result.errors,
            "orbitledge: Orbitledge is running, but does not answer. End it, then try again.\n"_ba);
        QVERIFY(waited.elapsed() < 30'000);
        QVERIFY(!m_desk->isPanelOpen());
        // What it was asked for in its sleep it does now.
        ::kill(static_cast<pid_t>(first.processId()), SIGCONT);
        m_desk->awaitPanel(true);
    }

    void shouldDoWhatLaunchersAskFor()
    {
        QCOMPARE(m_desk->signIn().complaint(), "");
        QProcess &program = m_desk->startResident();
        QCOMPARE(m_desk->activateAction(u"open"_s).type(), QDBusMessage::ReplyMessage);
        m_desk->awaitPanel(true);
        m_desk->desk.press(u"Escape"_s);
        m_desk->awaitPanel(false);
        QCOMPARE(m_desk->call(u"Activate"_s, {QVariantMap()}).type(), QDBusMessage::ReplyMessage);
        m_desk->awaitPanel(true);
        m_desk->desk.press(u"Escape"_s);
        m_desk->awaitPanel(false);
        QCOMPARE(m_desk->call(u"Open"_s, {QStringList{u"file:///etc/passwd"_s}, QVariantMap()}).type(),
            QDBusMessage::ReplyMessage);
        m_desk->awaitPanel(true);

        QCOMPARE(m_desk->activateAction(u"settings"_s).type(), QDBusMessage::ReplyMessage);
        m_desk->desk.awaitActive(u"Orbitledge Settings"_s);

        for (const QVariantList &parameters : {QVariantList{}, {42}, {QStringList{u"a"_s}}})
            QCOMPARE(
                m_desk->activateAction(u"open-reminder"_s, parameters).type(), QDBusMessage::ErrorMessage);
        QCOMPARE(m_desk->activateAction(u"delete-everything"_s).type(), QDBusMessage::ErrorMessage);
        QCOMPARE(m_desk->activateAction(u"open-reminder"_s, {u"file:///etc/passwd"_s}).type(),
            QDBusMessage::ReplyMessage);
        QCOMPARE(m_desk->activateAction(u"open-reminder"_s, {u"https://example.com/page"_s}).type(),
            QDBusMessage::ReplyMessage);
        QTRY_COMPARE(m_desk->openedPages(), QByteArrayList{"https://example.com/page"});

        QCOMPARE(m_desk->activateAction(u"quit"_s).type(), QDBusMessage::ReplyMessage);
        QCOMPARE(ResidentDesk::finish(program).complaint(), "");
        QTRY_VERIFY(!m_desk->lab.isOnBus(ResidentDesk::name()));
    }

    void shouldAddASubscriptionFromTheLauncher()
    {
        QCOMPARE(m_desk->signIn().complaint(), "");
        // By the one that is started for it, and by one that runs.
        for (const QString &subscription : {u"First Flight"_s, u"Second Sight"_s}) {
            m_desk->start({u"--quick-add"_s});
            m_desk->awaitPanel(true);
            // Once it knows that somebody is signed in, and has looked at what it is to show.
            QCOMPARE(m_desk->run({u"refresh"_s}).complaint(), "");
            QCOMPARE(m_desk->call(u"Activate"_s, {QVariantMap()}).type(), QDBusMessage::ReplyMessage);
            m_desk->lab.run(u"xdotool"_s, {u"type"_s, subscription});
            m_desk->desk.press(u"Tab"_s);
            m_desk->lab.run(u"xdotool"_s, {u"type"_s, u"7.50"_s});
            m_desk->desk.press(u"Return"_s);
            DesktopLab::await("the subscription", [&] { return m_desk->saved(subscription).has_value(); });
            m_desk->closePanel();
        }
    }

    void shouldShowTheSettingsFromTheLauncher()
    {
        QProcess &first = m_desk->start({u"--settings"_s});
        m_desk->desk.awaitActive(u"Orbitledge Settings"_s);
        QCOMPARE(m_desk->run({u"--quit"_s}).complaint(), "");
        QCOMPARE(ResidentDesk::finish(first).complaint(), "");
        // There is none that could quit, and none is started for it.
        QCOMPARE(m_desk->run({u"--quit"_s}).complaint(), "");
        QVERIFY(!m_desk->lab.isOnBus(ResidentDesk::name()));
    }

    void shouldBeStartedByTheBus()
    {
        m_desk->offerProgram();
        QCOMPARE(m_desk->activateAction(u"settings"_s).type(), QDBusMessage::ReplyMessage);
        m_desk->desk.awaitActive(u"Orbitledge Settings"_s);
        QVERIFY(!m_desk->isPanelOpen());
        QCOMPARE(m_desk->call(u"Activate"_s, {QVariantMap()}).type(), QDBusMessage::ReplyMessage);
        m_desk->awaitPanel(true);
    }

    void shouldRunWithoutABus()
    {
        QProcess &first = m_desk->start({}, withoutBus());
        m_desk->awaitPanel(true);
        const auto second = ResidentDesk::finish(m_desk->start({}, withoutBus()));
        QCOMPARE(second.exitCode, 1);
        QCOMPARE(second.errors,
            "orbitledge: Orbitledge is running already, but cannot be reached over the session bus.\n"_ba);
        QCOMPARE(ResidentDesk::finish(m_desk->start({u"--background"_s}, withoutBus())).complaint(), "");
        QCOMPARE(panelCount(), 1);
        QCOMPARE(first.state(), QProcess::Running);
        first.kill();
        QVERIFY(first.waitForFinished());
        m_desk->start({}, withoutBus());
        m_desk->awaitPanel(true);
    }
};

ORBITLEDGE_TEST_MAIN(OneInstanceTest)
#include "OneInstanceTest.moc"
