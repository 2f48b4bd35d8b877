#pragma once

#include "platform/linux/ProcessLock.h"

#include <optional>

namespace orbitledge {

/// What one process of a person has at a time, also where there is no bus to find the others on.
class ProgramLocks {
public:
    /// Absent where another process has it.
    using Attempt = tl::expected<std::optional<ProcessLock>, FileError>;

    /// The right to be the program with windows; it keeps this for its life.
    static Attempt takeInstance();

    /// The right to change the session: keyring, saved data, reminders. The running program keeps it for its
    /// life, a command while it is at work.
    static Attempt takeSession();

private:
    static Attempt take(const char *name);
};

} // namespace orbitledge
