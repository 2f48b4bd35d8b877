#pragma once

#include <QCoroTask>
#include <QDBusMessage>
#include <QString>

#include <tl/expected.hpp>

#include <chrono>

namespace orbitledge {

// Who is behind a name on the session bus. Nobody is started. On failure what came back instead.

/// The name that no other process ever has; empty where nobody is there.
QCoro::Task<tl::expected<QString, QDBusMessage>> nameOwner(QString name, std::chrono::milliseconds limit);

QCoro::Task<tl::expected<bool, QDBusMessage>> hasNameOwner(QString name, std::chrono::milliseconds limit);

} // namespace orbitledge
