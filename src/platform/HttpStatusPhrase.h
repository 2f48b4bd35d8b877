#pragma once

#include <QString>

namespace orbitledge {

/// A few words for people about an HTTP status code (RFC 9110, section 15), for answers that bring none of
/// their own. Lower case, never empty.
QString httpStatusPhrase(int statusCode);

} // namespace orbitledge
