#pragma once

#include "platform/HttpSession.h"
#include "service/APIError.h"

#include <optional>

namespace orbitledge {

/// The failure that an answer stands for; absent for a status from 200 to 299, whose body is the operation's.
/// Safe to call from any thread.
std::optional<APIError> failureOf(const HttpResponse &response);

/// The seconds of a Retry-After header. Absent for anything but one decimal number and nothing beside it: the
/// date form (RFC 9110, section 10.2.3) among others.
std::optional<double> retryAfterSeconds(QByteArrayView header);

} // namespace orbitledge
