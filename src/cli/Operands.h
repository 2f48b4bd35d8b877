#pragma once

#include "cli/Environment.h"

#include <QList>
#include <QString>

#include <optional>
#include <span>

namespace orbitledge {

/// The end of a command whose arguments are wrong, which is reported.
ExitCode usageError(const Environment &environment, QLatin1StringView command, const QString &reason);

/// For a command whose one option is --help: takes the words that are no options, which are `most` at most.
/// Absent where the command has ended with this, as `end` tells.
std::optional<QList<QByteArray>> operandsOf(std::span<const QByteArray> words, qsizetype most,
    QLatin1StringView command, QString (*help)(), const Environment &environment, ExitCode &end);

} // namespace orbitledge
