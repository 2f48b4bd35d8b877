#pragma once

#include "demo/HttpMessages.h"
#include "demo/WorkPool.h"

#include <QAbstractHttpServer>
#include <QHash>
#include <QPointer>
#include <QTcpServer>

#include <tl/expected.hpp>

#include <deque>
#include <functional>
#include <memory>
#include <mutex>

namespace orbitledge::demo {

class Connection;

/// The listening side: takes whole, bounded requests from loopback, has them answered on a worker thread
/// and writes the answers, in order, with the headers that each answer needs.
///
/// The toolkit's HTTP server of this version is a preview; what it leaves open is closed here:
/// - bodies and headers of any size would be collected: a connection that sends more than a request may
///   hold is told 413 and closed;
/// - its responder keeps a plain pointer to the connection, which may be gone when an answer comes late:
///   answers are written to a connection only once it is known to be there;
/// - requests that follow on one connection before the first is answered would be answered out of order:
///   they queue up;
/// - Connection: close, wrong or repeated Content-Length and Host, and idle connections are not looked at.
/// What stays as it is: what is no HTTP at all is closed without an answer, a protocol upgrade as well, and
/// "Expect: 100-continue" is not answered (clients send the body after a moment).
class HttpFront final : public QAbstractHttpServer {
public:
    static constexpr qint64 maximumBody = qint64(1) << 20;
    static constexpr qint64 maximumHead = qint64(64) << 10;
    static constexpr qsizetype maximumTarget = 8'192;

    /// Called on a worker thread; must not throw.
    using Handler = std::function<Response(const Request &)>;
    /// Whether answering computes for long (passwords): such requests get threads of their own, so that
    /// they do not hold up the others.
    using IsSlow = std::function<bool(const Request &)>;

    HttpFront(Handler handler, IsSlow isSlow);
    ~HttpFront() override;
    Q_DISABLE_COPY_MOVE(HttpFront)

    /// The port, or why it cannot be had.
    tl::expected<quint16, QString> listenOnLoopback(quint16 port);

    /// Takes no new connections, answers what has been asked, then calls `stopped`.
    void stop(std::function<void()> stopped);

    void admit(QTcpSocket *socket);

protected:
    bool handleRequest(const QHttpServerRequest &request, QTcpSocket *socket) override;
    void missingHandler(const QHttpServerRequest &request, QTcpSocket *socket) override;

private:
    friend class Connection;
    void answer(Connection *connection, const Request &request);
    void deliver();
    void finishStopping();

    Handler m_handler;
    IsSlow m_isSlow;
    QTcpServer *m_listener = nullptr;
    QHash<QTcpSocket *, Connection *> m_connections;
    std::function<void()> m_stopped;
    int m_inFlight = 0;

    /// What the worker threads have answered. A request's number stands for the connection, which only this
    /// side may touch.
    struct Answered {
        quint64 number = 0;
        Response response;
    };
    struct Asked {
        QPointer<Connection> connection;
        Request request;
    };
    std::mutex m_answersMutex;
    std::deque<Answered> m_answers;
    /// Wakes this side; a descriptor, because the toolkit's own ways are not instrumented.
    int m_wakeUp = -1;
    QHash<quint64, Asked> m_asked;
    quint64 m_lastNumber = 0;

    // Last, so that they end first.
    std::unique_ptr<WorkPool> m_pool;
    std::unique_ptr<WorkPool> m_slowPool;
};

} // namespace orbitledge::demo
