#pragma once

#include "platform/OneShot.h"

#include <QCoroTask>

#include <deque>
#include <memory>
#include <type_traits>
#include <variant>

namespace orbitledge {

/// Lets the operations of one owner run one after the other, in the order in which they asked, all on one
/// thread with an event loop. Operations that run or wait keep this alive.
class Turns {
public:
    /// Runs `operation`, which returns a task, when it is its turn. It must own what it needs. Name the task
    /// before co_await.
    template <typename Operation>
    static std::invoke_result_t<Operation> take(std::shared_ptr<Turns> turns, Operation operation)
    {
        if (turns->m_isTaken) {
            OneShot<std::monostate> turn;
            turns->m_waiting.push_back(&turn);
            co_await turn.settled();
        }
        const Turn turn(*turns);
        co_return co_await operation();
    }

private:
    class Turn {
    public:
        explicit Turn(Turns &turns)
            : m_turns(turns)
        {
            m_turns.m_isTaken = true;
        }
        Turn(const Turn &) = delete;
        Turn &operator=(const Turn &) = delete;
        ~Turn()
        {
            m_turns.m_isTaken = !m_turns.m_waiting.empty();
            if (!m_turns.m_isTaken)
                return;
            m_turns.m_waiting.front()->settle({});
            m_turns.m_waiting.pop_front();
        }

    private:
        Turns &m_turns;
    };

    bool m_isTaken = false;
    std::deque<OneShot<std::monostate> *> m_waiting;
};

} // namespace orbitledge
