#pragma once

#include <QByteArray>
#include <QList>
#include <QUrl>

#include <chrono>
#include <functional>
#include <list>
#include <mutex>
#include <optional>
#include <stop_token>
#include <thread>
#include <variant>
#include <vector>

namespace orbitledge::testing {

/// A server on 127.0.0.1 that answers with the bytes it is given, right or wrong, as fast or as slowly as it
/// is told, and remembers what it was sent, byte by byte. Each connection has a thread of its own, so that
/// nothing that the test does can hold it up. Closes everything when it is destroyed.
class FaultServer {
public:
    /// Bytes as they are.
    struct Send {
        QByteArray bytes;
    };
    /// One byte, a pause, and so on.
    struct Drip {
        QByteArray bytes;
        std::chrono::milliseconds pause{1000};
    };
    /// The same bytes again and again until the client has enough.
    struct SendForever {
        QByteArray bytes;
    };
    struct Wait {
        std::chrono::milliseconds duration{};
    };
    /// Nothing more, with the connection open, until the client has enough.
    struct StayMute { };
    /// An orderly end.
    struct Close { };
    /// The end as if the machine had gone (RST).
    struct Reset { };

    using Step = std::variant<Send, Drip, SendForever, Wait, StayMute, Close, Reset>;
    /// What happens once a request has come. A connection is closed after its last step.
    using Answer = std::vector<Step>;

    /// Says a TLS handshake's part with this certificate and key (files, PEM) before everything else. A plain
    /// server has none.
    struct Certificate {
        QByteArray chainFile;
        QByteArray keyFile;
    };

    explicit FaultServer(std::optional<Certificate> certificate = std::nullopt);
    FaultServer(const FaultServer &) = delete;
    FaultServer &operator=(const FaultServer &) = delete;
    ~FaultServer();

    [[nodiscard]] QUrl url(const QString &host = QStringLiteral("127.0.0.1")) const;
    [[nodiscard]] int port() const { return m_port; }

    /// For every request from now on that has no answer of its own.
    void answerAll(Answer answer);
    /// For the next request that has none yet.
    void answerNext(Answer answer);
    /// Does this as soon as a connection is made, before anything is read from it.
    void greetWith(Answer answer);
    /// Answers by what was asked. `decide` is called on a thread of the server's.
    void answerWith(std::function<Answer(const QByteArray &request)> decide);

    /// Whole requests, in the order in which they came: request line, headers, body.
    [[nodiscard]] QList<QByteArray> requests() const;
    /// All connections, also those on which nothing was asked.
    [[nodiscard]] int connectionCount() const;

    // Shorthands.

    /// A whole answer with Content-Length. `headers` are lines, each with its "\r\n".
    static QByteArray response(int status, const QByteArray &body, const QByteArray &headers = {});
    static Answer whole(int status, const QByteArray &body, const QByteArray &headers = {});

private:
    class Connection;

    void accept(const std::stop_token &stop);
    void serve(Connection &connection);
    bool perform(Connection &connection, const Answer &answer);
    std::optional<Answer> takeAnswer(const QByteArray &request);

    std::optional<Certificate> m_certificate;
    int m_listener = -1;
    int m_port = 0;
    mutable std::mutex m_mutex;
    // Not a list that shares its memory with the copies that are handed out.
    std::vector<QByteArray> m_requests;
    int m_connectionCount = 0;
    std::list<Answer> m_next;
    Answer m_all;
    std::optional<Answer> m_greeting;
    std::function<Answer(const QByteArray &)> m_decide;
    std::stop_source m_stop;
    std::vector<std::jthread> m_connections;
    std::jthread m_acceptor;
};

} // namespace orbitledge::testing
