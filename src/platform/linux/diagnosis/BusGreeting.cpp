#include "platform/linux/diagnosis/BusGreeting.h"

#include <QDeadlineTimer>
#include <QFileInfo>
#include <QString>

#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstddef>
#include <optional>
#include <utility>

namespace orbitledge {

using findings::Bus;

namespace {

class Socket {
public:
    Socket()
        : m_descriptor(::socket(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0))
    {
    }
    ~Socket() { ::close(m_descriptor); }
    Q_DISABLE_COPY_MOVE(Socket)

    [[nodiscard]] int descriptor() const { return m_descriptor; }

private:
    int m_descriptor;
};

/// A name that begins with a zero byte is of Linux's abstract ones.
std::optional<std::pair<sockaddr_un, socklen_t>> socketAddress(const QByteArray &name)
{
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (name.isEmpty() || static_cast<std::size_t>(name.size()) >= sizeof address.sun_path)
        return std::nullopt;
    std::ranges::copy(name, address.sun_path);
    return std::pair(address,
        static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + static_cast<std::size_t>(name.size())));
}

/// "unix:path=/run/user/1000/bus,guid=…": the socket's name; empty where it is none.
QByteArray socketNameOf(const QByteArray &address, const std::function<QByteArray(const char *)> &variable)
{
    if (!address.startsWith("unix:"))
        return {};
    for (const QByteArray &pair : address.sliced(5).split(',')) {
        const auto equals = pair.indexOf('=');
        const QByteArray key = pair.first(std::max<qsizetype>(equals, 0));
        QByteArray value = QByteArray::fromPercentEncoding(pair.sliced(equals + 1));
        if (key == "path")
            return value;
        if (key == "abstract")
            return '\0' + value;
        if (key == "runtime")
            return variable("XDG_RUNTIME_DIR") + "/bus";
    }
    return {};
}

Bus greet(const QByteArray &name, QDeadlineTimer deadline)
{
    const Socket socket;
    const auto address = socketAddress(name);
    if (!address || socket.descriptor() < 0)
        return Bus::Unreachable;
    if (::connect(socket.descriptor(), reinterpret_cast<const sockaddr *>(&address->first), address->second)
        < 0)
        return errno == EAGAIN ? Bus::Mute : Bus::Unreachable; // too many wait already
    const QByteArray greeting = '\0' + ("AUTH EXTERNAL " + QByteArray::number(::geteuid()).toHex() + "\r\n");
    if (::send(socket.descriptor(), greeting.constData(), static_cast<std::size_t>(greeting.size()),
            MSG_NOSIGNAL)
        != greeting.size())
        return Bus::Unreachable;
    pollfd waiting{.fd = socket.descriptor(), .events = POLLIN, .revents = 0};
    while (true) {
        const int ready = ::poll(&waiting, 1, static_cast<int>(deadline.remainingTime()));
        if (ready > 0)
            break;
        if (ready == 0 || errno != EINTR)
            return Bus::Mute;
    }
    std::array<char, 2> answer{};
    const bool isWelcome = ::recv(socket.descriptor(), answer.data(), answer.size(), MSG_WAITALL) == 2
        && answer[0] == 'O' && answer[1] == 'K';
    return isWelcome ? Bus::Reached : Bus::Unreachable;
}

/// As the library finds it where the environment names none.
QByteArray usualSocket(const std::function<QByteArray(const char *)> &variable)
{
    const QByteArray folder = variable("XDG_RUNTIME_DIR");
    const QByteArray socket = folder + "/bus";
    return !folder.isEmpty() && QFileInfo::exists(QString::fromLocal8Bit(socket)) ? socket : QByteArray();
}

} // namespace

Bus greetSessionBus(const std::function<QByteArray(const char *)> &variable, std::chrono::milliseconds limit)
{
    const QDeadlineTimer deadline(limit);
    const QByteArray addresses = variable("DBUS_SESSION_BUS_ADDRESS");
    if (addresses.isEmpty()) {
        const QByteArray socket = usualSocket(variable);
        return socket.isEmpty() ? Bus::NotNamed : greet(socket, deadline);
    }
    Bus last = Bus::Unreachable;
    for (const QByteArray &address : addresses.split(';')) {
        const QByteArray name = socketNameOf(address, variable);
        if (name.isEmpty() && !address.startsWith("unix:") && !address.isEmpty())
            return Bus::Reached;
        last = greet(name, deadline);
        if (last != Bus::Unreachable)
            return last;
    }
    return last;
}

} // namespace orbitledge
