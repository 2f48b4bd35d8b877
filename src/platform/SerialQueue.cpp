#include "platform/SerialQueue.h"

#include <QCoreApplication>

namespace orbitledge {

SerialQueue::~SerialQueue()
{
    // Not left to the members' order: the thread uses the others.
    if (m_thread.joinable()) {
        m_thread.request_stop();
        m_thread.join();
    }
}

void SerialQueue::Job::execute()
{
    QEvent *done = nullptr;
    {
        const std::scoped_lock lock(m_mutex);
        perform();
        done = m_doneEvent.release();
    }
    QCoreApplication::postEvent(this, done);
}

bool SerialQueue::Job::event(QEvent *event)
{
    if (event->type() != QEvent::User)
        return QObject::event(event);
    {
        // Nobody else holds it by now; taking it makes what the other thread wrote visible here.
        const std::scoped_lock lock(m_mutex);
    }
    m_waiting.resume(); // may end the coroutine, and this object with it
    return true;
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
