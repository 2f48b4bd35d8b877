#pragma once

#include "model/Instant.h"

#include <QByteArray>
#include <QString>

#include <optional>

namespace orbitledge {

/// What the service knows this session by. The value is a secret.
struct SessionCredential {
    /// The session cookie's value, one character a byte.
    QString value;
    /// From this moment on the service does not know it any more.
    Instant expiresAt;

    [[nodiscard]] bool isExpired(Instant now) const { return expiresAt <= now; }

    friend bool operator==(const SessionCredential &, const SessionCredential &) = default;
};

/// A JSON object with the keys "value" and "expiresAt", the latter in seconds since 2001-01-01T00:00:00Z.
QByteArray encodeSessionCredential(const SessionCredential &credential);

/// Absent for anything that `encodeSessionCredential` does not write: another JSON, a moment beyond the
/// years that an Instant holds, a value with control characters, which no cookie has and no header may carry.
std::optional<SessionCredential> decodeSessionCredential(const QByteArray &json);

} // namespace orbitledge
