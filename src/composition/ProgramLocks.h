#pragma once

#include "platform/linux/ProcessLock.h"

#include <QCoroTask>
#include <QDeadlineTimer>

#include <chrono>
#include <optional>

namespace orbitledge {

/// What one process of a person has at a time, also where there is no bus to find the others on.
class ProgramLocks {
public:
    /// Absent where another process has it.
    using Attempt = tl::expected<std::optional<ProcessLock>, FileError>;

    /// Between two attempts, in the first seconds; later they are a second apart.
    static constexpr std::chrono::milliseconds pause{50};

    /// The right to be the program with windows; it keeps this for its life. Tries until `deadline`, since
    /// who is just about to end still has it for a moment.
    static QCoro::Task<Attempt> takeInstance(QDeadlineTimer deadline);

    /// The right to change the session: keyring, saved data, reminders. The running program keeps it for its
    /// life, a command while it is at work.
    static Attempt takeSession();
    /// The same, as soon as no other process has it.
    static QCoro::Task<Attempt> awaitSession();

private:
    static Attempt take(const char *name);
    static QCoro::Task<Attempt> take(const char *name, QDeadlineTimer deadline);
};

} // namespace orbitledge
