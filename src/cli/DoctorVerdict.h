#pragma once

#include "cli/DoctorChecks.h"

#include <optional>

namespace orbitledge {

/// One state that a subject can be in.
struct Verdict {
    CheckLevel level = CheckLevel::Ok;
    const char *state = "";
    QString text;
    QString advice;
};

Check checkOf(const char *subject, const QString &title, Verdict verdict,
    QList<std::pair<QByteArray, Check::Detail>> details = {});

/// Of what nobody can tell who does not reach the session bus.
Verdict unknownWithoutBus();

/// Those that are not empty.
QString joined(const QStringList &parts);

template <typename T> Check::Detail detailOf(const std::optional<T> &value)
{
    return value ? Check::Detail(*value) : Check::Detail();
}

} // namespace orbitledge
