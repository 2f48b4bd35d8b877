#pragma once

#include <functional>
#include <optional>

namespace orbitledge {

/// Runs `work` in a child process, for a command that has an answer soon, and something to wait for after it.
/// As soon as the child tells its answer it is on its own: in a session of its own, with nothing open but
/// /dev/null, until `work` returns. Before that it ends with this process.
///
/// Comes back in this process alone, with the answer; absent where the child ended without one. Where the
/// child is ended by a signal, so is this process. Only as long as there is one thread.
std::optional<int> runAndLeaveBehind(const std::function<void(const std::function<void(int)> &tell)> &work);

} // namespace orbitledge
