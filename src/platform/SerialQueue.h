#pragma once

#include "platform/Handover.h"

#include <QCoroTask>

#include <concepts>
#include <condition_variable>
#include <deque>
#include <mutex>
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
    /// that may be gone when its turn comes. In a coroutine, name the work and the task before co_await: GCC
    /// 12 destroys what a lambda in such an expression has captured twice.
    template <std::invocable Work> QCoro::Task<std::invoke_result_t<Work>> run(Work work)
    {
        PendingJob<Work> job(std::move(work));
        enqueue(job);
        // From here on the queue itself may be gone.
        co_return co_await job.result();
    }

private:
    class Job {
    public:
        Job() = default;
        Job(const Job &) = delete;
        Job &operator=(const Job &) = delete;
        virtual ~Job() = default;

        /// On the background thread. The job may be gone when this returns.
        virtual void execute() = 0;
    };

    template <std::invocable Work> class PendingJob final : public Job {
    public:
        explicit PendingJob(Work work)
            : m_work(std::move(work))
        {
        }

        void execute() override { m_result.give(m_work()); }
        auto result() { return m_result.wait(); }

    private:
        Work m_work;
        Handover<std::invoke_result_t<Work>> m_result;
    };

    void enqueue(Job &job);
    void work(const std::stop_token &stop);

    std::mutex m_mutex;
    std::condition_variable_any m_wake;
    std::deque<Job *> m_jobs;
    std::jthread m_thread;
};

} // namespace orbitledge
