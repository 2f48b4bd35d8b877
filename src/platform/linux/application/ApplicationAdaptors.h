#pragma once

#include <QDBusAbstractAdaptor>
#include <QDBusMessage>
#include <QDBusUnixFileDescriptor>
#include <QStringList>
#include <QVariantList>
#include <QVariantMap>

#include <functional>

namespace orbitledge {

/// org.freedesktop.Application as the bus has it.
class FreedesktopApplicationAdaptor final : public QDBusAbstractAdaptor {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Application")

public:
    /// Told which action, its parameters, and what comes along; false where there is no such action.
    using Handler = std::function<bool(const QString &, const QVariantList &, const QVariantMap &)>;

    FreedesktopApplicationAdaptor(QObject *object, Handler handler);

    // Called by the bus.
    // NOLINTBEGIN(readability-identifier-naming): so they are called on every bus
    Q_SLOT void Activate(const QVariantMap &platformData);
    Q_SLOT void Open(const QStringList &uris, const QVariantMap &platformData);
    Q_SLOT void ActivateAction(const QString &name, const QVariantList &parameters,
        const QVariantMap &platformData, const QDBusMessage &call);
    // NOLINTEND(readability-identifier-naming)

private:
    Handler m_handler;
};

/// What the command line has the running program do. Whoever asks says with which service and which files it
/// works; one that works with others refuses.
class SessionAdaptor final : public QDBusAbstractAdaptor {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "app.orbitledge.Orbitledge.Session1")

public:
    /// Told of each call, which it answers itself.
    using Handler = std::function<void(const QDBusMessage &)>;

    SessionAdaptor(QObject *object, Handler handler);

    // Called by the bus. What is given is the message again.
    // NOLINTBEGIN(readability-identifier-naming): as is usual on the bus
    /// Answers at once.
    Q_SLOT void Check(const QString &api, const QString &cacheFile, const QDBusMessage &call);
    /// Each of these is answered when it is done: whether that went well, a sentence for people where
    /// something went wrong, and how many subscriptions there are.
    Q_SLOT void Refresh(const QString &api, const QString &cacheFile, const QDBusMessage &call, bool &isDone,
        QString &problem, qlonglong &subscriptions);
    Q_SLOT void SignOut(const QString &api, const QString &cacheFile, const QDBusMessage &call, bool &isDone,
        QString &problem, qlonglong &subscriptions);
    /// The descriptor is that of a sealed message: the e-mail address, a byte of zero, and the password.
    Q_SLOT void SignIn(const QString &api, const QString &cacheFile,
        const QDBusUnixFileDescriptor &credentials, const QDBusMessage &call, bool &isDone, QString &problem,
        qlonglong &subscriptions);
    // NOLINTEND(readability-identifier-naming)

private:
    void handle(const QDBusMessage &call);

    Handler m_handler;
};

} // namespace orbitledge
