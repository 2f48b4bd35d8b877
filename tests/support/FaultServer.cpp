#include "support/FaultServer.h"

#include <arpa/inet.h>
#include <openssl/err.h>
#include <openssl/ssl.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <memory>
#include <utility>

namespace orbitledge::testing {

namespace {

constexpr int pollMilliseconds = 20;

/// False when it is time to stop.
bool sleepFor(std::chrono::milliseconds duration, const std::stop_token &stop)
{
    const auto end = std::chrono::steady_clock::now() + duration;
    while (!stop.stop_requested()) {
        const auto left = end - std::chrono::steady_clock::now();
        if (left <= std::chrono::milliseconds::zero())
            return true;
        std::this_thread::sleep_for(std::min<std::chrono::nanoseconds>(left, std::chrono::milliseconds(10)));
    }
    return false;
}

} // namespace

/// One connection, plain or encrypted, that gives up when the server stops.
class FaultServer::Connection {
public:
    Connection(int socket, std::stop_token stop)
        : m_socket(socket)
        , m_stop(std::move(stop))
    {
    }
    Connection(const Connection &) = delete;
    Connection &operator=(const Connection &) = delete;
    ~Connection()
    {
        if (m_ssl)
            SSL_shutdown(m_ssl.get());
        m_ssl.reset();
        closeSocket();
    }

    bool encrypt(const Certificate &certificate)
    {
        m_context.reset(SSL_CTX_new(TLS_server_method()));
        if (SSL_CTX_use_certificate_chain_file(m_context.get(), certificate.chainFile.constData()) != 1
            || SSL_CTX_use_PrivateKey_file(m_context.get(), certificate.keyFile.constData(), SSL_FILETYPE_PEM)
                != 1)
            qFatal("the test's certificate cannot be used");
        m_ssl.reset(SSL_new(m_context.get()));
        SSL_set_fd(m_ssl.get(), m_socket);
        return waitFor(POLLIN) && SSL_accept(m_ssl.get()) == 1;
    }

    bool send(QByteArrayView bytes)
    {
        while (!bytes.isEmpty()) {
            if (!waitFor(POLLOUT))
                return false;
            const auto size = m_ssl
                ? qsizetype{SSL_write(m_ssl.get(), bytes.data(), int(bytes.size()))}
                : ::send(m_socket, bytes.data(), size_t(bytes.size()), MSG_NOSIGNAL | MSG_DONTWAIT);
            if (size < 0 && errno == EAGAIN)
                continue;
            if (size <= 0)
                return false;
            bytes = bytes.sliced(size);
        }
        return true;
    }

    /// A whole request, or nothing where the client goes away.
    std::optional<QByteArray> receive()
    {
        while (true) {
            if (const auto length = requestLength(m_buffer)) {
                const QByteArray request = m_buffer.first(*length);
                m_buffer.remove(0, *length);
                return request;
            }
            if (!receiveMore())
                return std::nullopt;
        }
    }

    bool receiveMore()
    {
        if (!waitFor(POLLIN))
            return false;
        char bytes[4096];
        const auto size = m_ssl ? qsizetype{SSL_read(m_ssl.get(), bytes, int(sizeof bytes))}
                                : ::recv(m_socket, bytes, sizeof bytes, 0);
        if (size <= 0)
            return false;
        m_buffer.append(bytes, size);
        return true;
    }

    void reset()
    {
        const linger now{1, 0};
        ::setsockopt(m_socket, SOL_SOCKET, SO_LINGER, &now, sizeof now);
        closeSocket();
    }

    [[nodiscard]] const std::stop_token &stop() const { return m_stop; }

private:
    static std::optional<qsizetype> requestLength(const QByteArray &bytes)
    {
        const auto end = bytes.indexOf("\r\n\r\n");
        if (end < 0)
            return std::nullopt;
        qsizetype length = end + 4;
        for (const QByteArray &line : bytes.first(end).split('\n')) {
            if (line.toLower().startsWith("content-length:"))
                length += line.mid(15).trimmed().toLongLong();
        }
        return length <= bytes.size() ? std::optional(length) : std::nullopt;
    }

    bool waitFor(short events)
    {
        while (m_socket >= 0 && !m_stop.stop_requested()) {
            if (m_ssl && (events & POLLIN) != 0 && SSL_pending(m_ssl.get()) > 0)
                return true;
            pollfd descriptor{m_socket, events, 0};
            if (::poll(&descriptor, 1, pollMilliseconds) > 0)
                return true;
        }
        return false;
    }

    void closeSocket()
    {
        if (m_socket >= 0)
            ::close(std::exchange(m_socket, -1));
    }

    struct FreeSsl {
        void operator()(SSL *ssl) const { SSL_free(ssl); }
        void operator()(SSL_CTX *context) const { SSL_CTX_free(context); }
    };

