#include "platform/linux/notifications/ProgramOutput.h"

#include "platform/OneShot.h"

#include <QCoreApplication>
#include <QProcess>

#include <memory>

namespace orbitledge {

namespace {

constexpr qint64 longestOutput = 65'536; // bytes

/// A process that is destroyed while it runs waits for its end. Only the end of this program can come first.
struct EndLater {
    void operator()(QProcess *process) const
    {
        if (process->state() == QProcess::NotRunning) {
            process->deleteLater();
            return;
        }
        process->setParent(QCoreApplication::instance());
        QObject::connect(process, &QProcess::finished, process, &QObject::deleteLater);
        process->closeReadChannel(QProcess::StandardOutput);
        process->kill();
    }
};

} // namespace

QCoro::Task<std::optional<QByteArray>> outputOfProgram(
    QString program, QStringList arguments, std::chrono::milliseconds limit)
{
    const std::unique_ptr<QProcess, EndLater> process(std::make_unique<QProcess>().release());
    OneShot<bool> succeeded;
    QObject::connect(
        process.get(), &QProcess::finished, &succeeded, [&succeeded](int code, QProcess::ExitStatus status) {
            succeeded.settle(status == QProcess::NormalExit && code == 0);
        });
    QObject::connect(
        process.get(), &QProcess::errorOccurred, &succeeded, [&succeeded](QProcess::ProcessError error) {
            if (error == QProcess::FailedToStart)
                succeeded.settle(false);
        });
    QObject::connect(
        process.get(), &QProcess::readyReadStandardOutput, &succeeded, [&succeeded, running = process.get()] {
            if (running->bytesAvailable() > longestOutput)
                succeeded.settle(false);
        });
    process->setStandardInputFile(QProcess::nullDevice());
    process->setStandardErrorFile(QProcess::nullDevice());
    process->start(program, arguments);

    const std::optional<bool> outcome = co_await succeeded.settledWithin(limit);
    if (!outcome.value_or(false))
        co_return std::nullopt;
    co_return process->readAllStandardOutput();
}

} // namespace orbitledge
