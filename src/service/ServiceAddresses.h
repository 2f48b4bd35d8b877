#pragma once

#include <QByteArray>
#include <QString>
#include <QUrl>

#include <tl/expected.hpp>

#include <functional>

namespace orbitledge {

/// Where the service, its web pages and its releases are.
struct ServiceAddresses {
    QUrl api;
    QUrl web;
    QUrl releases;

    /// The addresses that were built in, each replaced by the variable of its name where that is set:
    /// ORBITLEDGE_API_URL, ORBITLEDGE_WEB_URL. On failure a sentence that names the variable.
    static tl::expected<ServiceAddresses, QString> fromEnvironment(
        const std::function<QByteArray(const char *name)> &variable);

    friend bool operator==(const ServiceAddresses &, const ServiceAddresses &) = default;
};

/// An address to which secrets may go: https, or http to this machine itself, without a user's name in it.
/// On failure a sentence that begins with `name` and does not repeat the address, which may hold a password.
tl::expected<QUrl, QString> serviceAddress(const QString &name, const QString &text);

} // namespace orbitledge
