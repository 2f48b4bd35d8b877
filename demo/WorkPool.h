#pragma once

#include <QtGlobal>

#include <condition_variable>
#include <csignal>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

namespace orbitledge::demo {

/// Threads for work that waits on the disk or computes for long. They live as long as the pool, because each
/// keeps a connection to the database. Jobs cross over under a mutex of our own, so that ThreadSanitizer sees
/// the whole way; the toolkit's pool is not instrumented.
class WorkPool {
public:
    using Job = std::function<void()>;

    explicit WorkPool(int threads)
    {
        for (int i = 0; i < threads; ++i)
            m_threads.emplace_back([this] { work(); });
    }

    /// Finishes what has been started.
    ~WorkPool()
    {
        {
            const std::scoped_lock lock(m_mutex);
            m_isEnding = true;
        }
        m_changed.notify_all();
        for (std::thread &thread : m_threads)
            thread.join();
    }
    Q_DISABLE_COPY_MOVE(WorkPool)

    void start(Job job)
    {
        {
            const std::scoped_lock lock(m_mutex);
            m_jobs.push_back(std::move(job));
        }
        m_changed.notify_one();
    }

private:
    void work()
    {
        // What asks the program to end is for the thread that waits for it.
        sigset_t ending;
        sigemptyset(&ending);
        sigaddset(&ending, SIGTERM);
        sigaddset(&ending, SIGINT);
        pthread_sigmask(SIG_BLOCK, &ending, nullptr);

        std::unique_lock lock(m_mutex);
        for (;;) {
            m_changed.wait(lock, [this] { return m_isEnding || !m_jobs.empty(); });
            if (m_jobs.empty())
                return;
            Job job = std::move(m_jobs.front());
            m_jobs.pop_front();
            lock.unlock();
            job();
            job = nullptr;
            lock.lock();
        }
    }

    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::deque<Job> m_jobs;
    bool m_isEnding = false;
    std::vector<std::thread> m_threads;
};

} // namespace orbitledge::demo
