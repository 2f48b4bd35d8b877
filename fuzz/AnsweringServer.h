#pragma once

#include "Require.h"

#include <QByteArray>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <mutex>
#include <thread>

namespace orbitledge::fuzz {

/// A server on loopback that answers each connection's first request with the same bytes, in pieces, and
/// hangs up. It lives as long as the process.
class AnsweringServer {
public:
    AnsweringServer()
        : m_socket(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0))
    {
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        auto *const any = reinterpret_cast<sockaddr *>(&address);
        socklen_t length = sizeof(address);
        constexpr int waiting = 64;
        require(m_socket >= 0 && ::bind(m_socket, any, length) == 0 && ::listen(m_socket, waiting) == 0
                && ::getsockname(m_socket, any, &length) == 0,
            "there is a port");
        m_port = ntohs(address.sin_port);
        std::thread([this] { serve(); }).detach();
    }

    [[nodiscard]] int port() const { return m_port; }

    void answerWith(const QByteArray &bytes, std::size_t piece)
    {
        const std::lock_guard lock(m_mutex);
        m_answer = bytes;
        m_piece = piece;
        m_connections = 0;
    }
    [[nodiscard]] int connections()
    {
        const std::lock_guard lock(m_mutex);
        return m_connections;
    }

private:
    void serve()
    {
        for (;;) {
            const int connection = ::accept4(m_socket, nullptr, nullptr, SOCK_CLOEXEC);
            if (connection < 0)
                continue;
            answer(connection);
            ::close(connection);
        }
    }

    void answer(int connection)
    {
        m_mutex.lock();
        const QByteArray bytes = m_answer;
        const std::size_t piece = m_piece;
        ++m_connections;
        m_mutex.unlock();

        QByteArray request;
        std::array<char, 4096> buffer{};
        while (!request.contains("\r\n\r\n")) {
            const ssize_t count = ::recv(connection, buffer.data(), buffer.size(), 0);
            if (count <= 0)
                return;
            request.append(buffer.data(), count);
        }
        const auto size = static_cast<std::size_t>(bytes.size());
        for (std::size_t at = 0; at < size; at += piece) {
            if (::send(connection, bytes.constData() + at, std::min(piece, size - at), MSG_NOSIGNAL) < 0)
                return;
        }
        // What was sent is not thrown away because the rest of the request was not read.
        ::shutdown(connection, SHUT_WR);
        while (::recv(connection, buffer.data(), buffer.size(), 0) > 0) { }
    }

    int m_socket;
    int m_port = 0;
    std::mutex m_mutex;
    QByteArray m_answer;
    std::size_t m_piece = 1;
    int m_connections = 0;
};

} // namespace orbitledge::fuzz
