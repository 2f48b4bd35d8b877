#include "platform/curl/HttpLoop.h"

#include "model/WebAddress.h"
#include "platform/curl/BodyDecoder.h"
#include "platform/curl/CurlLibrary.h"

#include <algorithm>
#include <array>
#include <map>
#include <optional>
#include <utility>

namespace orbitledge {

using namespace Qt::StringLiterals;
using SteadyClock = std::chrono::steady_clock;

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

/// One attempt, redirects included.
class HttpLoop::Exchange {
public:
    Exchange(const CurlLibrary &curl, CURLM *multi, Order order)
        : m_curl(curl)
        , m_multi(multi)
        , m_easy(curl.easyInit())
        , m_request(std::move(order.request))
        , m_options(std::move(order.options))
        , m_result(order.result)
        , m_lastMovement(SteadyClock::now())
        , m_deadline(m_lastMovement + m_options.totalTimeout)
    {
        begin();
    }
    Exchange(const Exchange &) = delete;
    Exchange &operator=(const Exchange &) = delete;
    ~Exchange()
    {
        m_curl.multiRemoveHandle(m_multi, m_easy);
        m_curl.easyCleanup(m_easy);
        m_curl.slistFreeAll(m_headerList);
    }

    [[nodiscard]] CURL *handle() const { return m_easy; }

    /// The result was given.
    [[nodiscard]] bool isOver() const { return m_result == nullptr; }

    /// When it has to end at the latest, as far as can be told now.
    [[nodiscard]] SteadyClock::time_point deadline() const
    {
        return std::min(m_deadline, m_lastMovement + m_options.idleTimeout);
    }

    /// Gives the result, or goes on with a redirect.
    void transferEnded(CURLcode code)
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

    void fail(Kind kind)
    {
        const bool nothingWasSent
            = m_redirects == 0 && (kind == Kind::CannotConnect || kind == Kind::HostNotFound);
        give({tl::make_unexpected(TransportFailure{kind}), nothingWasSent});
    }

private:
    void begin()
    {
        m_headers.clear();
        m_headerBytes = 0;
        m_headersEnded = false;
        m_decoder.reset();
        m_curl.easyReset(m_easy);
        m_curl.slistFreeAll(std::exchange(m_headerList, nullptr));

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

        if (m_request.body) {
            setOption(CURLOPT_POSTFIELDSIZE_LARGE, curl_off_t{m_request.body->size()});
            setOption(CURLOPT_POSTFIELDS, m_request.body->constData());
        }
        if (!isToken(m_request.method)) {
            fail(Kind::Other);
            return;
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
            if (!isSendable(header)) {
                fail(Kind::Other);
                return;
            }
            const QByteArray line
                = header.name + (header.value.isEmpty() ? QByteArray(";") : ": " + header.value);
            m_headerList = m_curl.slistAppend(m_headerList, line.constData());
        }
        setOption(CURLOPT_HTTPHEADER, m_headerList);

        setOption(CURLOPT_HEADERFUNCTION, &Exchange::headerCame);
        setOption(CURLOPT_HEADERDATA, this);
        setOption(CURLOPT_WRITEFUNCTION, &Exchange::bodyCame);
        setOption(CURLOPT_WRITEDATA, this);
        setOption(CURLOPT_XFERINFOFUNCTION, &Exchange::progressed);
        setOption(CURLOPT_XFERINFODATA, this);
        setOption(CURLOPT_NOPROGRESS, 0L);
        m_curl.multiAddHandle(m_multi, m_easy);
    }

    static std::size_t headerCame(const char *data, std::size_t /*one*/, std::size_t size, void *self)
    {
        return static_cast<Exchange *>(self)->takeHeader({data, static_cast<qsizetype>(size)}) ? size : 0;
    }

    bool takeHeader(QByteArrayView line)
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

    static std::size_t bodyCame(const char *data, std::size_t /*one*/, std::size_t size, void *self)
    {
        return static_cast<Exchange *>(self)->takeBody({data, static_cast<qsizetype>(size)}) ? size : 0;
    }

    bool takeBody(QByteArrayView piece)
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

    static int progressed(
        void *self, curl_off_t /*total*/, curl_off_t down, curl_off_t /*total*/, curl_off_t up)
    {
        return static_cast<Exchange *>(self)->takeProgress(down, up) ? 0 : 1;
    }

    bool takeProgress(curl_off_t down, curl_off_t up)
    {
        if (std::exchange(m_down, down) != down || std::exchange(m_up, up) != up)
            m_lastMovement = SteadyClock::now();
        // As it travels: what is compressed need not grow when it is decompressed.
        return down <= m_options.largestBody || stop(Kind::TooLarge);
    }

    bool stop(Kind kind)
    {
        m_failure = kind;
        return false;
    }

    /// False where the redirect leads elsewhere, or nowhere, and is itself the answer.
    bool follow(long status)
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

    void give(HttpAttempt attempt)
    {
        if (m_result != nullptr)
            std::exchange(m_result, nullptr)->give(std::move(attempt));
    }

    template <typename... Value> void setOption(CURLoption option, Value... value)
    {
        // NOLINTNEXTLINE(cppcoreguidelines-pro-type-vararg,hicpp-vararg): the library's only way
        m_curl.easySetopt(m_easy, option, value...);
    }

