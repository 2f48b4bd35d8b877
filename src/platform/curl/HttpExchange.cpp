#include "platform/curl/HttpExchange.h"

#include "model/WebAddress.h"

#include <array>
#include <utility>

namespace orbitledge {

using namespace Qt::StringLiterals;

namespace {

using Kind = TransportFailure::Kind;

constexpr int mostRedirects = 20;
/// Far more than any server sends, and little enough to hold.
constexpr qsizetype mostHeaderBytes = qsizetype{256} << 10;

Kind kindOf(CURLcode code)
{
    switch (code) {
    case CURLE_OPERATION_TIMEDOUT:
        return Kind::TimedOut;
    case CURLE_COULDNT_RESOLVE_HOST:
    case CURLE_COULDNT_RESOLVE_PROXY:
        return Kind::HostNotFound;
    case CURLE_COULDNT_CONNECT:
        return Kind::CannotConnect;
    case CURLE_GOT_NOTHING:
    case CURLE_PARTIAL_FILE:
    case CURLE_RECV_ERROR:
    case CURLE_SEND_ERROR:
        return Kind::ConnectionLost;
    case CURLE_SSL_CONNECT_ERROR:
    case CURLE_PEER_FAILED_VERIFICATION:
    case CURLE_SSL_CERTPROBLEM:
    case CURLE_SSL_CIPHER:
    case CURLE_SSL_CACERT_BADFILE:
    case CURLE_SSL_CRL_BADFILE:
    case CURLE_SSL_ISSUER_ERROR:
    case CURLE_SSL_INVALIDCERTSTATUS:
    case CURLE_SSL_ENGINE_INITFAILED:
    case CURLE_USE_SSL_FAILED:
        return Kind::TlsFailed;
    case CURLE_FILESIZE_EXCEEDED:
        return Kind::TooLarge;
    case CURLE_BAD_CONTENT_ENCODING:
    case CURLE_WEIRD_SERVER_REPLY:
    case CURLE_UNSUPPORTED_PROTOCOL: // no HTTP at all, or a version of it that is none
    case CURLE_OUT_OF_MEMORY: // said of a header that never ends
        return Kind::BadAnswer;
    default:
        return Kind::Other;
    }
}

bool isRedirect(long status)
{
    constexpr std::array statuses{301L, 302L, 303L, 307L, 308L};
    return std::ranges::find(statuses, status) != statuses.end();
}

/// RFC 9110, section 5.6.2: what a method and a header's name are made of.
bool isToken(QByteArrayView text)
{
    const auto isTokenCharacter = [](char c) {
        return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z')
            || QByteArrayView("!#$%&'*+-.^_`|~").contains(c);
    };
    return !text.isEmpty() && std::ranges::all_of(text, isTokenCharacter);
}

/// A line break in a header would start another one.
bool isSendable(const HttpHeader &header)
{
    const auto isForbidden = [](char c) { return c == '\r' || c == '\n' || c == '\0'; };
    return isToken(header.name) && std::ranges::none_of(header.value, isForbidden);
}

/// A field that stands in several lines is one list (RFC 9110, section 5.3).
QByteArray combinedValue(const QList<HttpHeader> &headers, QByteArrayView name)
{
    QByteArrayList values;
    for (const HttpHeader &header : headers) {
        if (header.name.compare(name, Qt::CaseInsensitive) == 0)
            values.append(header.value);
    }
    return values.join(", ");
}

} // namespace

HttpExchange::HttpExchange(const CurlLibrary &curl, CURLM *multi, HttpRequest request,
    HttpAttemptOptions options, Handover<HttpAttempt> &result)
    : m_curl(curl)
    , m_multi(multi)
    , m_easy(curl.easyInit())
    , m_request(std::move(request))
    , m_options(std::move(options))
    , m_result(&result)
    , m_lastMovement(SteadyClock::now())
    , m_deadline(m_lastMovement + m_options.totalTimeout)
{
    begin();
}

HttpExchange::~HttpExchange()
{
    m_curl.multiRemoveHandle(m_multi, m_easy);
    m_curl.easyCleanup(m_easy);
    m_curl.slistFreeAll(m_headerList);
}

void HttpExchange::transferEnded(CURLcode code)
{
    if (code != CURLE_OK) {
        fail(m_failure.value_or(kindOf(code)));
        return;
    }
    // A connection that closes within the headers is the end of them to the library.
    if (!m_headersEnded) {
        fail(Kind::ConnectionLost);
        return;
    }
    long status = 0;
    // NOLINTNEXTLINE(cppcoreguidelines-pro-type-vararg,hicpp-vararg)
    m_curl.easyGetinfo(m_easy, CURLINFO_RESPONSE_CODE, &status);
    // In a status line that is none, like "HTTP/20 .101", the library finds a number nevertheless.
    constexpr long smallestFinal = 200;
    if (status < smallestFinal) {
        fail(Kind::BadAnswer);
        return;
    }
    if (isRedirect(status) && follow(status))
        return;
    auto body = m_decoder ? m_decoder->finish() : QByteArray();
    if (!body) {
        fail(body.error().kind);
        return;
    }
    give({HttpResponse{
              .statusCode = static_cast<int>(status),
              .headers = std::move(m_headers),
              .body = *std::move(body),
          },
        false});
}

void HttpExchange::fail(Kind kind)
{
    const bool nothingWasSent
        = m_redirects == 0 && (kind == Kind::CannotConnect || kind == Kind::HostNotFound);
    give({tl::make_unexpected(TransportFailure{kind}), nothingWasSent});
}

void HttpExchange::begin()
{
    m_headers.clear();
    m_headerBytes = 0;
    m_headersEnded = false;
    m_decoder.reset();
    m_curl.easyReset(m_easy);
    m_curl.slistFreeAll(std::exchange(m_headerList, nullptr));

    describeConnection();
    if (!describeRequest()) {
        fail(Kind::Other);
        return;
    }
    receive();
    m_curl.multiAddHandle(m_multi, m_easy);
}

void HttpExchange::describeConnection()
{
    // Without user information, which would be sent as a password, and without the fragment.
    const QByteArray address
        = m_request.url.toEncoded(QUrl::FullyEncoded | QUrl::RemoveUserInfo | QUrl::RemoveFragment);
    setOption(CURLOPT_URL, address.constData());
    setOption(CURLOPT_PATH_AS_IS, 1L);
    setOption(CURLOPT_PROTOCOLS_STR, "http,https");
    // Version 1.1 on a connection of its own: on a connection that was used before, or on one of
    // version 2, the library sends a request again where the server closed it.
    setOption(CURLOPT_HTTP_VERSION, long{CURL_HTTP_VERSION_1_1});
    setOption(CURLOPT_FRESH_CONNECT, 1L);
    setOption(CURLOPT_FORBID_REUSE, 1L);
    setOption(CURLOPT_SSLVERSION, long{CURL_SSLVERSION_TLSv1_2});
    if (!m_options.certificateAuthorities.isEmpty())
        setOption(CURLOPT_CAINFO, m_options.certificateAuthorities.constData());
    setOption(CURLOPT_NOSIGNAL, 1L);
    // A name server that does not answer must not hold up the end of the program.
    setOption(CURLOPT_QUICK_EXIT, 1L);
    setOption(CURLOPT_SUPPRESS_CONNECT_HEADERS, 1L);
    setOption(CURLOPT_MAXFILESIZE_LARGE, curl_off_t{m_options.largestBody});
    // The environment's proxies are used, but what is meant for this machine stays on it.
    if (isLoopback(m_request.url))
        setOption(CURLOPT_NOPROXY, "*");
}

bool HttpExchange::describeRequest()
{
    if (!isToken(m_request.method))
        return false;
    if (m_request.body) {
        setOption(CURLOPT_POSTFIELDSIZE_LARGE, curl_off_t{m_request.body->size()});
        setOption(CURLOPT_POSTFIELDS, m_request.body->constData());
    }
    if (m_request.method == "HEAD")
        setOption(CURLOPT_NOBODY, 1L);
    else
        setOption(CURLOPT_CUSTOMREQUEST, m_request.method.constData());

    // "Name:" alone takes a header of the library away, "Name;" sends one without a value.
    m_headerList = m_curl.slistAppend(m_headerList, "Expect:");
    m_headerList = m_curl.slistAppend(m_headerList, "Accept-Encoding: gzip");
    QList<HttpHeader> headers = m_request.headers;
    headers.append({"User-Agent", m_options.userAgent});
    for (const HttpHeader &header : std::as_const(headers)) {
        if (!isSendable(header))
            return false;
        const QByteArray line
            = header.name + (header.value.isEmpty() ? QByteArray(";") : ": " + header.value);
        m_headerList = m_curl.slistAppend(m_headerList, line.constData());
    }
    setOption(CURLOPT_HTTPHEADER, m_headerList);
    return true;
}

void HttpExchange::receive()
{
    setOption(CURLOPT_HEADERFUNCTION, &HttpExchange::headerCame);
    setOption(CURLOPT_HEADERDATA, this);
    setOption(CURLOPT_WRITEFUNCTION, &HttpExchange::bodyCame);
    setOption(CURLOPT_WRITEDATA, this);
    setOption(CURLOPT_XFERINFOFUNCTION, &HttpExchange::progressed);
    setOption(CURLOPT_XFERINFODATA, this);
    setOption(CURLOPT_NOPROGRESS, 0L);
}

std::size_t HttpExchange::headerCame(const char *data, std::size_t /*one*/, std::size_t size, void *self)
{
    return static_cast<HttpExchange *>(self)->takeHeader({data, static_cast<qsizetype>(size)}) ? size : 0;
}

bool HttpExchange::takeHeader(QByteArrayView line)
{
    m_lastMovement = SteadyClock::now();
    m_headerBytes += line.size();
    if (m_headerBytes > mostHeaderBytes)
        return stop(Kind::BadAnswer);
    // An interim answer, or none before this one (RFC 9110, section 15.2).
    if (line.startsWith("HTTP/") && !m_decoder) {
        m_headers.clear();
        m_headersEnded = false;
        return true;
    }
    // Fields behind the body say nothing that anybody asked for.
    if (m_headersEnded)
        return true;
    if (line.trimmed().isEmpty()) {
        m_headersEnded = true;
        return true;
    }
    const bool isFolded = line.startsWith(' ') || line.startsWith('\t');
    if (isFolded && !m_headers.isEmpty()) {
        m_headers.last().value += ' ' + line.trimmed().toByteArray();
        return true;
    }
    const auto colon = line.indexOf(':');
    if (colon > 0)
        m_headers.append(
            {line.first(colon).trimmed().toByteArray(), line.sliced(colon + 1).trimmed().toByteArray()});
    return true;
}

std::size_t HttpExchange::bodyCame(const char *data, std::size_t /*one*/, std::size_t size, void *self)
{
    return static_cast<HttpExchange *>(self)->takeBody({data, static_cast<qsizetype>(size)}) ? size : 0;
}

bool HttpExchange::takeBody(QByteArrayView piece)
{
    m_lastMovement = SteadyClock::now();
    if (!m_decoder) {
        m_decoder.emplace(m_options.largestBody);
        if (auto failure = m_decoder->setCoding(combinedValue(m_headers, "Content-Encoding")))
            return stop(failure->kind);
    }
    auto failure = m_decoder->add(piece);
    return !failure || stop(failure->kind);
}

int HttpExchange::progressed(
    void *self, curl_off_t /*total*/, curl_off_t down, curl_off_t /*total*/, curl_off_t up)
{
    return static_cast<HttpExchange *>(self)->takeProgress(down, up) ? 0 : 1;
}

bool HttpExchange::takeProgress(curl_off_t down, curl_off_t up)
{
    if (std::exchange(m_down, down) != down || std::exchange(m_up, up) != up)
        m_lastMovement = SteadyClock::now();
    // As it travels: what is compressed need not grow when it is decompressed.
    return down <= m_options.largestBody || stop(Kind::TooLarge);
}

bool HttpExchange::stop(Kind kind)
{
    m_failure = kind;
    return false;
}

bool HttpExchange::follow(long status)
{
    const QByteArray location = headerValue(m_headers, "Location").value_or(QByteArray());
    const QUrl target = m_request.url.resolved(QUrl::fromEncoded(location));
    if (location.isEmpty() || !target.isValid() || !isSameOrigin(target, m_request.url))
        return false;
    if (++m_redirects > mostRedirects) {
        fail(Kind::TooManyRedirects);
        return true;
    }
    m_request.url = target;
    // RFC 9110, sections 15.4.2 to 15.4.4: POST becomes GET, as every browser has it.
    constexpr long found = 302;
    constexpr long seeOther = 303;
    if ((status == seeOther && m_request.method != "HEAD")
        || (status <= found && m_request.method == "POST")) {
        m_request.method = "GET";
        m_request.body.reset();
        m_request.headers.removeIf([](const HttpHeader &header) {
            return header.name.compare("Content-Type", Qt::CaseInsensitive) == 0;
        });
    }
    m_curl.multiRemoveHandle(m_multi, m_easy);
    begin();
    return true;
}

void HttpExchange::give(HttpAttempt attempt)
{
    if (m_result != nullptr)
        std::exchange(m_result, nullptr)->give(std::move(attempt));
}

} // namespace orbitledge
