#include "platform/curl/HttpLoop.h"

#include "platform/curl/CurlLibrary.h"
#include "platform/curl/HttpExchange.h"

#include <algorithm>
#include <map>
#include <memory>
#include <utility>

namespace orbitledge {

using SteadyClock = std::chrono::steady_clock;

using Kind = TransportFailure::Kind;

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
        auto exchange = std::make_unique<HttpExchange>(
            m_curl, m_multi, std::move(order.request), std::move(order.options), *order.result);
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
    std::map<CURL *, std::unique_ptr<HttpExchange>> m_exchanges;
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
