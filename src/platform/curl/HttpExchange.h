#pragma once

#include "platform/curl/BodyDecoder.h"
#include "platform/curl/CurlLibrary.h"
#include "platform/curl/HttpLoop.h"

#include <algorithm>
#include <chrono>
#include <optional>

namespace orbitledge {

/// One attempt, redirects included. On the loop's thread only.
class HttpExchange {
public:
    using SteadyClock = std::chrono::steady_clock;

    HttpExchange(const CurlLibrary &curl, CURLM *multi, HttpRequest request, HttpAttemptOptions options,
        Handover<HttpAttempt> &result);
    HttpExchange(const HttpExchange &) = delete;
    HttpExchange &operator=(const HttpExchange &) = delete;
    ~HttpExchange();

    [[nodiscard]] CURL *handle() const { return m_easy; }

    /// The result was given.
    [[nodiscard]] bool isOver() const { return m_result == nullptr; }

    /// When it has to end at the latest, as far as can be told now.
    [[nodiscard]] SteadyClock::time_point deadline() const
    {
        return std::min(m_deadline, m_lastMovement + m_options.idleTimeout);
    }

    /// Gives the result, or goes on with a redirect.
    void transferEnded(CURLcode code);
    void fail(TransportFailure::Kind kind);

private:
    void begin();
    void describeConnection();
    /// Whether method and headers can be sent.
    bool describeRequest();
    void receive();

    // What the library calls: with the number of bytes that came, and whether to go on.
    static std::size_t headerCame(const char *data, std::size_t one, std::size_t size, void *self);
    static std::size_t bodyCame(const char *data, std::size_t one, std::size_t size, void *self);
    static int progressed(
        void *self, curl_off_t downTotal, curl_off_t down, curl_off_t upTotal, curl_off_t up);
    bool takeHeader(QByteArrayView line);
    bool takeBody(QByteArrayView piece);
    bool takeProgress(curl_off_t down, curl_off_t up);
    bool stop(TransportFailure::Kind kind);

    /// False where the redirect leads elsewhere, or nowhere, and is itself the answer.
    bool follow(long status);
    void give(HttpAttempt attempt);

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
    std::optional<TransportFailure::Kind> m_failure;
};

} // namespace orbitledge
