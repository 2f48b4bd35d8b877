#pragma once

#include "model/Instant.h"
#include "platform/HttpSession.h"

#include <QString>

#include <optional>
#include <vector>

namespace orbitledge {

/// A cookie as a server sets it.
struct Cookie {
    QString name;
    /// As it was sent, quotes included, one character a byte.
    QString value;
    /// Absent for a cookie that is to end with the browser's session. May lie in the past.
    std::optional<Instant> expiresAt;

    friend bool operator==(const Cookie &, const Cookie &) = default;
};

/// The cookies that the Set-Cookie fields of an answer set for `url` (RFC 6265, section 5.2), in their order.
/// Max-Age counts from `now` and wins over Expires; an Expires that cannot be read counts as none. A cookie
/// for another domain than the url's is left out, and so is one with a control character in its name or
/// value. Several cookies may stand in one field: a comma separates them where a name and "=" follow it.
std::vector<Cookie> cookiesOf(const QList<HttpHeader> &headers, const QUrl &url, Instant now);

} // namespace orbitledge
