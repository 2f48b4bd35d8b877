#include "demo/HttpFront.h"

#include <QHttpServerRequest>
#include <QHttpServerResponder>
#include <QRegularExpression>
#include <QSocketNotifier>
#include <QTcpSocket>
#include <QTimer>

#include <sys/eventfd.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <deque>

using namespace Qt::StringLiterals;

namespace orbitledge::demo {

namespace {

constexpr auto idleLimit = std::chrono::seconds(60);
constexpr auto farewellLimit = std::chrono::seconds(5);
constexpr std::size_t maximumQueued = 32;

class Listener final : public QTcpServer {
public:
    explicit Listener(HttpFront &front)
        : m_front(front)
    {
    }

protected:
    void incomingConnection(qintptr descriptor) override
    {
        auto *socket = new QTcpSocket(this);
        if (!socket->setSocketDescriptor(descriptor)) {
            delete socket;
            return;
        }
        // Small answers must not wait for each other.
        socket->setSocketOption(QAbstractSocket::LowDelayOption, 1);
        m_front.admit(socket);
        addPendingConnection(socket);
    }

private:
    HttpFront &m_front;
};

Method methodOf(const QHttpServerRequest &request)
{
    switch (request.method()) {
    case QHttpServerRequest::Method::Get:
        return Method::Get;
    case QHttpServerRequest::Method::Head:
        return Method::Head;
    case QHttpServerRequest::Method::Post:
        return Method::Post;
    default:
        return Method::Other;
    }
}

/// Bytes of their own: what the toolkit holds is shared with it, and goes when the next request comes.
QByteArray ownBytes(const QByteArray &bytes)
{
    return {bytes.constData(), bytes.size()};
}

Request copyOf(const QHttpServerRequest &source)
{
    Request request;
    request.method = methodOf(source);
    const QUrl url = source.url();
    request.path = url.path(QUrl::FullyEncoded).toUtf8();
    request.query = FormFields::parse(url.query(QUrl::FullyEncoded).toUtf8());
    for (const auto &[name, value] : source.headers())
        request.headers.append({ownBytes(name), ownBytes(value)});
    request.body = ownBytes(source.body());
    return request;
}

bool isLoopbackName(const QByteArray &host)
{
    static const QRegularExpression pattern(
        uR"(^(127\.0\.0\.1|localhost|\[::1\])(:\d{1,5})?$)"_s, QRegularExpression::CaseInsensitiveOption);
    return pattern.match(QString::fromLatin1(host)).hasMatch();
}

/// Whether two parties could read this request differently.
bool hasUnclearLength(const Request &request)
{
    const auto count = request.headerCount("Content-Length");
    if (count > 1 || (count == 1 && request.headerCount("Transfer-Encoding") > 0))
        return true;
    if (count == 0)
        return false;
    const QByteArray length = request.header("Content-Length");
    return length.isEmpty() || length.size() > 18
        || !std::ranges::all_of(length, [](char c) { return c >= '0' && c <= '9'; });
}

/// The answer to what must not reach a handler.
std::optional<Response> refusal(const Request &request, qsizetype targetLength)
{
    if (hasUnclearLength(request)) {
        return errorResponse(400,
            {u"The request does not say clearly how long it is."_s,
                u"Send one Content-Length, or chunks, but not both."_s, {}, "bad_request"_L1});
    }
    if (request.headerCount("Host") != 1) {
        return errorResponse(400,
            {u"The request does not name the host it is for."_s, u"Send one Host header."_s, {},
                "bad_request"_L1});
    }
    // A page of another site could have its own name point here (DNS rebinding).
    if (!isLoopbackName(request.header("Host"))) {
        return errorResponse(421,
            {u"This service answers on loopback names only."_s, u"Use http://127.0.0.1 or localhost."_s, {},
                "misdirected_request"_L1});
    }
    if (targetLength > HttpFront::maximumTarget) {
        return errorResponse(414,
            {u"The address is too long."_s, u"Keep it under 8,192 characters."_s, {}, "uri_too_long"_L1});
    }
    return std::nullopt;
}

Response tooLarge()
{
    return errorResponse(
        413, {u"The request is too large."_s, u"Send at most 1 MiB."_s, {}, "payload_too_large"_L1});
}

} // namespace

/// What is known of one connection beyond its bytes. Lives and dies with the socket.
class Connection final : public QObject {
public:
    Connection(HttpFront &front, QTcpSocket *socket)
        : QObject(socket)
        , m_front(front)
        , m_socket(socket)
    {
        m_idle.setSingleShot(true);
        m_idle.setInterval(idleLimit);
        connect(&m_idle, &QTimer::timeout, this, [this] {
            if (!m_busy)
                m_socket->abort();
        });
        m_idle.start();
        // Connected before the toolkit's own slot, so that this one sees the bytes first.
        connect(socket, &QTcpSocket::readyRead, this, &Connection::count);
    }

