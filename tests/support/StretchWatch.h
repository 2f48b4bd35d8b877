#pragma once

#include <QAbstractEventDispatcher>
#include <QObject>

#include <algorithm>
#include <chrono>

namespace orbitledge::testing {

/// Measures for how long the current thread was kept from its event loop in any one stretch: from waking up
/// to going to sleep again, whatever it did meanwhile.
class StretchWatch : public QObject {
public:
    using Clock = std::chrono::steady_clock;

    StretchWatch()
    {
        auto *const dispatcher = QAbstractEventDispatcher::instance();
        connect(dispatcher, &QAbstractEventDispatcher::awake, this, [this] { m_awakeSince = Clock::now(); });
        connect(dispatcher, &QAbstractEventDispatcher::aboutToBlock, this, [this] {
            m_longest = std::max(m_longest, Clock::now() - m_awakeSince);
            ++m_count;
        });
    }

    [[nodiscard]] double longestMilliseconds() const
    {
        return std::chrono::duration<double, std::milli>(m_longest).count();
    }
    /// How many stretches there were; a watch that saw none proves nothing.
    [[nodiscard]] int count() const { return m_count; }

private:
    Clock::time_point m_awakeSince = Clock::now();
    Clock::duration m_longest{};
    int m_count = 0;
};

} // namespace orbitledge::testing
