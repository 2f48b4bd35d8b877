#pragma once

#include "platform/Diagnosis.h"

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <functional>

namespace orbitledge {

// These read the environment and small files.

/// All but the library that speaks HTTP, which is told by who links it.
findings::Versions inspectVersions();

findings::Session inspectSession(const std::function<QByteArray(const char *)> &variable);

/// As the environment names it, or else the user database.
QString homeFolder(const std::function<QByteArray(const char *)> &variable);

/// The names under which this machine knows the person.
QStringList userNames(const std::function<QByteArray(const char *)> &variable);

} // namespace orbitledge
