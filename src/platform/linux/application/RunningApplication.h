#pragma once

#include "platform/ApplicationService.h"
#include "platform/SessionService.h"
#include "platform/linux/application/ApplicationBus.h"

#include <QCoroTask>

#include <tl/expected.hpp>

#include <chrono>
#include <optional>

namespace orbitledge {

/// The program that runs already, as other processes see it on the session bus. May be destroyed while it is
/// asked.
class RunningApplication {
public:
    /// `patience` is for signs of life.
    explicit RunningApplication(
        QString applicationId, std::chrono::milliseconds patience = std::chrono::seconds(10));

    /// False where there is none. On failure why it does not do it, for people.
    [[nodiscard]] QCoro::Task<tl::expected<bool, QString>> request(
        ApplicationAction action, QString activationToken) const;

    /// The same, and starts the program where the bus can.
    [[nodiscard]] QCoro::Task<tl::expected<bool, QString>> openReminder(
        QString page, QString activationToken) const;

    /// Absent where there is none, and nothing was done. On failure why it could not be asked, or did not
    /// answer, for people. Waits as long as it is at work.
    [[nodiscard]] QCoro::Task<tl::expected<std::optional<SessionOutcome>, QString>> perform(
        SessionRequest request, SessionPlace place) const;

private:
    QString m_applicationId;
    std::chrono::milliseconds m_patience;
};

} // namespace orbitledge
