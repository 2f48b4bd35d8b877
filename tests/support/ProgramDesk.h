#pragma once

#include "support/DemoService.h"
#include "support/PageRecorder.h"
#include "support/ProgramEnd.h"
#include "support/XfceDesk.h"

#include <sys/prctl.h>

#include <csignal>
#include <memory>

namespace orbitledge::testing {

/// The whole program in a desktop session of its own, with the service on loopback, a browser that only
/// writes down what it is to open, and a person at the mouse and the keyboard. The test defines
/// ORBITLEDGE_PROGRAM and ORBITLEDGE_TEST_SUPPORT.
class ProgramDesk {
public:
    static QString panelTitle() { return QStringLiteral("Orbitledge"); }

    /// `serviceArguments` are more options of the service, for instance {"--populate", "200"}.
    explicit ProgramDesk(XfceDesk::Edge edge = XfceDesk::Edge::Top, const QStringList &serviceArguments = {})
        : ProgramDesk(DesktopLab::Options().monitors, {.edge = edge}, serviceArguments)
    {
    }
    /// With that bar on one of those monitors.
    ProgramDesk(
        const QList<QRect> &monitors, const XfceDesk::Bar &bar, const QStringList &serviceArguments = {})
        : m_lab({.hasDisplay = true, .monitors = monitors})
        , m_desk(m_lab, bar)
        , m_environment(m_lab.environment())
    {
        m_lab.startKeyring(DesktopLab::Keyring::Unlocked);
        if (!m_service.start({},
                QStringList{QStringLiteral("--today"), QDate::currentDate().toString(Qt::ISODate)}
                    + serviceArguments))
            qFatal("no service: %s", qPrintable(m_service.problem()));
        for (const char *variable : {"ORBITLEDGE_API_URL", "ORBITLEDGE_WEB_URL"})
            set(variable, m_service.baseUrl().toString());
        set("LC_ALL", QStringLiteral("C.UTF-8"));
        set("LSAN_OPTIONS",
            QStringLiteral("suppressions=%1/lsan-desktop.supp print_suppressions=0")
                .arg(QStringLiteral(ORBITLEDGE_TEST_SUPPORT)));
    }
    ~ProgramDesk()
    {
        kill();
        m_service.stop();
    }
    Q_DISABLE_COPY_MOVE(ProgramDesk)

    [[nodiscard]] DesktopLab &lab() { return m_lab; }
    [[nodiscard]] XfceDesk &desk() { return m_desk; }
    [[nodiscard]] DemoService &service() { return m_service; }
    /// Of what is started from now on.
    [[nodiscard]] QProcessEnvironment &environment() { return m_environment; }
    [[nodiscard]] const QProcessEnvironment &environment() const { return m_environment; }

    /// For what is started from now on.
    void set(const char *variable, const QString &value)
    {
        m_environment.insert(QString::fromLatin1(variable), value);
    }
    void unset(const char *variable) { m_environment.remove(QString::fromLatin1(variable)); }

    /// By the command line.
    void signIn()
    {
        QProcess program;
        program.setProcessEnvironment(m_environment);
        program.start(
            QStringLiteral(ORBITLEDGE_PROGRAM), {QStringLiteral("sign-in"), QString(DemoService::email)});
        program.write(QByteArray(DemoService::password.data()) + '\n');
        program.closeWriteChannel();
        if (!program.waitForFinished() || program.exitCode() != 0)
            qFatal("signing in failed: %s", program.readAllStandardError().constData());
    }

    /// As people start it: by the program that turns into the one with windows. What it says on its standard
    /// error goes to a file where one is named.
    void start(const QStringList &arguments = {}, const QString &errorFile = {})
    {
        m_program = std::make_unique<QProcess>();
        m_program->setProcessEnvironment(m_environment);
        if (errorFile.isEmpty())
            m_program->setProcessChannelMode(QProcess::ForwardedErrorChannel);
        else
            m_program->setStandardErrorFile(errorFile);
        m_program->setChildProcessModifier([] { ::prctl(PR_SET_PDEATHSIG, SIGKILL); });
        m_program->start(QStringLiteral(ORBITLEDGE_PROGRAM), arguments);
        if (!m_program->waitForStarted())
            qFatal("the program does not start");
    }
    [[nodiscard]] QProcess *program() const { return m_program.get(); }
    void kill()
    {
        if (m_program)
            endAtOnce(*m_program);
        m_program.reset();
    }
    /// By its shortcut, in a window that has the keyboard.
    [[nodiscard]] bool quit()
    {
        m_desk.press(QStringLiteral("ctrl+q"));
        return awaitEnd(*m_program) && m_program->exitStatus() == QProcess::NormalExit
            && m_program->exitCode() == 0;
    }

    [[nodiscard]] bool isPanelOpen() { return m_desk.isWindowOpen(panelTitle()); }
    void awaitPanel(bool isOpen)
    {
        DesktopLab::await("the panel", [&] { return isPanelOpen() == isOpen; });
        if (isOpen)
            m_desk.awaitActive(panelTitle());
    }

    /// What the browser was to open.
    [[nodiscard]] QByteArrayList openedPages() const { return m_browser.pages(); }
    void awaitPage()
    {
        DesktopLab::await("the page", [&] { return !openedPages().isEmpty(); });
    }

    void keepPicture(const QString &name)
    {
        const QString folder = qEnvironmentVariable("ORBITLEDGE_TEST_PICTURES");
        if (!folder.isEmpty())
            m_desk.screen().save(folder + QLatin1Char('/') + name + QStringLiteral(".png"));
    }

private:
    DesktopLab m_lab;
    XfceDesk m_desk;
    DemoService m_service;
    QProcessEnvironment m_environment;
    PageRecorder m_browser{m_lab, m_environment};
    std::unique_ptr<QProcess> m_program;
};

} // namespace orbitledge::testing
