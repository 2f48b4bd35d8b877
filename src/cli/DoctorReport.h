#pragma once

#include "cli/DoctorChecks.h"

#include <QByteArray>
#include <QList>
#include <QString>

namespace orbitledge {

/// Nothing that the program needs is missing.
bool isHealthy(const QList<Check> &checks);

/// For people: a line a check, a line below it for what to do, and at the end what it comes to.
QString doctorText(const OwnFacts &own, const QList<Check> &checks);

/// One JSON object for programs on a line of its own, in UTF-8: an object for each subject.
QByteArray doctorJson(const OwnFacts &own, const QList<Check> &checks);

} // namespace orbitledge
