#pragma once

#include <QCoreApplication>
#include <QEvent>
#include <QObject>

#include <chrono>
#include <coroutine>
#include <memory>
#include <optional>
#include <utility>

namespace orbitledge {

/// A value that comes once, on this thread, for one coroutine that waits for it. Of several that settle it
/// the first counts. As an object it is a context for connections, which end with it.
template <typename Value> class OneShot final : public QObject {
public:
    /// The coroutine goes on from the event loop and not from here: who settles is often a part of what the
    /// coroutine does away with when it goes on.
    void settle(Value value)
    {
        if (m_value)
            return;
        m_value.emplace(std::move(value));
        if (m_waiting)
            QCoreApplication::postEvent(this, std::make_unique<QEvent>(QEvent::User).release());
    }

    struct Awaiter {
        OneShot &shot;
        std::optional<std::chrono::milliseconds> limit;

        [[nodiscard]] bool await_ready() const { return shot.m_value.has_value(); }
        void await_suspend(std::coroutine_handle<> waiting)
        {
            shot.m_waiting = waiting;
            if (limit)
                shot.m_timer = shot.startTimer(*limit, Qt::PreciseTimer);
        }
        std::optional<Value> await_resume() { return shot.m_value; }
    };

    /// For co_await: the value.
    Awaiter settled() { return Awaiter{*this, std::nullopt}; }

    /// For co_await: the value, or nothing where `limit` passed without one; it can be awaited again then.
    Awaiter settledWithin(std::chrono::milliseconds limit) { return Awaiter{*this, limit}; }

protected:
    bool event(QEvent *event) override
    {
        if (event->type() != QEvent::User && event->type() != QEvent::Timer)
            return QObject::event(event);
        if (m_timer != 0)
            killTimer(std::exchange(m_timer, 0));
        if (const auto waiting = std::exchange(m_waiting, {}))
            waiting.resume(); // may end the coroutine, and this object with it
        return true;
    }

private:
    std::optional<Value> m_value;
    std::coroutine_handle<> m_waiting;
    int m_timer = 0;
};

} // namespace orbitledge
