#include "platform/linux/application/ApplicationAdaptors.h"

#include "platform/ApplicationService.h"

#include <QDBusConnection>
#include <QDBusError>

#include <utility>

namespace orbitledge {

using namespace Qt::StringLiterals;

FreedesktopApplicationAdaptor::FreedesktopApplicationAdaptor(QObject *object, Handler handler)
    : QDBusAbstractAdaptor(object)
    , m_handler(std::move(handler))
{
}

void FreedesktopApplicationAdaptor::Activate(const QVariantMap &platformData)
{
    m_handler(nameOf(ApplicationAction::Open), {}, platformData);
}

/// There are no files that could be opened with it.
void FreedesktopApplicationAdaptor::Open(const QStringList & /*uris*/, const QVariantMap &platformData)
{
    Activate(platformData);
}

void FreedesktopApplicationAdaptor::ActivateAction(const QString &name, const QVariantList &parameters,
    const QVariantMap &platformData, const QDBusMessage &call)
{
    if (m_handler(name, parameters, platformData))
        return;
    call.setDelayedReply(true);
    QDBusConnection::sessionBus().send(
        call.createErrorReply(QDBusError::InvalidArgs, u"There is no such action, or not with that."_s));
}

SessionAdaptor::SessionAdaptor(QObject *object, Handler handler)
    : QDBusAbstractAdaptor(object)
    , m_handler(std::move(handler))
{
}

void SessionAdaptor::handle(const QDBusMessage &call)
{
    call.setDelayedReply(true);
    m_handler(call);
}

void SessionAdaptor::Check(const QString & /*api*/, const QString & /*cacheFile*/, const QDBusMessage &call)
{
    handle(call);
}

// What is to be answered is not known yet when these return.
void SessionAdaptor::Refresh(const QString & /*api*/, const QString & /*cacheFile*/, const QDBusMessage &call,
    bool & /*isDone*/, QString & /*problem*/, qlonglong & /*subscriptions*/)
{
    handle(call);
}

void SessionAdaptor::SignOut(const QString & /*api*/, const QString & /*cacheFile*/, const QDBusMessage &call,
    bool & /*isDone*/, QString & /*problem*/, qlonglong & /*subscriptions*/)
{
    handle(call);
}

void SessionAdaptor::SignIn(const QString & /*api*/, const QString & /*cacheFile*/,
    const QDBusUnixFileDescriptor & /*credentials*/, const QDBusMessage &call, bool & /*isDone*/,
    QString & /*problem*/, qlonglong & /*subscriptions*/)
{
    handle(call);
}

} // namespace orbitledge
