#pragma once

#include "platform/ApplicationService.h"
#include "platform/SessionService.h"
#include "platform/linux/application/ApplicationBus.h"

#include <QCoroTask>

#include <tl/expected.hpp>

#include <chrono>
#include <optional>

namespace orbitledge {

/// How the program takes it that a page is to be opened.
enum class PageOpening {
    /// It does it.
    Done,
    /// It is not there, and cannot be started.
    Absent,
    /// It does not answer, and may still do it: the call waits for it.
    Mute,
    /// It does not do it.
    Refused,
};

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

    /// Starts the program where the bus can; where `patience` is less than the bus has with what it starts,
    /// one that takes its time counts as absent.
    [[nodiscard]] QCoro::Task<PageOpening> openReminder(QString page, QString activationToken) const;

    /// Absent where there is none, and nothing was done. On failure why it could not be asked, or did not
    /// answer, for people. Waits as long as it is at work.
    [[nodiscard]] QCoro::Task<tl::expected<std::optional<SessionOutcome>, QString>> perform(
        SessionRequest request, SessionPlace place) const;

private:
    QString m_applicationId;
    std::chrono::milliseconds m_patience;
};

} // namespace orbitledge
