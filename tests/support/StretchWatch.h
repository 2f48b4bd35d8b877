#pragma once

#include <QCoreApplication>
#include <QEvent>
#include <QObject>

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <stop_token>
#include <thread>

namespace orbitledge::testing {

/// Measures for how long the current thread was kept from its event loop in any one stretch, whatever kept
/// it: another thread posts an event, waits until it is handled, and so on. (The event dispatcher's own
/// signals around sleeping do not tell: GLib's handles events between them.)
///
/// What is measured includes the time that a busy machine takes to wake a thread.
class StretchWatch : public QObject {
public:
    using Clock = std::chrono::steady_clock;

    StretchWatch()
    {
        // Here, so that the first round of the event loop counts however late the other thread starts.
        post();
        m_thread = std::jthread([this](const std::stop_token &stop) { watch(stop); });
    }
    ~StretchWatch() override
    {
        m_thread.request_stop();
        m_thread.join();
    }
    Q_DISABLE_COPY_MOVE(StretchWatch)

    [[nodiscard]] double longestMilliseconds() const
    {
        const std::scoped_lock lock(m_mutex);
        // One that is still going on counts as well.
        const auto current = m_isWaiting ? Clock::now() - m_postedAt : Clock::duration::zero();
        return std::chrono::duration<double, std::milli>(std::max(m_longest, current)).count();
    }
    /// How often it looked; a watch that never did proves nothing.
    [[nodiscard]] int count() const
    {
        const std::scoped_lock lock(m_mutex);
        return m_count;
    }

protected:
    bool event(QEvent *event) override
    {
        if (event->type() != QEvent::User)
            return QObject::event(event);
        {
            const std::scoped_lock lock(m_mutex);
            m_longest = std::max(m_longest, Clock::now() - m_postedAt);
            ++m_count;
            m_isWaiting = false;
        }
        m_handled.notify_one();
        return true;
    }

private:
    void post()
    {
        m_postedAt = Clock::now();
        m_isWaiting = true;
        QCoreApplication::postEvent(this, new QEvent(QEvent::User));
    }

    void watch(const std::stop_token &stop)
    {
        while (true) {
            {
                std::unique_lock lock(m_mutex);
                if (!m_handled.wait(lock, stop, [this] { return !m_isWaiting; }))
                    return;
            }
            std::this_thread::sleep_for(std::chrono::microseconds(200));
            const std::scoped_lock lock(m_mutex);
            post();
        }
    }

    mutable std::mutex m_mutex;
    std::condition_variable_any m_handled;
    Clock::time_point m_postedAt;
    bool m_isWaiting = false;
    Clock::duration m_longest{};
    int m_count = 0;
    std::jthread m_thread;
};

/// The longest stretch, in milliseconds, of the best of up to three runs of `work`. What the code does to the
/// thread it does each time; what a busy machine does, it does not.
template <typename Work> double longestStretch(Work work, double limit = 50)
{
    double best = 0;
    for (int attempt = 0; attempt == 0 || (attempt < 3 && best >= limit); ++attempt) {
        const StretchWatch watch;
        work();
        const double longest = watch.longestMilliseconds();
        best = attempt == 0 ? longest : std::min(best, longest);
    }
    return best;
}

} // namespace orbitledge::testing
