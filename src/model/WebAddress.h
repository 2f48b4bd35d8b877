#pragma once

#include <QString>
#include <QUrl>

#include <optional>

namespace orbitledge {

/// Reads an absolute URL (RFC 3986, section 4.3, with or without a fragment). Characters that must not stand
/// in a URL are percent-encoded. Absent for the empty text, for one without a scheme, and for one whose
/// authority cannot be one: a port that is no number, a bracketed host that is no IP literal.
std::optional<QUrl> absoluteUrlFromText(const QString &text);

/// Scheme, host and port are the same (RFC 6454, section 5); a port that is not written is the scheme's own.
bool isSameOrigin(const QUrl &a, const QUrl &b);

/// The host is this machine by its name alone: "localhost" and names that end in ".localhost" (RFC 6761,
/// section 6.3), 127.0.0.0/8 (RFC 1122, section 3.2.1.3) and ::1. Nothing is looked up.
bool isLoopback(const QUrl &url);

} // namespace orbitledge