    int m_socket;
    std::stop_token m_stop;
    std::unique_ptr<SSL_CTX, FreeSsl> m_context;
    std::unique_ptr<SSL, FreeSsl> m_ssl;
    QByteArray m_buffer;
};

FaultServer::FaultServer(std::optional<Certificate> certificate)
    : m_certificate(std::move(certificate))
{
    ::signal(SIGPIPE, SIG_IGN); // for OpenSSL's writes
    m_listener = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    if (m_listener < 0 || ::bind(m_listener, reinterpret_cast<sockaddr *>(&address), size) != 0
        || ::listen(m_listener, 128) != 0
        || ::getsockname(m_listener, reinterpret_cast<sockaddr *>(&address), &size) != 0)
        qFatal("no socket for the test's server");
    m_port = ntohs(address.sin_port);
    m_acceptor = std::jthread([this] { accept(m_stop.get_token()); });
}

FaultServer::~FaultServer()
{
    m_stop.request_stop();
    m_acceptor.join();
    m_connections.clear();
    ::close(m_listener);
}

QUrl FaultServer::url(const QString &host) const
{
    QUrl url;
    url.setScheme(m_certificate ? QStringLiteral("https") : QStringLiteral("http"));
    url.setHost(host);
    url.setPort(m_port);
    url.setPath(QStringLiteral("/"));
    return url;
}

void FaultServer::answerAll(Answer answer)
{
    const std::scoped_lock lock(m_mutex);
    m_all = std::move(answer);
}

void FaultServer::answerNext(Answer answer)
{
    const std::scoped_lock lock(m_mutex);
    m_next.push_back(std::move(answer));
}

void FaultServer::greetWith(Answer answer)
{
    const std::scoped_lock lock(m_mutex);
    m_greeting = std::move(answer);
}

void FaultServer::answerWith(std::function<Answer(const QByteArray &)> decide)
{
    const std::scoped_lock lock(m_mutex);
    m_decide = std::move(decide);
}

QList<QByteArray> FaultServer::requests() const
{
    const std::scoped_lock lock(m_mutex);
    return {m_requests.begin(), m_requests.end()};
}

int FaultServer::connectionCount() const
{
    const std::scoped_lock lock(m_mutex);
    return m_connectionCount;
}

QByteArray FaultServer::response(int status, const QByteArray &body, const QByteArray &headers)
{
    return "HTTP/1.1 " + QByteArray::number(status) + " Whatever\r\nContent-Length: "
        + QByteArray::number(body.size()) + "\r\n" + headers + "\r\n" + body;
}

FaultServer::Answer FaultServer::whole(int status, const QByteArray &body, const QByteArray &headers)
{
    return {Send{response(status, body, headers)}};
}

void FaultServer::accept(const std::stop_token &stop)
{
    while (!stop.stop_requested()) {
        pollfd descriptor{m_listener, POLLIN, 0};
        if (::poll(&descriptor, 1, pollMilliseconds) <= 0)
            continue;
        const int socket = ::accept4(m_listener, nullptr, nullptr, SOCK_CLOEXEC);
        if (socket < 0)
            continue;
        {
            const std::scoped_lock lock(m_mutex);
            ++m_connectionCount;
        }
        m_connections.emplace_back([this, socket, stop] {
            Connection connection(socket, stop);
            serve(connection);
        });
    }
}

void FaultServer::serve(Connection &connection)
{
    if (m_certificate && !connection.encrypt(*m_certificate))
        return;
    std::optional<Answer> greeting;
    {
        const std::scoped_lock lock(m_mutex);
        greeting = m_greeting;
    }
    if (greeting) {
        perform(connection, *greeting);
        return;
    }
    if (const auto request = connection.receive()) {
        if (const auto answer = takeAnswer(*request))
            perform(connection, *answer);
    }
}

std::optional<FaultServer::Answer> FaultServer::takeAnswer(const QByteArray &request)
{
    const std::scoped_lock lock(m_mutex);
    m_requests.push_back(request);
    if (!m_next.empty()) {
        Answer answer = std::move(m_next.front());
        m_next.pop_front();
        return answer;
    }
    return m_decide ? m_decide(request) : m_all;
}

bool FaultServer::perform(Connection &connection, const Answer &answer)
{
    struct Performer {
        Connection &connection;

        bool operator()(const Send &step) const { return connection.send(step.bytes); }
        bool operator()(const Drip &step) const
        {
            return std::ranges::all_of(step.bytes, [&](char byte) {
                return connection.send({&byte, 1}) && sleepFor(step.pause, connection.stop());
            });
        }
        bool operator()(const SendForever &step) const
        {
            // Many times at once: a busy machine must not be what makes it slow.
            constexpr qsizetype enough = qsizetype{64} << 10;
            const QByteArray bytes = step.bytes.repeated(enough / step.bytes.size() + 1);
            while (connection.send(bytes)) { }
            return false;
        }
        bool operator()(const Wait &step) const { return sleepFor(step.duration, connection.stop()); }
        bool operator()(StayMute /*step*/) const
        {
            while (connection.receiveMore()) { }
            return false;
        }
        bool operator()(Close /*step*/) const { return false; }
        bool operator()(Reset /*step*/) const
        {
            connection.reset();
            return false;
        }
    };
    return std::ranges::all_of(
        answer, [&](const Step &step) { return std::visit(Performer{connection}, step); });
}

} // namespace orbitledge::testing
