#pragma once

#include "platform/OneShot.h"

#include <QCoroTask>

#include <memory>
#include <utility>
#include <variant>
#include <vector>

namespace orbitledge {

/// The end of something that any number of coroutines wait for, all on one thread with an event loop.
class Completion {
public:
    static QCoro::Task<void> wait(std::shared_ptr<Completion> completion)
    {
        if (completion->m_isComplete)
            co_return;
        OneShot<std::monostate> end;
        completion->m_waiting.push_back(&end);
        (void)co_await end.settled();
    }

    /// Those who wait go on from the event loop.
    void complete()
    {
        m_isComplete = true;
        for (OneShot<std::monostate> *const waiting : std::exchange(m_waiting, {}))
            waiting->settle({});
    }

private:
    bool m_isComplete = false;
    std::vector<OneShot<std::monostate> *> m_waiting;
};

} // namespace orbitledge
