#pragma once

#include <QByteArray>
#include <QString>

#include <tl/expected.hpp>

namespace orbitledge {

/// Reads a password from a descriptor: one line, without echo and after `prompt` on the same terminal, where
/// it is a terminal; everything up to its end otherwise. The line's end is part of the answer. Blocks.
///
/// The terminal shows again what is typed when this returns, also where a signal ends the program meanwhile.
/// On failure a reason for people.
tl::expected<QByteArray, QString> readPassword(int descriptor, const QByteArray &prompt);

} // namespace orbitledge
