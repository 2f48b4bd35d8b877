#include "cli/DoctorVerdict.h"

namespace orbitledge {

using namespace Qt::StringLiterals;

Check checkOf(const char *subject, const QString &title, Verdict verdict,
    QList<std::pair<QByteArray, Check::Detail>> details)
{
    return {
        .subject = subject,
        .title = title,
        .level = verdict.level,
        .state = verdict.state,
        .text = std::move(verdict.text),
        .advice = std::move(verdict.advice),
        .details = std::move(details),
    };
}

Verdict unknownWithoutBus()
{
    return {.level = CheckLevel::Info,
        .state = "unknown",
        .text = u"cannot be asked without the session bus"_s,
        .advice = {}};
}

QString joined(const QStringList &parts)
{
    QStringList there = parts;
    there.removeAll(QString());
    return there.join(u", "_s);
}

} // namespace orbitledge
