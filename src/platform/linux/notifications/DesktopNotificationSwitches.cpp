#include "platform/linux/notifications/DesktopNotificationSwitches.h"

#include "platform/linux/bus/SessionBusCall.h"
#include "platform/linux/notifications/ProgramOutput.h"

#include <QDBusArgument>
#include <QDBusMessage>
#include <QDBusVariant>
#include <QStringList>
#include <QVariant>

#include <utility>

namespace orbitledge {

using namespace Qt::StringLiterals;
using std::chrono::milliseconds;

namespace {

const QString gnomeSchema = u"org.gnome.desktop.notifications.application"_s;

/// As GNOME's shell makes it: small letters, digits and dashes, of which no two follow each other.
QString gnomeNameOf(const QString &desktopId)
{
    QString name;
    for (const QChar character : desktopId.toLower()) {
        const bool stays
            = (character >= u'a' && character <= u'z') || (character >= u'0' && character <= u'9');
        if (stays)
            name += character;
        else if (!name.endsWith(u'-'))
            name += u'-';
    }
    return name;
}

QCoro::Task<NotificationSwitchPositions> readFromGnome(QString desktopId, milliseconds patience)
{
    const QString path = u"/org/gnome/desktop/notifications/application/%1/"_s.arg(gnomeNameOf(desktopId));
    const QStringList arguments{u"list-recursively"_s, gnomeSchema + u':' + path};
    const auto output = co_await outputOfProgram(u"gsettings"_s, arguments, patience);
    // A line a key: the schema, the key, and the value.
    const QList<QByteArray> lines = output.value_or(QByteArray()).split('\n');
    const QByteArray prefix = gnomeSchema.toLatin1();
    co_return NotificationSwitchPositions{
        .allows = !lines.contains(prefix + " enable false"),
        .popsUp = !lines.contains(prefix + " show-banners false"),
    };
}

/// Xfconf's arrays hold variants.
QVariantList listIn(const QDBusMessage &reply)
{
    const QVariant value = reply.arguments().value(0).value<QDBusVariant>().variant();
    if (value.metaType() == QMetaType::fromType<QStringList>())
        return value.toList();
    const auto array = value.value<QDBusArgument>();
    if (array.currentSignature() != "av"_L1)
        return {};
    return qdbus_cast<QVariantList>(array);
}

QCoro::Task<NotificationSwitchPositions> readFromXfce(
    QString desktopId, QString applicationName, milliseconds patience)
{
    const bool hasBus = co_await reachSessionBus();
    if (!hasBus)
        co_return NotificationSwitchPositions();
    QDBusMessage ask = QDBusMessage::createMethodCall(
        u"org.xfce.Xfconf"_s, u"/org/xfce/Xfconf"_s, u"org.xfce.Xfconf"_s, u"GetProperty"_s);
    ask << u"xfce4-notifyd"_s << u"/applications/muted_applications"_s;
    const QDBusMessage reply = co_await callSessionBus(ask, patience);
    if (!isAnswer(reply))
        co_return NotificationSwitchPositions(); // such an error also stands for a list that is not there
    const QVariantList muted = listIn(reply);
    // Which of the two is listed depends on the version.
    co_return NotificationSwitchPositions{
        .allows = !muted.contains(applicationName) && !muted.contains(desktopId)};
}

} // namespace

DesktopNotificationSwitches::DesktopNotificationSwitches(Settings settings)
    : m_settings(std::move(settings))
{
}

// No coroutine, so that this may go while the answer is awaited.
QCoro::Task<NotificationSwitchPositions> DesktopNotificationSwitches::read()
{
    const QList<QByteArray> desktops = m_settings.variable("XDG_CURRENT_DESKTOP").split(':');
    if (desktops.contains("GNOME"))
        return readFromGnome(m_settings.desktopId, m_settings.patience);
    if (desktops.contains("XFCE"))
        return readFromXfce(m_settings.desktopId, m_settings.applicationName, m_settings.patience);
    const auto allOn
        = []() -> QCoro::Task<NotificationSwitchPositions> { co_return NotificationSwitchPositions(); };
    return allOn();
}

} // namespace orbitledge
