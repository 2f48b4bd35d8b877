#pragma once

#include "platform/HttpSession.h"
#include "platform/httpprocess/HttpFrames.h"

namespace orbitledge {

/// What the sending program is told first.
struct HttpSetup {
    QByteArray userAgent;
    HttpSessionConfiguration configuration;
};

/// A request, under a number by which its answer is known.
struct HttpOrder {
    quint64 number = 0;
    HttpRequest request;
};

struct HttpReport {
    quint64 number = 0;
    tl::expected<HttpResponse, TransportFailure> outcome;
};

/// Both programs are of one build, so there is one form and no version of it.
HttpFrame encoded(const HttpSetup &setup);
HttpFrame encoded(const HttpOrder &order);
HttpFrame encoded(const HttpReport &report);

/// Absent where the frame is not one of those.
std::optional<HttpSetup> decodedSetup(const HttpFrame &frame);
std::optional<HttpOrder> decodedOrder(const HttpFrame &frame);
std::optional<HttpReport> decodedReport(HttpFrame frame);

} // namespace orbitledge
