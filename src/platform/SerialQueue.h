#pragma once

#include <QCoroTask>
#include <QEvent>
#include <QObject>

#include <concepts>
#include <condition_variable>
#include <coroutine>
#include <deque>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>

namespace orbitledge {

/// Runs blocking work on one background thread, in the order in which it was handed over, and gives the
/// results to coroutines on the threads that wait for them. For an owner whose operations must not
/// interleave. The thread starts with the first job and sleeps between jobs.
class SerialQueue {
public:
    SerialQueue() = default;
    SerialQueue(const SerialQueue &) = delete;
    SerialQueue &operator=(const SerialQueue &) = delete;
    /// Waits until everything that was handed over is done. Who awaits a result still gets it.
    ~SerialQueue();

    /// Hands `work` over at once and returns its result once it ran. Needs an event loop on the calling
    /// thread, to which the waiting coroutine returns. `work` must not throw and must not refer to anything
    /// that may be gone when its turn comes.
    template <std::invocable Work> QCoro::Task<std::invoke_result_t<Work>> run(Work work)
    {
        PendingJob<Work> job(std::move(work));
        enqueue(job);
        // From here on the queue itself may be gone.
        co_return co_await Awaiter<Work>{job};
    }

private:
    /// A job and the way back: an object of the waiting thread, to which the background thread posts.
    class Job : public QObject {
    public:
        void setWaiting(std::coroutine_handle<> waiting) { m_waiting = waiting; }

        /// On the background thread. The job may be gone when this returns.
        void execute();

    protected:
        virtual void perform() = 0;
        bool event(QEvent *event) override;

    private:
        std::mutex m_mutex;
        std::coroutine_handle<> m_waiting;
        // Made where it will be read, so that nothing but the result is written by one thread and read by
        // the other.
        std::unique_ptr<QEvent> m_doneEvent = std::make_unique<QEvent>(QEvent::User);
    };

    template <std::invocable Work> class PendingJob final : public Job {
    public:
        explicit PendingJob(Work work)
            : m_work(std::move(work))
        {
        }

        // NOLINTNEXTLINE(bugprone-unchecked-optional-access): nobody waits past the job's end
        std::invoke_result_t<Work> takeResult() { return *std::move(m_result); }

    protected:
        void perform() override { m_result.emplace(m_work()); }

    private:
        Work m_work;
        std::optional<std::invoke_result_t<Work>> m_result;
    };

    template <std::invocable Work> struct Awaiter {
        PendingJob<Work> &job;

        // The answer comes through the event loop, to which this thread has yet to return.
        static bool await_ready() { return false; }
        void await_suspend(std::coroutine_handle<> waiting) { job.setWaiting(waiting); }
        std::invoke_result_t<Work> await_resume() { return job.takeResult(); }
    };

    void enqueue(Job &job);
    void work(const std::stop_token &stop);

    std::mutex m_mutex;
    std::condition_variable_any m_wake;
    std::deque<Job *> m_jobs;
    std::jthread m_thread;
};

} // namespace orbitledge
