#pragma once

#include <QByteArray>
#include <QCoroTask>
#include <QString>
#include <QStringList>

#include <chrono>
#include <optional>

namespace orbitledge {

/// What a program found on the PATH printed on its standard output. Absent where it is not there, failed, did
/// not end within `limit`, or had more to say than a short text; one that still runs is killed then.
QCoro::Task<std::optional<QByteArray>> outputOfProgram(
    QString program, QStringList arguments, std::chrono::milliseconds limit);

} // namespace orbitledge
