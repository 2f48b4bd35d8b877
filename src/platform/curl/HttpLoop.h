#pragma once

#include "platform/Handover.h"
#include "platform/HttpSession.h"

#include <chrono>
#include <deque>
#include <memory>
#include <mutex>
#include <stop_token>
#include <thread>

namespace orbitledge {

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
/// attempts.
class HttpLoop {
public:
    HttpLoop();
    HttpLoop(const HttpLoop &) = delete;
    HttpLoop &operator=(const HttpLoop &) = delete;
    ~HttpLoop();

    /// From one thread. `result` must live until it was given, which happens through that thread's event
    /// loop.
    void attempt(HttpRequest request, HttpAttemptOptions options, Handover<HttpAttempt> &result);

    /// Ends what is under way as Cancelled, and whatever comes later at once.
    void shutDown();

private:
    class Exchange;
    class Thread;

    struct Order {
        HttpRequest request;
        HttpAttemptOptions options;
        Handover<HttpAttempt> *result = nullptr;
    };

    struct MultiDeleter {
        void operator()(void *multi) const;
    };

    void run(const std::stop_token &stop);
    std::deque<Order> takeOrders();

    /// libcurl's CURLM, whose header stays out of ours.
    std::unique_ptr<void, MultiDeleter> m_multi;
    std::mutex m_mutex;
    std::deque<Order> m_orders;
    bool m_isShutDown = false;
    std::jthread m_thread;
};

} // namespace orbitledge
