#pragma once

#include "platform/Handover.h"
#include "platform/HttpSession.h"

#include <chrono>
#include <deque>
#include <mutex>
#include <stop_token>
#include <thread>

namespace orbitledge {

struct CurlLibrary;

/// What one attempt to get an answer is given.
struct HttpAttemptOptions {
    std::chrono::milliseconds idleTimeout{};
    std::chrono::milliseconds totalTimeout{};
    qint64 largestBody = 0;
    QByteArray userAgent;
    /// Empty for the system's.
    QByteArray certificateAuthorities;
};

/// How one attempt ended.
struct HttpAttempt {
    tl::expected<HttpResponse, TransportFailure> outcome;
    /// No connection came about, so that it can be tried again without sending anything twice.
    bool nothingWasSent = false;
};

/// One thread on which all of libcurl's work happens. It starts with the first attempt and sleeps between
/// attempts. Where the library is not installed, every attempt fails.
class HttpLoop {
public:
    HttpLoop() = default;
    HttpLoop(const HttpLoop &) = delete;
    HttpLoop &operator=(const HttpLoop &) = delete;
    ~HttpLoop();

    /// From one thread. `result` must live until it was given, which happens through that thread's event
    /// loop.
    void attempt(HttpRequest request, HttpAttemptOptions options, Handover<HttpAttempt> &result);

    /// Ends what is under way as Cancelled, and whatever comes later at once.
    void shutDown();

private:
    class Thread;

    struct Order {
        HttpRequest request;
        HttpAttemptOptions options;
        Handover<HttpAttempt> *result = nullptr;
    };

    void run(const std::stop_token &stop);
    void work(const CurlLibrary &curl, const std::stop_token &stop);
    void wake();
    std::deque<Order> takeOrders();

    std::mutex m_mutex;
    /// libcurl's CURLM, whose header stays out of ours; there while the thread works.
    void *m_multi = nullptr;
    bool m_isWithoutLibrary = false;
    std::deque<Order> m_orders;
    bool m_isShutDown = false;
    std::jthread m_thread;
};

} // namespace orbitledge
