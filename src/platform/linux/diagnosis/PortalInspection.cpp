#include "platform/linux/diagnosis/PortalInspection.h"

#include <QDBusArgument>
#include <QVariantMap>

namespace orbitledge {

using namespace Qt::StringLiterals;
using findings::Portal;
using findings::Presence;

namespace {

const QString service = u"org.freedesktop.portal.Desktop"_s;
const QString path = u"/org/freedesktop/portal/desktop"_s;
const QString settings = u"org.freedesktop.portal.Settings"_s;
const QString appearance = u"org.freedesktop.appearance"_s;

std::optional<qint64> numberIn(const QVariantMap &values, const QString &key)
{
    const QVariant value = values.value(key);
    if (value.metaType() != QMetaType::fromType<quint32>())
        return std::nullopt;
    return value.toLongLong();
}

QVariantMap appearanceIn(const QDBusMessage &answer)
{
    if (answer.signature() != u"a{sa{sv}}")
        return {};
    const auto groups
        = qdbus_cast<QMap<QString, QVariantMap>>(answer.arguments().constFirst().value<QDBusArgument>());
    return groups.value(appearance);
}

} // namespace

QCoro::Task<Portal> inspectPortal(BusNames names, std::chrono::milliseconds limit)
{
    Portal portal;
    portal.presence = names.presenceOf(service);
    if (portal.presence != Presence::Present)
        co_return portal;
    BusInquiry inquiry(limit);
    const auto version = co_await inquiry.property(service, path, settings, u"version"_s);
    if (!version) {
        // One without settings answers this with an error, and is of no use to us, but there.
        portal.presence = version.error() == Presence::Mute ? Presence::Mute : Presence::Present;
        co_return portal;
    }
    portal.settingsVersion = version->toLongLong();
    QDBusMessage question = QDBusMessage::createMethodCall(service, path, settings, u"ReadAll"_s);
    question << QStringList{appearance};
    const auto answer = co_await inquiry.ask(question);
    if (!answer) {
        portal.presence = answer.error();
        co_return portal;
    }
    const QVariantMap values = appearanceIn(*answer);
    portal.colorScheme = numberIn(values, u"color-scheme"_s);
    portal.contrast = numberIn(values, u"contrast"_s);
    co_return portal;
}

} // namespace orbitledge
