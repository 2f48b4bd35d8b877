#include "service/ResponseFailure.h"

#include "platform/HttpStatusPhrase.h"
#include "service/ErrorBody.h"

#include <charconv>

namespace orbitledge {

namespace {

QString messageOf(const HttpResponse &response, int statusCode)
{
    if (const auto body = decodeErrorBody(response.body)) {
        for (const auto &text : {body->error, body->message, body->details}) {
            if (text)
                return *text;
        }
    }
    return httpStatusPhrase(statusCode);
}

} // namespace

std::optional<double> retryAfterSeconds(QByteArrayView header)
{
    // from_chars knows no plus, but names of what is no number.
    const bool hasSign = header.startsWith('+') || header.startsWith('-');
    const QByteArrayView digits = hasSign ? header.sliced(1) : header;
    const auto startsNumber = [](char c) { return (c >= '0' && c <= '9') || c == '.'; };
    if (digits.isEmpty() || !startsNumber(digits.front()))
        return std::nullopt;
    if (header.startsWith('+'))
        header = digits;
    double seconds = 0;
    const char *const end = header.data() + header.size();
    const auto [rest, error] = std::from_chars(header.data(), end, seconds);
    if (error != std::errc() || rest != end)
        return std::nullopt;
    return seconds;
}

std::optional<APIError> failureOf(const HttpResponse &response)
{
    constexpr int unauthorized = 401;
    constexpr int forbidden = 403;
    constexpr int tooManyRequests = 429;

    if (!response.statusCode)
        return APIError::InvalidResponse{};
    if (response.isSuccess())
        return std::nullopt;
    const int status = *response.statusCode;

    QString message = messageOf(response, status);
    switch (status) {
    case tooManyRequests: {
        const auto header = headerValue(response.headers, "Retry-After");
        return APIError::RateLimited{header ? retryAfterSeconds(*header) : std::nullopt, std::move(message)};
    }
    case forbidden:
        return APIError::Forbidden{std::move(message)};
    case unauthorized:
        return APIError::Unauthorized{std::move(message)};
    default:
        return APIError::RequestFailed{status, std::move(message)};
    }
}

} // namespace orbitledge
