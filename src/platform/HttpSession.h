#pragma once

#include <QByteArray>
#include <QCoroTask>
#include <QList>
#include <QString>
#include <QUrl>

#include <tl/expected.hpp>

#include <chrono>
#include <optional>

namespace orbitledge {

struct HttpHeader {
    QByteArray name;
    QByteArray value;

    friend bool operator==(const HttpHeader &, const HttpHeader &) = default;
};

/// The first value of a header whose name matches ignoring case; absent where there is none.
std::optional<QByteArray> headerValue(const QList<HttpHeader> &headers, QByteArrayView name);

struct HttpRequest {
    QByteArray method = "GET";
    QUrl url;
    QList<HttpHeader> headers;
    std::optional<QByteArray> body;
    /// Without a byte in either direction; the session's own limit counts where it is shorter.
    std::chrono::milliseconds idleTimeout{60'000};
};

struct HttpResponse {
    /// Absent where the answer came by something else than HTTP.
    std::optional<int> statusCode;
    /// In the order in which they came, one entry a header line.
    QList<HttpHeader> headers;
    /// Decompressed. There is room for 64 bytes behind its end, which parsers want.
    QByteArray body;

    /// A status from 200 to 299 (RFC 9110, section 15.3).
    [[nodiscard]] bool isSuccess() const;
};

/// Why there is no answer. It tells nothing of what was sent.
struct TransportFailure {
    enum class Kind {
        TimedOut,
        Cancelled,
        HostNotFound,
        CannotConnect,
        ConnectionLost,
        /// There is no network, and waiting for one took too long.
        Offline,
        /// The server could not prove who it is, or no secure connection came about.
        TlsFailed,
        TooManyRedirects,
        /// The answer is larger than the session takes.
        TooLarge,
        /// The answer breaks the rules of HTTP or of its content coding.
        BadAnswer,
        Other,
    };

    Kind kind = Kind::Other;

    /// A sentence for people.
    [[nodiscard]] QString errorDescription() const;

    friend bool operator==(const TransportFailure &, const TransportFailure &) = default;
};

struct HttpSessionConfiguration {
    /// Without a byte in either direction.
    std::chrono::milliseconds requestTimeout{20'000};
    /// From the call to the last byte, redirects and waiting for the network included.
    std::chrono::milliseconds resourceTimeout{30'000};
    /// Bytes of an answer's body, as they travel and decompressed.
    qint64 largestBody = qint64{128} << 20;
    /// Where a connection cannot be made and the machine says that it has no network, wait for one and try
    /// again. A host of this machine is never waited for.
    bool waitsForConnectivity = true;
    /// A file of trusted certificates (PEM) instead of the system's; empty for the system's.
    QByteArray certificateAuthorities;
};

/// Sends HTTP requests (RFC 9110) and keeps nothing between them: no cookies, no cache, no passwords.
/// Redirects are followed within the origin (RFC 6454) of the request; any other one is the answer.
/// A server's certificate must be valid. Nothing is sent twice.
class HttpSession {
public:
    HttpSession() = default;
    HttpSession(const HttpSession &) = delete;
    HttpSession &operator=(const HttpSession &) = delete;
    virtual ~HttpSession() = default;

    /// Never blocks the calling thread, which needs an event loop.
    [[nodiscard]] virtual QCoro::Task<tl::expected<HttpResponse, TransportFailure>> send(HttpRequest request)
        = 0;
};

} // namespace orbitledge