    void take(const QHttpServerRequest &source)
    {
        m_received = 0;
        m_leftOver = m_socket->bytesAvailable();
        if (m_isClosing)
            return;
        if (m_queue.size() >= maximumQueued) {
            m_socket->abort();
            return;
        }
        m_queue.push_back({std::make_shared<QHttpServerResponder>(HttpFront::makeResponder(source, m_socket)),
            copyOf(source), source.url().toEncoded().size()});
        next();
    }

    void reply(const Request &request, const Response &response)
    {
        m_busy = false;
        const auto responder = std::move(m_queue.front().responder);
        m_queue.pop_front();
        m_isClosing = m_isClosing || request.header("Connection").toLower() == "close";
        write(*responder, request.method == Method::Head, response);
        if (m_isClosing)
            m_socket->disconnectFromHost();
        else
            next();
    }

private:
    struct Asked {
        std::shared_ptr<QHttpServerResponder> responder;
        Request request;
        qsizetype targetLength = 0;
    };

    void count()
    {
        m_idle.start();
        m_received += m_socket->bytesAvailable() - m_leftOver;
        m_leftOver = 0;
        if (m_received > HttpFront::maximumBody + HttpFront::maximumHead)
            refuseTheRest();
    }

    /// Says 413 now, and goes on reading (and forgetting) for a moment: a connection that is closed while
    /// bytes arrive is reset, and the answer would be lost with it.
    void refuseTheRest()
    {
        m_isClosing = true;
        QObject::disconnect(m_socket, &QTcpSocket::readyRead, nullptr, nullptr);
        m_socket->readAll();
        if (m_queue.empty()) {
            const Response response = tooLarge();
            m_socket->write("HTTP/1.1 413 Payload Too Large\r\nContent-Type: application/json\r\n"
                            "Connection: close\r\nContent-Length: "
                + QByteArray::number(response.body.size()) + "\r\n\r\n" + response.body);
        }
        connect(m_socket, &QTcpSocket::readyRead, m_socket, [socket = m_socket] { socket->readAll(); });
        connect(m_socket, &QTcpSocket::bytesWritten, m_socket, [socket = m_socket] {
            if (socket->bytesToWrite() == 0)
                ::shutdown(static_cast<int>(socket->socketDescriptor()), SHUT_WR);
        });
        QTimer::singleShot(farewellLimit, m_socket, [socket = m_socket] { socket->abort(); });
    }

    void next()
    {
        if (m_busy || m_queue.empty())
            return;
        m_busy = true;
        const Asked &asked = m_queue.front();
        const Request request = asked.request;
        auto refused = refusal(request, asked.targetLength);
        if (refused)
            m_isClosing = true;
        else if (request.body.size() > HttpFront::maximumBody)
            refused = tooLarge();
        if (refused)
            reply(request, *refused);
        else
            m_front.answer(this, request);
    }

