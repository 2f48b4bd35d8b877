#pragma once

#include <QString>
#include <QUrl>

#include <optional>

namespace orbitledge {

/// Reads an absolute URL (RFC 3986, section 4.3, with or without a fragment). Characters that must not stand
/// in a URL are percent-encoded. Absent for the empty text, for one without a scheme, and for one whose
/// authority cannot be one: a port that is no number, a bracketed host that is no IP literal.
std::optional<QUrl> absoluteUrlFromText(const QString &text);

} // namespace orbitledge
