#pragma once

#include "platform/OneShot.h"
#include "updates/ReleaseChecker.h"

#include <QList>

namespace orbitledge::testing {

/// A release host in memory.
class FakeReleaseChecker final : public ReleaseCheckerProviding {
public:
    tl::expected<ReleaseManifest, ReleaseCheckError> manifest
        = tl::make_unexpected(ReleaseCheckError{QStringLiteral("not found")});
    int fetches = 0;
    /// Answers wait for `answerAt` or `answerAll`.
    bool isSlow = false;

    QCoro::Task<tl::expected<ReleaseManifest, ReleaseCheckError>> fetchLatest() override
    {
        ++fetches;
        if (isSlow) {
            OneShot<bool> answer;
            m_waiting.append(&answer);
            (void)co_await answer.settled();
        }
        auto copy = manifest;
        co_return copy;
    }

    [[nodiscard]] qsizetype waitingCount() const { return m_waiting.size(); }
    void answerAt(qsizetype index) { m_waiting.takeAt(index)->settle(true); }
    void answerAll()
    {
        while (!m_waiting.isEmpty())
            answerAt(0);
    }

private:
    QList<OneShot<bool> *> m_waiting;
};

} // namespace orbitledge::testing
