#pragma once

#include <QByteArray>
#include <QProcess>

namespace orbitledge::testing {

/// What a program that has ended leaves behind.
struct ProgramEnd {
    /// -1 where it did not end by itself.
    int exitCode = -1;
    QByteArray output;
    QByteArray errors;

    /// Empty where it ended well. Otherwise what it ended with, and everything that it said goes to the log:
    /// of two texts that are not the same a test shows only the beginning.
    [[nodiscard]] QByteArray complaint() const
    {
        if (exitCode == 0)
            return {};
        qWarning("%s", errors.constData());
        return "ended with " + QByteArray::number(exitCode);
    }
};

/// Waits until it has ended. What waits for its end alone takes one that was seen to end before for a
/// failure.
[[nodiscard]] inline bool awaitEnd(QProcess &program)
{
    constexpr int patience = 20'000;
    return program.state() == QProcess::NotRunning || program.waitForFinished(patience);
}

/// Ends it at once: it has no say in it. Where its coverage is measured it may write down the counts before.
inline void endAtOnce(QProcess &program)
{
    if (program.state() == QProcess::NotRunning)
        return;
#ifdef ORBITLEDGE_COVERAGE
    program.terminate();
    if (program.waitForFinished(10'000))
        return;
#endif
    program.kill();
    program.waitForFinished();
}

} // namespace orbitledge::testing
