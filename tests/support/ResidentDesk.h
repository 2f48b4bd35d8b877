#pragma once

#include "state/CacheSnapshot.h"
#include "support/DemoService.h"
#include "support/PageRecorder.h"
#include "support/ProgramEnd.h"
#include "support/XfceDesk.h"

#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusReply>
#include <QDate>
#include <QFile>
#include <QProcess>

#include <sys/prctl.h>

#include <algorithm>
#include <csignal>
#include <memory>
#include <optional>
#include <vector>

namespace orbitledge::testing {

/// The whole program in a desktop with a keyring, a window manager, a service and a browser that only writes
/// down what it is asked for. A test that uses it needs the demo service, and ORBITLEDGE_PROGRAM.
class ResidentDesk {
public:
    static QString name() { return QStringLiteral("app.orbitledge.Orbitledge"); }
    static QString path() { return QStringLiteral("/app/orbitledge/Orbitledge"); }
    static QString panelTitle() { return QStringLiteral("Orbitledge"); }

    ResidentDesk()
        : lab(DesktopLab::Options{.hasDisplay = true})
        , desk(lab)
    {
        lab.startKeyring(DesktopLab::Keyring::Unlocked);
        const QString today = QDate::currentDate().toString(Qt::ISODate);
        if (!service.start({}, {QStringLiteral("--today"), today}))
            qFatal("%s", qPrintable(service.problem()));
        environment.insert(QStringLiteral("ORBITLEDGE_API_URL"), service.baseUrl().toString());
        environment.insert(QStringLiteral("ORBITLEDGE_WEB_URL"), service.baseUrl().toString());
        environment.insert(QStringLiteral("LC_ALL"), QStringLiteral("C.UTF-8"));
        environment.insert(QStringLiteral("LSAN_OPTIONS"),
            QStringLiteral("suppressions=%1/lsan-desktop.supp print_suppressions=0")
                .arg(QStringLiteral(ORBITLEDGE_TEST_SUPPORT)));
        desk.startWindowManager(XfceDesk::Compositing::Off);
    }
    ~ResidentDesk()
    {
        for (const auto &program : m_programs)
            endAtOnce(*program);
        // One that the bus started.
        if (const auto running = owner())
            ::kill(static_cast<pid_t>(*running), SIGKILL);
    }
    ResidentDesk(const ResidentDesk &) = delete;
    ResidentDesk &operator=(const ResidentDesk &) = delete;

    /// As people start it, and goes on with the test.
    QProcess &start(const QStringList &arguments, const QProcessEnvironment &variables)
    {
        auto program = std::make_unique<QProcess>();
        program->setProcessEnvironment(variables);
        program->setChildProcessModifier([] { ::prctl(PR_SET_PDEATHSIG, SIGKILL); });
        program->start(QStringLiteral(ORBITLEDGE_PROGRAM), arguments);
        if (!program->waitForStarted())
            qFatal("cannot start the program");
        m_programs.push_back(std::move(program));
        return *m_programs.back();
    }
    QProcess &start(const QStringList &arguments) { return start(arguments, environment); }

    /// The one that stays, and waits until the others would find it.
    QProcess &startResident(const QStringList &arguments = {QStringLiteral("--background")})
    {
        QProcess &program = start(arguments);
        lab.awaitOnBus(name());
        return program;
    }

    /// Waits without holding up what else happens here.
    static ProgramEnd finish(QProcess &program)
    {
        if (!QTest::qWaitFor([&] { return program.state() == QProcess::NotRunning; }, 60'000)
            || program.exitStatus() != QProcess::NormalExit)
            return {};
        return {program.exitCode(), program.readAllStandardOutput(), program.readAllStandardError()};
    }
    ProgramEnd run(const QStringList &arguments, const QByteArray &input = {})
    {
        QProcess &program = start(arguments);
        program.write(input);
        program.closeWriteChannel();
        return finish(program);
    }
    ProgramEnd signIn()
    {
        return run({QStringLiteral("sign-in"), QString(DemoService::email)},
            QByteArray(DemoService::password.data()) + '\n');
    }

    /// Has the bus start the program where it is asked for, with what the desktop would have given it.
    void offerProgram()
    {
        QString command = QStringLiteral("/usr/bin/env");
        for (const char *const variable :
            {"ORBITLEDGE_API_URL", "ORBITLEDGE_WEB_URL", "PATH", "OPENED_PAGES", "LC_ALL", "LSAN_OPTIONS"}) {
            const QString variableName = QString::fromLatin1(variable);
            command += QStringLiteral(" \"%1=%2\"").arg(variableName, environment.value(variableName));
        }
        lab.offerService(
            name(), command + QStringLiteral(" \"%1\" --background").arg(QStringLiteral(ORBITLEDGE_PROGRAM)));
    }

    [[nodiscard]] bool isPanelOpen() { return desk.isWindowOpen(panelTitle()); }
    void awaitPanel(bool isOpen)
    {
        DesktopLab::await("the panel", [&] { return isPanelOpen() == isOpen; });
        if (isOpen)
            desk.awaitActive(panelTitle());
    }

    /// By keys. The first may still find the form, which closes a moment after what it added is in its file.
    void closePanel()
    {
        desk.pressUntil({QStringLiteral("Escape")}, "the panel to close", [this] { return !isPanelOpen(); });
    }

    /// The process that has the program's name on the bus.
    [[nodiscard]] std::optional<uint> owner() const
    {
        const QDBusReply<uint> reply = lab.bus().interface()->servicePid(name());
        return reply.isValid() ? std::optional(reply.value()) : std::nullopt;
    }

    /// Like a launcher.
    QDBusMessage call(const QString &method, const QVariantList &arguments) const
    {
        QDBusMessage message = QDBusMessage::createMethodCall(
            name(), path(), QStringLiteral("org.freedesktop.Application"), method);
        message.setArguments(arguments);
        return lab.bus().call(message, QDBus::BlockWithGui, 60'000);
    }
    QDBusMessage activateAction(const QString &action, const QVariantList &parameters = {}) const
    {
        return call(QStringLiteral("ActivateAction"), {action, QVariant(parameters), QVariantMap()});
    }

    [[nodiscard]] QByteArrayList openedPages() const { return m_browser.pages(); }

    [[nodiscard]] QString cacheFile() const
    {
        return lab.path(QStringLiteral("data/app.orbitledge.Orbitledge/subscription-snapshot-v1.json"));
    }
    [[nodiscard]] std::optional<Subscription> saved(const QString &subscription) const
    {
        QFile file(cacheFile());
        if (!file.open(QIODevice::ReadOnly))
            return std::nullopt;
        const auto snapshot = decodeCacheSnapshot(file.readAll());
        if (!snapshot)
            return std::nullopt;
        const auto found = std::ranges::find(snapshot->subscriptions, subscription, &Subscription::name);
        return found != snapshot->subscriptions.end() ? std::optional(*found) : std::nullopt;
    }

    DesktopLab lab;
    XfceDesk desk;
    DemoService service;
    QProcessEnvironment environment = lab.environment();

private:
    PageRecorder m_browser{lab, environment};
    std::vector<std::unique_ptr<QProcess>> m_programs;
};

} // namespace orbitledge::testing
