#pragma once

#include "platform/ApplicationService.h"
#include "platform/linux/ProcessLock.h"
#include "platform/linux/application/DesktopApplication.h"

#include <QCoroTask>
#include <QString>

#include <tl/expected.hpp>

#include <memory>
#include <optional>

namespace orbitledge {

/// That this process is the one with windows: it has the program's name on the session bus and, for a machine
/// without one, the lock beside it. User-interface thread only.
class ProgramInstance {
public:
    /// Makes this process the one. Absent where there is nothing more to do here: another process is the one,
    /// and was told what this start is for, or there is nobody to quit. On failure why the other one cannot
    /// be told, for people. `action` is absent where nothing is to be shown.
    static QCoro::Task<tl::expected<std::optional<ProgramInstance>, QString>> begin(
        std::optional<ApplicationAction> action, QString activationToken);

    [[nodiscard]] const std::shared_ptr<DesktopApplication> &application() const { return m_application; }

private:
    ProgramInstance(std::shared_ptr<DesktopApplication> application, std::optional<ProcessLock> lock);

    std::shared_ptr<DesktopApplication> m_application;
    /// Absent where none can be had.
    std::optional<ProcessLock> m_lock;
};

} // namespace orbitledge
