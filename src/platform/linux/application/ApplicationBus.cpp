#include "platform/linux/application/ApplicationBus.h"

namespace orbitledge {

using namespace Qt::StringLiterals;

namespace {

// Of Wayland and of X11. What comes in is one or the other.
const QString tokenKey = u"activation-token"_s;
const QString startupIdKey = u"desktop-startup-id"_s;

} // namespace

QString ApplicationBus::pathOf(const QString &applicationId)
{
    QString path = u'/' + applicationId;
    return path.replace(u'.', u'/').replace(u'-', u'_');
}

QVariantMap ApplicationBus::platformData(const QString &activationToken)
{
    if (activationToken.isEmpty())
        return {};
    return {{tokenKey, activationToken}, {startupIdKey, activationToken}};
}

QString ApplicationBus::activationToken(const QVariantMap &platformData)
{
    const QString token = platformData.value(tokenKey).toString();
    return token.isEmpty() ? platformData.value(startupIdKey).toString() : token;
}

} // namespace orbitledge
