#include "platform/linux/RouteConnectivity.h"

#include <QFile>
#include <QSocketNotifier>

#include <linux/netlink.h>
#include <linux/rtnetlink.h>
#include <net/route.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <optional>

namespace orbitledge {

using namespace Qt::StringLiterals;

namespace {

/// Whether one line of a table is a usable default route.
using LineTest = bool (*)(const QList<QByteArray> &columns);

/// "Iface Destination Gateway Flags RefCnt Use Metric Mask …", numbers in hexadecimal.
bool isDefaultRoute4(const QList<QByteArray> &columns)
{
    constexpr int mask = 7;
    // A black hole has no device and no flag of its own.
    return columns.size() > mask && columns[0] != "*" && columns[0] != "lo" && columns[1] == "00000000"
        && columns[mask] == "00000000" && (columns[3].toUInt(nullptr, 16) & (RTF_UP | RTF_REJECT)) == RTF_UP;
}

/// "destination length source length nexthop metric refcnt use flags device"
bool isDefaultRoute6(const QList<QByteArray> &columns)
{
    constexpr int flags = 8;
    constexpr int device = 9;
    return columns.size() > device && columns[1] == "00" && columns[device] != "lo"
        && (columns[flags].toUInt(nullptr, 16) & (RTF_UP | RTF_REJECT)) == RTF_UP;
}

/// Absent where the table cannot be read.
std::optional<bool> hasDefaultRoute(const QString &table, LineTest isDefault)
{
    QFile file(table);
    if (!file.open(QIODevice::ReadOnly))
        return std::nullopt;
    const QList<QByteArray> lines = file.readAll().split('\n');
    return std::ranges::any_of(
        lines, [isDefault](const QByteArray &line) { return isDefault(line.simplified().split(' ')); });
}

int openRouteSocket()
{
    const int socket = ::socket(AF_NETLINK, SOCK_RAW | SOCK_NONBLOCK | SOCK_CLOEXEC, NETLINK_ROUTE);
    if (socket < 0)
        return -1;
    sockaddr_nl address{};
    address.nl_family = AF_NETLINK;
    // With a device or its last address the routes of IPv4 go too, and nobody is told of each.
    address.nl_groups = RTMGRP_IPV4_ROUTE | RTMGRP_IPV6_ROUTE | RTMGRP_LINK | RTMGRP_IPV4_IFADDR;
    if (::bind(socket, reinterpret_cast<const sockaddr *>(&address), sizeof address) == 0)
        return socket;
    ::close(socket);
    return -1;
}

} // namespace

RouteConnectivity::RouteConnectivity(QObject *parent)
    : Connectivity(parent)
    , m_socket(openRouteSocket())
{
    if (m_socket < 0)
        return;
    m_notifier = new QSocketNotifier(m_socket, QSocketNotifier::Read, this);
    connect(m_notifier, &QSocketNotifier::activated, this, &RouteConnectivity::drain);
}

RouteConnectivity::~RouteConnectivity()
{
    delete m_notifier; // before what it watches
    if (m_socket >= 0)
        ::close(m_socket);
}

bool RouteConnectivity::isOffline() const
{
    const auto v4 = hasDefaultRoute(u"/proc/net/route"_s, isDefaultRoute4);
    const auto v6 = hasDefaultRoute(u"/proc/net/ipv6_route"_s, isDefaultRoute6);
    if (!v4 && !v6)
        return false;
    return !v4.value_or(false) && !v6.value_or(false);
}

void RouteConnectivity::drain()
{
    // What changed does not matter; that it did is read from the tables.
    std::array<char, 8192> buffer; // NOLINT(*-member-init): recv fills it
    while (::recv(m_socket, buffer.data(), buffer.size(), 0) > 0) { }
    Q_EMIT changed();
}

} // namespace orbitledge
