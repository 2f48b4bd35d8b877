#pragma once

#include <QEvent>
#include <QObject>

#include <coroutine>
#include <memory>
#include <mutex>
#include <optional>

namespace orbitledge {

/// The part of a Handover that does not depend on what is handed over.
class HandoverBase : public QObject {
public:
    void setWaiting(std::coroutine_handle<> waiting) { m_waiting = waiting; }

protected:
    /// Posts the event that wakes the waiting coroutine. This may be gone when it returns.
    void wake();
    bool event(QEvent *event) override;

    std::mutex m_mutex;

private:
    std::coroutine_handle<> m_waiting;
    // Made where it will be read, so that nothing but the result is written by one thread and read by
    // the other.
    std::unique_ptr<QEvent> m_doneEvent = std::make_unique<QEvent>(QEvent::User);
};

/// One result on its way from another thread to the coroutine that waits for it. Belongs to the waiting
/// thread, which needs an event loop, and must live until the coroutine goes on.
///
/// The result crosses threads under a mutex of our own and not only under Qt's, which ThreadSanitizer
/// cannot see.
template <typename T> class Handover final : public HandoverBase {
public:
    /// From any thread, once.
    void give(T value)
    {
        {
            const std::scoped_lock lock(m_mutex);
            m_value.emplace(std::move(value));
        }
        wake();
    }

    struct Awaiter {
        Handover &handover;

        // The answer comes through the event loop, to which this thread has yet to return.
        [[nodiscard]] bool await_ready() const { return false; }
        void await_suspend(std::coroutine_handle<> waiting) { handover.setWaiting(waiting); }
        // NOLINTNEXTLINE(bugprone-unchecked-optional-access): nobody goes on before there is a value
        T await_resume() { return *std::move(handover.m_value); }
    };

    /// What to co_await, once.
    Awaiter wait() { return {*this}; }

private:
    std::optional<T> m_value;
};

} // namespace orbitledge
