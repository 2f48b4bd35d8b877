// The whole program in a real desktop: the icon in a real bar, a real keyring, the service, a mouse and a
// keyboard.

#include "state/CacheSnapshot.h"
#include "support/DemoService.h"
#include "support/TestMain.h"
#include "support/XfceDesk.h"
#include "timeline/EntryTexts.h"

#include <QElapsedTimer>

#include <sys/prctl.h>

#include <csignal>
#include <optional>

using namespace orbitledge;
using namespace orbitledge::testing;
using namespace Qt::StringLiterals;

class PanelProgramTest : public QObject {
    Q_OBJECT

private:
    std::optional<DesktopLab> m_lab;
    std::optional<XfceDesk> m_desk;
    DemoService m_service;
    QProcessEnvironment m_environment;
    std::unique_ptr<QProcess> m_program;

    void makeBrowser()
    {
        const QString bin = m_lab->path(u"bin"_s);
        QDir().mkpath(bin);
        QFile browser(bin + u"/xdg-open"_s);
        if (!browser.open(QIODevice::WriteOnly)
            || browser.write("#!/bin/sh\necho \"$1\" >>\"$OPENED_PAGES\"\n") < 0
            || !browser.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner))
            qFatal("cannot make a browser");
        m_environment.insert(u"PATH"_s, bin + u':' + m_environment.value(u"PATH"_s));
        m_environment.insert(u"OPENED_PAGES"_s, m_lab->path(u"opened"_s));
    }

    [[nodiscard]] QByteArrayList openedPages() const
    {
        QFile pages(m_lab->path(u"opened"_s));
        return pages.open(QIODevice::ReadOnly) ? pages.readAll().trimmed().split('\n') : QByteArrayList();
    }

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

    /// As people start it: by the program that turns into the one with windows.
    void start(const QStringList &arguments)
    {
        m_program = std::make_unique<QProcess>();
        m_program->setProcessEnvironment(m_environment);
        m_program->setProcessChannelMode(QProcess::ForwardedErrorChannel);
        m_program->setChildProcessModifier([] { ::prctl(PR_SET_PDEATHSIG, SIGKILL); });
        m_program->start(QStringLiteral(ORBITLEDGE_PROGRAM), arguments);
        QVERIFY(m_program->waitForStarted());
    }

    [[nodiscard]] bool isPanelOpen() { return m_desk->isWindowOpen(u"Orbitledge"_s); }
    void awaitPanel(bool isOpen)
    {
        DesktopLab::await("the panel", [&] { return isPanelOpen() == isOpen; });
        if (isOpen)
            m_desk->awaitActive(u"Orbitledge"_s);
    }

    void awaitQuestion() { m_desk->awaitActive(u"Cancel Quiet Meadow?"_s); }

    [[nodiscard]] std::optional<Subscription> saved(const QString &name) const
    {
        QFile file(m_environment.value(u"XDG_DATA_HOME"_s)
            + u"/app.orbitledge.Orbitledge/subscription-snapshot-v1.json"_s);
        if (!file.open(QIODevice::ReadOnly))
            return std::nullopt;
        const auto snapshot = decodeCacheSnapshot(file.readAll());
        if (!snapshot)
            return std::nullopt;
        const auto found = std::ranges::find(snapshot->subscriptions, name, &Subscription::name);
        return found != snapshot->subscriptions.end() ? std::optional(*found) : std::nullopt;
    }
    void awaitCancelled(const QString &name, bool isThen)
    {
        DesktopLab::await("the change at the service", [&] {
            const auto subscription = saved(name);
            return subscription && isCancelled(*subscription) == isThen;
        });
    }

    /// As an impatient person does it: a press while the row is still at work with the last change does
    /// nothing.
    void takeBack(const QString &name)
    {
        constexpr qint64 patience = 2000;
        QElapsedTimer sincePress;
        DesktopLab::await("the subscription to be taken back", [&] {
            const auto subscription = saved(name);
            if (subscription && !isCancelled(*subscription))
                return true;
            if (!sincePress.isValid() || sincePress.hasExpired(patience)) {
                m_desk->press(u"Return"_s);
                sincePress.start();
            }
            return false;
        });
    }

    void keepPicture(const QString &name)
    {
        const QString folder = qEnvironmentVariable("ORBITLEDGE_TEST_PICTURES");
        if (!folder.isEmpty())
            m_desk->screen().save(folder + u'/' + name + u".png"_s);
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
        makeBrowser();
        m_desk.emplace(*m_lab);
    }
    void cleanup()
    {
        if (QTest::currentTestFailed())
            keepPicture(u"panel-failure"_s);
        if (m_program && m_program->state() != QProcess::NotRunning) {
            m_program->kill();
            m_program->waitForFinished();
        }
        m_program.reset();
        m_desk.reset();
        m_lab.reset();
        m_service.stop();
    }

    void shouldShowAndChangeWhatIsAboutToCharge()
    {
        signIn();
        m_desk->startWindowManager(XfceDesk::Compositing::Off);
        m_desk->startBar();
        start({u"--background"_s});
        const QRect badge = m_desk->awaitBadge();
        QVERIFY(!isPanelOpen());
        m_desk->click(badge.center());
        awaitPanel(true);
        keepPicture(u"panel"_s);

        // The first row, by the keyboard.
        m_desk->press(u"Tab"_s);
        m_desk->press(u"Home"_s);
        m_desk->press(u"Return"_s);
        DesktopLab::await("the page", [&] { return !openedPages().isEmpty(); });
        const auto first = saved(u"Quiet Meadow"_s);
        QVERIFY(first);
        QCOMPARE(openedPages().constFirst(),
            m_service.baseUrl().toEncoded() + "subscriptions/"
                + first->id.toByteArray(QUuid::WithoutBraces).toUpper() + "/edit");

        // Cancelled after a question whose first answer is no, and back again.
        m_desk->press(u"Right"_s);
        m_desk->press(u"Right"_s);
        m_desk->press(u"Return"_s);
        awaitQuestion();
        keepPicture(u"question"_s);
        m_desk->press(u"Escape"_s);
        m_desk->awaitActive(u"Orbitledge"_s);
        QVERIFY(isPanelOpen());
        QVERIFY(!isCancelled(*saved(u"Quiet Meadow"_s)));
        m_desk->press(u"Return"_s);
        awaitQuestion();
        m_desk->press(u"Tab"_s);
        m_desk->press(u"Return"_s);
        awaitCancelled(u"Quiet Meadow"_s, true);
        m_desk->awaitActive(u"Orbitledge"_s);
        keepPicture(u"cancelled"_s);
        takeBack(u"Quiet Meadow"_s);

        m_desk->press(u"Escape"_s);
        awaitPanel(false);
        m_desk->click(badge.center());
        awaitPanel(true);
        m_desk->click(badge.center());
        awaitPanel(false);

        // The bar comes back, and so does the icon.
        m_desk->killBar();
        m_desk->startBar();
        m_desk->awaitBadge();
        m_desk->click(m_desk->awaitBadge().center());
        awaitPanel(true);
        m_desk->press(u"ctrl+q"_s);
        QVERIFY(m_program->waitForFinished(20'000));
        QCOMPARE(m_program->exitStatus(), QProcess::NormalExit);
        QCOMPARE(m_program->exitCode(), 0);
    }

    void shouldBeAnOrdinaryWindowWhereThereIsNoTray()
    {
        signIn();
        m_desk->startWindowManager(XfceDesk::Compositing::Off);
        start({});
        awaitPanel(true);
        m_desk->press(u"Escape"_s);
        awaitPanel(false);
        QCOMPARE(m_program->state(), QProcess::Running);
    }
};

ORBITLEDGE_TEST_MAIN(PanelProgramTest)
#include "PanelProgramTest.moc"
