#include "platform/HttpSession.h"

#include <algorithm>

namespace orbitledge {

using namespace Qt::StringLiterals;

std::optional<QByteArray> headerValue(const QList<HttpHeader> &headers, QByteArrayView name)
{
    const auto found = std::ranges::find_if(headers,
        [name](const HttpHeader &header) { return header.name.compare(name, Qt::CaseInsensitive) == 0; });
    return found == headers.end() ? std::nullopt : std::optional(found->value);
}

bool HttpResponse::isSuccess() const
{
    constexpr int first = 200;
    constexpr int last = 299;
    return statusCode >= first && statusCode <= last;
}

QString TransportFailure::errorDescription() const
{
    switch (kind) {
    case Kind::TimedOut:
        return u"The request timed out."_s;
    case Kind::Cancelled:
        return u"cancelled"_s;
    case Kind::HostNotFound:
        return u"A server with the specified hostname could not be found."_s;
    case Kind::CannotConnect:
        return u"Could not connect to the server."_s;
    case Kind::ConnectionLost:
        return u"The network connection was lost."_s;
    case Kind::Offline:
        return u"The Internet connection appears to be offline."_s;
    case Kind::TlsFailed:
        return u"An SSL error has occurred and a secure connection to the server cannot be made."_s;
    case Kind::TooManyRedirects:
        return u"The server redirects in circles."_s;
    case Kind::TooLarge:
        return u"The server’s answer is too large."_s;
    case Kind::BadAnswer:
        return u"The server’s answer is damaged."_s;
    case Kind::Other:
        break;
    }
    return u"The request failed."_s;
}

} // namespace orbitledge
