#pragma once

#include <fcntl.h>
#include <unistd.h>

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <type_traits>

/// What the copies of the sources ask that mutation/run puts faults into.
namespace mutation {

/// Every fault is compiled in; which of them is there, if any, is told in the environment.
inline const int chosen = [] {
    const char *number = std::getenv("ORBITLEDGE_FAULT");
    return number ? std::atoi(number) : 0;
}();

/// Where it is noted that a place was come by, if it is to be noted.
inline const char *const notes = std::getenv("ORBITLEDGE_FAULTS_REACHED");

constexpr int most = 1 << 14;
inline std::atomic<bool> noted[most];

inline void note(int number)
{
    if (noted[number].load(std::memory_order_relaxed) || noted[number].exchange(true))
        return;
    const int file = ::open(notes, O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600);
    // One write a number: the processes of a test may share the file.
    if (file < 0 || ::dprintf(file, "%d\n", number) < 0)
        std::abort();
    ::close(file);
}

/// Whether the fault of this number is to be there. What the compiler works out has none.
constexpr bool is(int number)
{
    if (std::is_constant_evaluated())
        return false;
    if (notes != nullptr)
        note(number);
    return number == chosen;
}

} // namespace mutation
