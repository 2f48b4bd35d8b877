#include "platform/SerialQueue.h"

namespace orbitledge {

SerialQueue::~SerialQueue()
{
    // Not left to the members' order: the thread uses the others.
    if (m_thread.joinable()) {
        m_thread.request_stop();
        m_thread.join();
    }
}

void SerialQueue::enqueue(Job &job)
{
    {
        const std::scoped_lock lock(m_mutex);
        m_jobs.push_back(&job);
    }
    if (!m_thread.joinable())
        m_thread = std::jthread([this](const std::stop_token &stop) { work(stop); });
    m_wake.notify_one();
}

void SerialQueue::work(const std::stop_token &stop)
{
    std::unique_lock lock(m_mutex);
    while (true) {
        m_wake.wait(lock, stop, [this] { return !m_jobs.empty(); });
        if (m_jobs.empty())
            return; // asked to stop, with nothing left to do
        Job *const job = m_jobs.front();
        m_jobs.pop_front();
        lock.unlock();
        job->execute();
        lock.lock();
    }
}

} // namespace orbitledge
