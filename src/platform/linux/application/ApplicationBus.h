#pragma once

#include <QString>
#include <QVariantMap>

namespace orbitledge {

/// Where the running program is on the session bus (Desktop Entry Specification, "D-Bus Activation").
struct ApplicationBus {
    static constexpr const char *freedesktopInterface = "org.freedesktop.Application";
    /// Between the command line and the running program.
    static constexpr const char *sessionInterface = "app.orbitledge.Orbitledge.Session1";
    static constexpr const char *otherPlaceError = "app.orbitledge.Orbitledge.Error.OtherPlace";
    /// The action that opens the page of a reminder, its one parameter.
    static constexpr const char *openReminder = "open-reminder";

    /// The one object of a program with this name.
    static QString pathOf(const QString &applicationId);

    /// What comes along with a request, and back. Launchers use two names for it.
    static QVariantMap platformData(const QString &activationToken);
    static QString activationToken(const QVariantMap &platformData);
};

/// What a running program must have in common with a command that it is to carry out.
struct SessionPlace {
    /// Of the service.
    QString api;
    QString cacheFile;

    friend bool operator==(const SessionPlace &, const SessionPlace &) = default;
};

} // namespace orbitledge