    void write(QHttpServerResponder &responder, bool isHead, const Response &response) const
    {
        responder.writeStatusLine(static_cast<QHttpServerResponder::StatusCode>(response.status));
        for (const Header &header : response.headers)
            responder.writeHeader(header.name, header.value);
        responder.writeHeader("X-Content-Type-Options", "nosniff");
        responder.writeHeader("Referrer-Policy", "same-origin");
        if (std::ranges::find(response.headers, "Cache-Control"_ba, &Header::name) == response.headers.end())
            responder.writeHeader("Cache-Control", "no-store");
        if (m_isClosing)
            responder.writeHeader("Connection", "close");
        responder.writeHeader("Content-Length", QByteArray::number(response.body.size()));
        // Ends the headers, also where no body follows.
        responder.writeBody(isHead ? QByteArray() : response.body);
    }

    HttpFront &m_front;
    QTcpSocket *m_socket;
    QTimer m_idle;
    qint64 m_received = 0;
    qint64 m_leftOver = 0;
    bool m_busy = false;
    bool m_isClosing = false;
    std::deque<Asked> m_queue;
};

HttpFront::HttpFront(Handler handler, IsSlow isSlow)
    : m_handler(std::move(handler))
    , m_isSlow(std::move(isSlow))
    , m_wakeUp(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK))
    , m_pool(std::make_unique<WorkPool>(4))
    , m_slowPool(std::make_unique<WorkPool>(2))
{
    auto *const notifier = new QSocketNotifier(m_wakeUp, QSocketNotifier::Read, this);
    connect(notifier, &QSocketNotifier::activated, this, &HttpFront::deliver);
}

HttpFront::~HttpFront()
{
    m_slowPool.reset();
    m_pool.reset();
    ::close(m_wakeUp);
}

tl::expected<quint16, QString> HttpFront::listenOnLoopback(quint16 port)
{
    auto listener = std::make_unique<Listener>(*this);
    // The default makes the kernel refuse connections when many clients come at once.
    listener->setListenBacklogSize(512);
    if (!listener->listen(QHostAddress::LocalHost, port))
        return tl::unexpected(listener->errorString());
    m_listener = listener.release();
    bind(m_listener);
    return m_listener->serverPort();
}

void HttpFront::stop(std::function<void()> stopped)
{
    m_stopped = std::move(stopped);
    if (m_listener != nullptr)
        m_listener->close();
    finishStopping();
}

void HttpFront::finishStopping()
{
    if (!m_stopped || m_inFlight > 0)
        return;
    for (auto it = m_connections.keyBegin(); it != m_connections.keyEnd(); ++it)
        (*it)->flush();
    m_stopped();
}

void HttpFront::admit(QTcpSocket *socket)
{
    m_connections.insert(socket, new Connection(*this, socket));
    connect(socket, &QObject::destroyed, this, [this, socket] { m_connections.remove(socket); });
}

bool HttpFront::handleRequest(const QHttpServerRequest &request, QTcpSocket *socket)
{
    if (Connection *connection = m_connections.value(socket))
        connection->take(request);
    return true;
}

void HttpFront::missingHandler(const QHttpServerRequest &, QTcpSocket *) { }

void HttpFront::answer(Connection *connection, const Request &request)
{
    ++m_inFlight;
    const quint64 number = ++m_lastNumber;
    m_asked.insert(number, {connection, request});
    WorkPool &pool = m_isSlow(request) ? *m_slowPool : *m_pool;
    pool.start([this, number, request] {
        Response response = m_handler(request);
        {
            const std::scoped_lock lock(m_answersMutex);
            m_answers.push_back({number, std::move(response)});
        }
        // Can only fail where the other side has been woken as often as a counter can count.
        (void)::eventfd_write(m_wakeUp, 1);
    });
}

void HttpFront::deliver()
{
    eventfd_t count = 0;
    (void)::eventfd_read(m_wakeUp, &count);
    std::deque<Answered> answers;
    {
        const std::scoped_lock lock(m_answersMutex);
        answers.swap(m_answers);
    }
    for (const Answered &answered : answers) {
        --m_inFlight;
        const Asked asked = m_asked.take(answered.number);
        // Who asked may have hung up meanwhile.
        if (asked.connection)
            asked.connection->reply(asked.request, answered.response);
    }
    finishStopping();
}

} // namespace orbitledge::demo
