#pragma once

#include "model/Instant.h"

#include <QByteArray>
#include <QString>

#include <tl/expected.hpp>

#include <filesystem>
#include <functional>

namespace orbitledge {

/// A timer of systemd and the service that it starts, in the notation of unit files.
struct SystemdUnits {
    /// When the timer elapses: a whole second that systemd can express.
    Instant elapse;
    QByteArray service;
    QByteArray timer;

    friend bool operator==(const SystemdUnits &, const SystemdUnits &) = default;
};

/// The units that run `<program> deliver-reminders` once, at `next` or, since a timer knows whole seconds
/// here, at the next one after it. The program will see the variables that say where its data and its service
/// are as `variable` tells them now; one that is empty it will not see. Otherwise why not, as the end of a
/// sentence.
tl::expected<SystemdUnits, QString> unitsForReminders(Instant next, const std::filesystem::path &program,
    const std::function<QByteArray(const char *)> &variable);

} // namespace orbitledge
