#pragma once

#include "support/ProcessorTime.h"

#include <QCoreApplication>
#include <QEvent>
#include <QObject>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <memory>
#include <stop_token>
#include <thread>

namespace orbitledge::testing {

/// Measures for how long the current thread was kept from its event loop in any one stretch, whether it
/// worked or waited for somebody: another thread posts an event, waits until it is handled, and so on. (The
/// event dispatcher's own signals around sleeping do not tell: GLib's handles events between them.)
///
/// The time in which one of the two waits for a processor does not count: that is what others do on a busy
/// machine. Neither ever waits for a lock of the other.
class StretchWatch : public QObject {
public:
    using Clock = std::chrono::steady_clock;

    StretchWatch()
    {
        // Here, so that the first round of the event loop counts however late the other thread starts.
        post();
        m_lag = 0;
        m_thread = std::jthread([this](const std::stop_token &stop) { watch(stop); });
    }
    ~StretchWatch() override
    {
        m_thread.request_stop();
        // It may be waiting for an event that nobody will handle any more.
        m_state = State::Handled;
        m_state.notify_all();
        m_thread.join();
    }
    Q_DISABLE_COPY_MOVE(StretchWatch)

    /// To be asked on the thread that is watched.
    [[nodiscard]] double longestMilliseconds() const
    {
        m_state.wait(State::Handled); // the other thread has yet to write it down
        // One that is still going on counts as well.
        auto longest = std::chrono::nanoseconds(m_longest);
        if (m_state == State::Posted) {
            const std::chrono::nanoseconds lag(m_lag);
            if (lag >= lag.zero())
                longest = std::max(longest, heldSincePost() - lag);
        }
        return std::chrono::duration<double, std::milli>(longest).count();
    }
    /// For how long, all in all, the thread had to wait for a processor: whether the machine was busy.
    [[nodiscard]] double processorWaitMilliseconds() const
    {
        return std::chrono::duration<double, std::milli>(m_wait.total()).count();
    }
    /// How often it looked; a watch that never did proves nothing.
    [[nodiscard]] int count() const { return m_count; }

protected:
    bool event(QEvent *event) override
    {
        if (event->type() != QEvent::User)
            return QObject::event(event);
        m_held = heldSincePost();
        m_state = State::Handled;
        m_state.notify_all();
        return true;
    }

private:
    enum class State {
        /// Nothing is under way.
        AtRest,
        /// An event is on its way, or about to be.
        Posted,
        /// It was, and the thread that posts is to write down how long that took.
        Handled,
    };

    static constexpr std::chrono::nanoseconds::rep notYetKnown = -1;

    [[nodiscard]] std::chrono::nanoseconds heldSincePost() const
    {
        return Clock::now() - m_postedAt - (m_wait.total() - m_waitAtPost);
    }

    void post()
    {
        m_lag = notYetKnown;
        m_waitAtPost = m_wait.total();
        m_postedAt = Clock::now();
        m_state = State::Posted;
        QCoreApplication::postEvent(this, new QEvent(QEvent::User));
    }

    void watch(const std::stop_token &stop)
    {
        const ProcessorWait ownWait;
        while (!stop.stop_requested()) {
            m_state.wait(State::Posted);
            if (stop.stop_requested())
                return;
            m_longest = std::max(m_longest.load(), (m_held - std::chrono::nanoseconds(m_lag)).count());
            ++m_count;
            m_state = State::AtRest;
            m_state.notify_all();
            std::this_thread::sleep_for(std::chrono::microseconds(200));
            if (stop.stop_requested())
                return;
            const auto before = ownWait.total();
            post();
            m_lag = (ownWait.total() - before).count();
        }
    }

    const ProcessorWait m_wait;
    // Of one event: written before the state that tells the other thread of it.
    Clock::time_point m_postedAt;
    std::chrono::nanoseconds m_waitAtPost{};
    std::chrono::nanoseconds m_held{};
    std::atomic<State> m_state = State::AtRest;
    /// For how long the posting thread had no processor between the time that it noted and the post's end.
    std::atomic<std::chrono::nanoseconds::rep> m_lag = notYetKnown;
    std::atomic<std::chrono::nanoseconds::rep> m_longest = 0;
    std::atomic<int> m_count = 0;
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
