#pragma once

#include "support/ProgramEnd.h"

#include <QByteArray>
#include <QElapsedTimer>
#include <QProcess>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>
#include <QUrl>

#include <sys/prctl.h>

#include <csignal>
#include <memory>
#include <optional>
#include <utility>

namespace orbitledge::testing {

/// The real demo service, in a process of its own, for tests that need a service that is true to life:
///
///     DemoService service;
///     QVERIFY2(service.start(), qPrintable(service.problem()));
///     // service.baseUrl() is "http://127.0.0.1:<port>/"; sign in as DemoService::email,
///     DemoService::password
///
/// Each start picks a free port. Without a folder of the test's own the data live in a temporary one, which
/// is kept over `kill` and `start`, and goes with the object. Asked again after a `kill`, `start` finds what
/// had been confirmed. A test that uses this links nothing for it; it only says in its CMakeLists.txt
///
///     orbitledge_uses_demo_service(test_folder_NameTest)
class DemoService {
public:
    /// The sample account, with its sixteen subscriptions laid out around today.
    static constexpr QLatin1StringView email{"ada@example.com"};
    static constexpr QLatin1StringView password{"orbit-ledger"};

    DemoService() = default;
    ~DemoService() { stop(); }
    Q_DISABLE_COPY_MOVE(DemoService)

    /// Starts the service and waits until it listens; false with `problem` where it does not.
    /// `arguments` are more options, for instance {"--today", "2026-03-18"} or {"--session-lifetime", "2"}.
    bool start(const QString &dataFolder = {}, const QStringList &arguments = {})
    {
        stop();
        m_dataFolder = dataFolder.isEmpty() ? temporaryFolder() : dataFolder;
        m_process = std::make_unique<QProcess>();
        // It ends with the test also where that crashes.
        m_process->setChildProcessModifier([] { ::prctl(PR_SET_PDEATHSIG, SIGKILL); });
        m_process->start(QStringLiteral(ORBITLEDGE_DEMO_SERVICE_PROGRAM),
            QStringList{QStringLiteral("--port"), QStringLiteral("0"), QStringLiteral("--data"), m_dataFolder}
                + arguments);
        QElapsedTimer waited;
        waited.start();
        while (!m_process->canReadLine() && waited.elapsed() < startLimit) {
            // False also where the process has ended, which nothing will be read from any more.
            if (!m_process->waitForReadyRead(startLimit) && m_process->state() == QProcess::NotRunning)
                break;
        }
        const QByteArray line = m_process->readLine().trimmed();
        const QByteArray announcement("Listening on ");
        if (!line.startsWith(announcement)) {
            m_problem = QStringLiteral("the demo service did not start: ")
                + QString::fromUtf8(m_process->readAllStandardError());
            kill();
            return false;
        }
        m_baseUrl = QUrl(QString::fromLatin1(line.mid(announcement.size())));
        return true;
    }

    /// Asks it to end, and waits. Its exit code; absent where it was not running or had to be killed.
    std::optional<int> stop()
    {
        if (!isRunning())
            return std::nullopt;
        resume(); // what is frozen would not hear it
        m_process->terminate();
        if (!m_process->waitForFinished(stopLimit)) {
            kill();
            return std::nullopt;
        }
        const auto process = std::exchange(m_process, nullptr);
        return process->exitStatus() == QProcess::NormalExit ? std::optional(process->exitCode())
                                                             : std::nullopt;
    }

    /// Ends it at once, as a crash would (SIGKILL).
    void kill()
    {
        if (!m_process)
            return;
        m_process->kill();
        m_process->waitForFinished(stopLimit);
        m_process.reset();
    }

    /// Stops it where it stands (SIGSTOP): connections are taken, but nothing is answered, as by a service
    /// that hangs. `resume` lets it go on.
    void freeze() { ::kill(static_cast<pid_t>(m_process->processId()), SIGSTOP); }
    void resume() { ::kill(static_cast<pid_t>(m_process->processId()), SIGCONT); }

    [[nodiscard]] bool isRunning() const { return m_process && m_process->state() == QProcess::Running; }
    [[nodiscard]] QUrl baseUrl() const { return m_baseUrl; }
    [[nodiscard]] quint16 port() const { return static_cast<quint16>(m_baseUrl.port()); }
    [[nodiscard]] QString dataFolder() const { return m_dataFolder; }
    /// Why `start` failed.
    [[nodiscard]] QString problem() const { return m_problem; }
    /// What it wrote to standard error since the last call.
    QByteArray errorOutput()
    {
        if (!m_process)
            return {};
        m_process->waitForReadyRead(0);
        return m_process->readAllStandardError();
    }

    /// Runs the program to its end, for what does not listen: --help, --add-account and the like.
    static ProgramEnd run(const QStringList &arguments, const QByteArray &input = {})
    {
        QProcess process;
        process.start(QStringLiteral(ORBITLEDGE_DEMO_SERVICE_PROGRAM), arguments);
        process.write(input);
        process.closeWriteChannel();
        if (!process.waitForFinished() || process.exitStatus() != QProcess::NormalExit)
            return {};
        return {process.exitCode(), process.readAllStandardOutput(), process.readAllStandardError()};
    }

    /// Adds an account to the data of this service, which may be running meanwhile.
    bool addAccount(
        const QString &accountEmail, const QByteArray &accountPassword, const QStringList &arguments = {})
    {
        if (m_dataFolder.isEmpty())
            m_dataFolder = temporaryFolder();
        const ProgramEnd answer = run(
            QStringList{QStringLiteral("--data"), m_dataFolder, QStringLiteral("--add-account"), accountEmail}
                + arguments,
            accountPassword + '\n');
        m_problem = QString::fromUtf8(answer.errors);
        return answer.exitCode == 0;
    }

private:
    static constexpr int startLimit = 30'000;
    static constexpr int stopLimit = 10'000;

    QString temporaryFolder()
    {
        if (!m_temporary)
            m_temporary = std::make_unique<QTemporaryDir>();
        return m_temporary->filePath(QStringLiteral("demo"));
    }

    std::unique_ptr<QTemporaryDir> m_temporary;
    std::unique_ptr<QProcess> m_process;
    QString m_dataFolder;
    QUrl m_baseUrl;
    QString m_problem;
};

} // namespace orbitledge::testing