    const CurlLibrary &m_curl;
    CURLM *m_multi;
    CURL *m_easy;
    curl_slist *m_headerList = nullptr;
    HttpRequest m_request;
    HttpAttemptOptions m_options;
    Handover<HttpAttempt> *m_result;
    SteadyClock::time_point m_lastMovement;
    SteadyClock::time_point m_deadline;
    curl_off_t m_down = 0;
    curl_off_t m_up = 0;
    int m_redirects = 0;
    QList<HttpHeader> m_headers;
    qsizetype m_headerBytes = 0;
    bool m_headersEnded = false;
    std::optional<BodyDecoder> m_decoder;
    std::optional<Kind> m_failure;
};

/// What the loop's thread holds: everything that is under way.
class HttpLoop::Thread {
public:
    Thread(const CurlLibrary &curl, CURLM *multi)
        : m_curl(curl)
        , m_multi(multi)
    {
    }

    void start(Order order)
    {
        auto exchange = std::make_unique<Exchange>(m_curl, m_multi, std::move(order));
        CURL *const handle = exchange->handle();
        if (!exchange->isOver())
            m_exchanges.emplace(handle, std::move(exchange));
    }

    void perform()
    {
        int running = 0;
        m_curl.multiPerform(m_multi, &running);
        int left = 0;
        while (const CURLMsg *const message = m_curl.multiInfoRead(m_multi, &left)) {
            if (message->msg != CURLMSG_DONE)
                continue;
            const auto found = m_exchanges.find(message->easy_handle);
            // NOLINTNEXTLINE(cppcoreguidelines-pro-type-union-access): the member that "done" has
            const CURLcode code = message->data.result;
            if (found == m_exchanges.end())
                continue;
            found->second->transferEnded(code);
            if (found->second->isOver())
                m_exchanges.erase(found);
        }
        std::erase_if(m_exchanges, [now = SteadyClock::now()](const auto &entry) {
            const bool isLate = entry.second->deadline() <= now;
            if (isLate)
                entry.second->fail(Kind::TimedOut);
            return isLate;
        });
    }

    void sleep()
    {
        using std::chrono::milliseconds;
        milliseconds longest = std::chrono::hours(24);
        const auto now = SteadyClock::now();
        for (const auto &[handle, exchange] : m_exchanges)
            longest = std::min(longest, std::chrono::ceil<milliseconds>(exchange->deadline() - now));
        m_curl.multiPoll(m_multi, nullptr, 0, std::max(0, static_cast<int>(longest.count())), nullptr);
    }

    void cancelAll()
    {
        for (const auto &[handle, exchange] : m_exchanges)
            exchange->fail(Kind::Cancelled);
        m_exchanges.clear();
    }

private:
    const CurlLibrary &m_curl;
    CURLM *m_multi;
    std::map<CURL *, std::unique_ptr<Exchange>> m_exchanges;
};

HttpLoop::~HttpLoop()
{
    shutDown();
}

void HttpLoop::attempt(HttpRequest request, HttpAttemptOptions options, Handover<HttpAttempt> &result)
{
    Kind refusal = Kind::Cancelled;
    {
        const std::scoped_lock lock(m_mutex);
        if (!m_isShutDown && !m_isWithoutLibrary) {
            m_orders.push_back({std::move(request), std::move(options), &result});
            if (!m_thread.joinable())
                m_thread = std::jthread([this](const std::stop_token &stop) { run(stop); });
            wake();
            return;
        }
        if (!m_isShutDown)
            refusal = Kind::Other;
    }
    result.give({tl::make_unexpected(TransportFailure{refusal}), true});
}

void HttpLoop::shutDown()
{
    {
        const std::scoped_lock lock(m_mutex);
        m_isShutDown = true;
    }
    if (m_thread.joinable()) {
        m_thread.request_stop();
        {
            const std::scoped_lock lock(m_mutex);
            wake();
        }
        m_thread.join();
    }
}

/// Before the thread has its library it does not sleep.
void HttpLoop::wake()
{
    if (m_multi != nullptr)
        CurlLibrary::shared()->multiWakeup(m_multi);
}

std::deque<HttpLoop::Order> HttpLoop::takeOrders()
{
    const std::scoped_lock lock(m_mutex);
    return std::exchange(m_orders, {});
}

void HttpLoop::run(const std::stop_token &stop)
{
    const CurlLibrary *const curl = CurlLibrary::shared();
    CURLM *const multi = curl == nullptr ? nullptr : curl->multiInit();
    {
        const std::scoped_lock lock(m_mutex);
        m_multi = multi;
        m_isWithoutLibrary = multi == nullptr;
    }
    if (multi == nullptr) {
        for (const Order &order : takeOrders())
            order.result->give({tl::make_unexpected(TransportFailure{Kind::Other}), false});
        return;
    }
    work(*curl, stop);
    {
        const std::scoped_lock lock(m_mutex);
        m_multi = nullptr;
    }
    curl->multiCleanup(multi);
}

void HttpLoop::work(const CurlLibrary &curl, const std::stop_token &stop)
{
    Thread thread(curl, m_multi);
    while (true) {
        // Asked before the orders are taken: none comes after the stop, so that none is left behind.
        const bool isLast = stop.stop_requested();
        for (Order &order : takeOrders())
            thread.start(std::move(order));
        if (isLast)
            break;
        thread.perform();
        thread.sleep();
    }
    thread.cancelAll();
}

} // namespace orbitledge
