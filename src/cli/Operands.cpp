#include "cli/Operands.h"

namespace orbitledge {

using namespace Qt::StringLiterals;

ExitCode usageError(const Environment &environment, QLatin1StringView command, const QString &reason)
{
    reportError(environment, command + u": "_s + reason);
    return ExitCode::Usage;
}

std::optional<QList<QByteArray>> operandsOf(std::span<const QByteArray> words, qsizetype most,
    QLatin1StringView command, QString (*help)(), const Environment &environment, ExitCode &end)
{
    QList<QByteArray> operands;
    for (const QByteArray &word : words) {
        if (word == "--help" || word == "-h") {
            end = finish(environment, writeText(environment, help()));
            return std::nullopt;
        }
        const QString quoted = u'"' + QString::fromUtf8(word) + u'"';
        if (word.startsWith('-')) {
            end = usageError(environment, command, u"the option %1 is not known"_s.arg(quoted));
            return std::nullopt;
        }
        if (operands.size() == most) {
            end = usageError(environment, command, u"%1 was not expected"_s.arg(quoted));
            return std::nullopt;
        }
        operands.append(word);
    }
    return operands;
}

} // namespace orbitledge
