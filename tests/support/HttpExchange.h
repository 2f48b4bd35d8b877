#pragma once

#include <QByteArray>
#include <QElapsedTimer>
#include <QList>
#include <QString>
#include <QTcpSocket>

#include <utility>

namespace orbitledge::testing {

/// Speaks HTTP to loopback byte by byte, so that a test sees what really is on the wire, and can send what
/// no client would. One connection an exchange; nothing is followed, stored or retried.
class HttpExchange {
public:
    struct Answer {
        /// 0 where the connection ended without a whole answer.
        int status = 0;
        QList<std::pair<QByteArray, QByteArray>> headers;
        QByteArray body;

        /// The first header of that name, in any case.
        [[nodiscard]] QByteArray header(const QByteArray &name) const
        {
            for (const auto &[key, value] : headers) {
                if (key.compare(name, Qt::CaseInsensitive) == 0)
                    return value;
            }
            return {};
        }
        /// "name=value" of a Set-Cookie header, as a Cookie header takes it.
        [[nodiscard]] QByteArray cookie() const { return header("Set-Cookie").split(';').first(); }
    };

    explicit HttpExchange(quint16 port)
        : m_port(port)
    {
    }

    Answer get(const QByteArray &target, const QByteArray &cookie = {}, const QByteArray &headers = {}) const
    {
        return raw("GET " + target + " HTTP/1.1\r\n" + common(cookie) + headers + "\r\n");
    }

    Answer post(const QByteArray &target, const QByteArray &body, const QByteArray &cookie = {},
        const QByteArray &contentType = "application/json", const QByteArray &headers = {}) const
    {
        return raw("POST " + target + " HTTP/1.1\r\n" + common(cookie) + "Content-Type: " + contentType
            + "\r\nContent-Length: " + QByteArray::number(body.size()) + "\r\n" + headers + "\r\n" + body);
    }

    Answer postForm(const QByteArray &target, const QByteArray &form, const QByteArray &cookie = {}) const
    {
        return post(target, form, cookie, "application/x-www-form-urlencoded");
    }

    /// The session's cookie, as a Cookie header takes it; empty where the sign-in was refused.
    QByteArray signIn(const QString &email, const QString &password) const
    {
        const Answer answer = post("/auth/login",
            "{\"email\":\"" + email.toUtf8() + "\",\"password\":\"" + password.toUtf8() + "\"}");
        return answer.status == 200 ? answer.cookie() : QByteArray();
    }

    /// Sends the bytes and reads one answer. `isHead`: the answer has no body, whatever it says.
    Answer raw(const QByteArray &bytes, bool isHead = false) const
    {
        QTcpSocket socket;
        socket.connectToHost(QStringLiteral("127.0.0.1"), m_port);
        if (!socket.waitForConnected(limit))
            return {};
        socket.write(bytes);
        return read(socket, isHead);
    }

    /// Reads one answer from a connection of the caller's.
    static Answer read(QTcpSocket &socket, bool isHead = false)
    {
        Answer answer;
        QByteArray received;
        QElapsedTimer waited;
        waited.start();
        qsizetype needed = -1;
        while (waited.elapsed() < limit) {
            const auto end = received.indexOf("\r\n\r\n");
            if (end >= 0 && needed < 0) {
                readHead(answer, received.left(end));
                needed = end + 4 + (isHead ? 0 : answer.header("Content-Length").toLongLong());
            }
            if (needed >= 0 && received.size() >= needed)
                break;
            // Byte by byte at the end of an answer would cost nothing either, but leaves the next one whole.
            if (socket.bytesAvailable() == 0 && !socket.waitForReadyRead(limit)
                && socket.bytesAvailable() == 0)
                return needed >= 0 && received.size() >= needed ? answer : Answer{};
            received += needed < 0 ? socket.read(1) : socket.read(needed - received.size());
        }
        answer.body = received.mid(received.indexOf("\r\n\r\n") + 4);
        return answer;
    }

private:
    static constexpr int limit = 60'000; // milliseconds; only reached by what will never come

    [[nodiscard]] QByteArray common(const QByteArray &cookie) const
    {
        return "Host: 127.0.0.1:" + QByteArray::number(m_port) + "\r\nAccept: application/json\r\n"
            + (cookie.isEmpty() ? QByteArray() : "Cookie: " + cookie + "\r\n");
    }

    static void readHead(Answer &answer, const QByteArray &head)
    {
        const QList<QByteArray> lines = head.split('\n');
        answer.status = lines.first().split(' ').value(1).toInt();
        for (const QByteArray &line : lines.mid(1)) {
            const auto colon = line.indexOf(':');
            answer.headers.append({line.left(colon).trimmed(), line.mid(colon + 1).trimmed()});
        }
    }

    quint16 m_port;
};

} // namespace orbitledge::testing
