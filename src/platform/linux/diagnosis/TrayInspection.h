#pragma once

#include "platform/Diagnosis.h"
#include "platform/linux/diagnosis/BusInquiry.h"

#include <QCoroTask>

#include <chrono>
#include <filesystem>
#include <optional>
#include <utility>

namespace orbitledge {

/// What is on the bus; whether a tray of the X server is there is not looked at.
QCoro::Task<findings::Tray> inspectTray(BusNames names, std::chrono::milliseconds limit);

/// Starts the executable with windows, to tell whether it runs at all and whether it sees a tray of the X
/// server, which is absent where it does not tell.
QCoro::Task<std::pair<findings::WindowsProgram, std::optional<bool>>> inspectWindowsProgram(
    std::filesystem::path program, std::chrono::milliseconds limit);

} // namespace orbitledge
