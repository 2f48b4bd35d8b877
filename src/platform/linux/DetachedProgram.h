#pragma once

#include <QCoroTask>
#include <QList>
#include <QStringList>

#include <chrono>
#include <optional>
#include <utility>

namespace orbitledge {

/// A program and its arguments.
struct ProgramCall {
    QString program;
    QStringList arguments;

    friend bool operator==(const ProgramCall &, const ProgramCall &) = default;
};

/// The first of the calls whose program is on PATH, with the path where it is.
std::optional<ProgramCall> firstAvailable(const QList<ProgramCall> &calls);

/// Names and values that a program finds in its environment instead of ours; those without a value it does
/// not find.
using EnvironmentChanges = QList<std::pair<QByteArray, std::optional<QByteArray>>>;

/// Starts a program as one of its own, which survives us: in a session of its own, with nothing open but
/// /dev/null. Looks on for `patience`: false where it cannot be started, or fails by then. One that still
/// runs is left to itself. `program` is a path; user-interface thread only.
QCoro::Task<bool> startDetached(
    ProgramCall call, EnvironmentChanges environment, std::chrono::milliseconds patience);

} // namespace orbitledge
