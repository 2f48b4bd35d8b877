#pragma once

#include <QUrl>

#include <arpa/inet.h>
#include <sys/socket.h>
#include <unistd.h>

namespace orbitledge::testing {

/// A port of this machine at which nobody listens, nor anybody else can while this is there.
class ClosedPort {
public:
    ClosedPort()
        : m_socket(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0))
    {
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_ANY);
        socklen_t size = sizeof address;
        if (m_socket < 0 || ::bind(m_socket, reinterpret_cast<sockaddr *>(&address), size) != 0
            || ::getsockname(m_socket, reinterpret_cast<sockaddr *>(&address), &size) != 0)
            qFatal("no port to keep closed");
        m_port = ntohs(address.sin_port);
    }
    ~ClosedPort() { ::close(m_socket); }
    Q_DISABLE_COPY_MOVE(ClosedPort)

    [[nodiscard]] QUrl url(const QString &host = QStringLiteral("127.0.0.1")) const
    {
        QUrl url;
        url.setScheme(QStringLiteral("http"));
        url.setHost(host);
        url.setPort(m_port);
        url.setPath(QStringLiteral("/"));
        return url;
    }

private:
    int m_socket;
    int m_port = 0;
};

} // namespace orbitledge::testing
