#include "platform/curl/CurlHttpSession.h"

#include "model/WebAddress.h"
#include "platform/curl/HttpLoop.h"

#include <QDeadlineTimer>
#include <QTimer>

#include <coroutine>

namespace orbitledge {

namespace {

/// Waits until the machine says that it has a network, or until the deadline.
class NetworkAwaiter : public QObject {
public:
    NetworkAwaiter(std::shared_ptr<Connectivity> connectivity, QDeadlineTimer deadline)
        : m_connectivity(std::move(connectivity))
        , m_deadline(deadline)
    {
    }

    [[nodiscard]] bool isReady() const { return !m_connectivity->isOffline() || m_deadline.hasExpired(); }

    void wait(std::coroutine_handle<> waiting)
    {
        m_waiting = waiting;
        // Through the event loop, so that the one who tells of the change is not called back from within.
        connect(
            m_connectivity.get(), &Connectivity::changed, this, &NetworkAwaiter::look, Qt::QueuedConnection);
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(m_deadline.remainingTimeAsDuration());
        QTimer::singleShot(left, Qt::PreciseTimer, this, [this] { look(); });
    }

private:
    void look()
    {
        if (isReady() && m_waiting)
            std::exchange(m_waiting, {}).resume(); // ends this
    }

    std::shared_ptr<Connectivity> m_connectivity;
    QDeadlineTimer m_deadline;
    std::coroutine_handle<> m_waiting;
};

struct NetworkWait {
    NetworkAwaiter &awaiter;

    [[nodiscard]] bool await_ready() const { return awaiter.isReady(); }
    void await_suspend(std::coroutine_handle<> waiting) { awaiter.wait(waiting); }
    void await_resume() const { }
};

/// Everything is a copy: the session may be gone while this waits.
QCoro::Task<tl::expected<HttpResponse, TransportFailure>> exchange(std::shared_ptr<HttpLoop> loop,
    HttpRequest request, HttpSessionConfiguration configuration, QByteArray userAgent,
    std::shared_ptr<Connectivity> connectivity)
{
    const QDeadlineTimer deadline(configuration.resourceTimeout, Qt::PreciseTimer);
    const bool mayWait = configuration.waitsForConnectivity && connectivity && !isLoopback(request.url);
    while (true) {
        Handover<HttpAttempt> result;
        HttpAttemptOptions options{
            .idleTimeout = std::min(configuration.requestTimeout, request.idleTimeout),
            .totalTimeout = std::chrono::ceil<std::chrono::milliseconds>(deadline.remainingTimeAsDuration()),
            .largestBody = configuration.largestBody,
            .userAgent = userAgent,
            .certificateAuthorities = configuration.certificateAuthorities,
        };
        loop->attempt(request, std::move(options), result);
        HttpAttempt attempt = co_await result.wait();
        if (attempt.outcome || !attempt.nothingWasSent || !mayWait || !connectivity->isOffline())
            co_return std::move(attempt.outcome);

        NetworkAwaiter network(connectivity, deadline);
        co_await NetworkWait{network};
        if (deadline.hasExpired())
            co_return tl::make_unexpected(TransportFailure{TransportFailure::Kind::Offline});
    }
}

} // namespace

CurlHttpSession::CurlHttpSession(
    QByteArray userAgent, HttpSessionConfiguration configuration, std::shared_ptr<Connectivity> connectivity)
    : m_userAgent(std::move(userAgent))
    , m_configuration(std::move(configuration))
    , m_connectivity(std::move(connectivity))
    , m_loop(std::make_shared<HttpLoop>())
{
}

CurlHttpSession::~CurlHttpSession()
{
    m_loop->shutDown();
}

QCoro::Task<tl::expected<HttpResponse, TransportFailure>> CurlHttpSession::send(HttpRequest request)
{
    return exchange(m_loop, std::move(request), m_configuration, m_userAgent, m_connectivity);
}

} // namespace orbitledge
