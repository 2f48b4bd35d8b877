#pragma once

#include <QThreadPool>

namespace orbitledge::demo {

/// Threads for work that waits on the disk or computes for long. They live as long as the pool, because each
/// keeps a connection to the database.
class WorkPool {
public:
    explicit WorkPool(int threads)
    {
        m_pool.setMaxThreadCount(threads);
        m_pool.setExpiryTimeout(-1);
    }

    template <typename Function> void start(Function &&function)
    {
        m_pool.start(std::forward<Function>(function));
    }

    void waitForDone() { m_pool.waitForDone(); }

private:
    QThreadPool m_pool;
};

} // namespace orbitledge::demo
