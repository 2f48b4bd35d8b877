#pragma once

#include <QProcess>

namespace orbitledge::testing {

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
