#pragma once

#include "model/Instant.h"
#include "platform/HttpSession.h"

#include <optional>

namespace orbitledge {

/// How long an answer may be shown without asking again (RFC 9111).
struct Freshness {
    bool mayBeKept = true;
    Instant until;

    friend bool operator==(const Freshness &, const Freshness &) = default;
};

/// By Cache-Control, or else by Expires, or else a week; a year at most.
Freshness freshnessOf(const QList<HttpHeader> &headers, Instant now);

/// The one form of HTTP's dates that is written today: "Sun, 06 Nov 1994 08:49:37 GMT" (RFC 9110, section
/// 5.6.7).
std::optional<Instant> instantOfHttpDate(const QByteArray &text);

} // namespace orbitledge
