#include "platform/linux/diagnosis/NotificationInspection.h"

#include "platform/linux/notifications/DesktopNotificationSwitches.h"
#include "platform/linux/notifications/ProgramOutput.h"

#include <QDBusVariant>

namespace orbitledge {

using namespace Qt::StringLiterals;
using findings::Notifications;
using findings::Presence;
using std::chrono::milliseconds;

namespace {

const QString serviceName = u"org.freedesktop.Notifications"_s;
const QString objectPath = u"/org/freedesktop/Notifications"_s;

using Truth = std::optional<bool>;

Truth truthOf(const BusInquiry::Property &property)
{
    if (!property || property->metaType() != QMetaType::fromType<bool>())
        return std::nullopt;
    return property->toBool();
}

QCoro::Task<Truth> askProperty(QString interface, QString name, milliseconds limit)
{
    BusInquiry inquiry(limit);
    const auto property = co_await inquiry.property(serviceName, objectPath, interface, name);
    co_return truthOf(property);
}

QCoro::Task<Truth> askXfce(milliseconds limit)
{
    QDBusMessage question = QDBusMessage::createMethodCall(
        u"org.xfce.Xfconf"_s, u"/org/xfce/Xfconf"_s, u"org.xfce.Xfconf"_s, u"GetProperty"_s);
    question << u"xfce4-notifyd"_s << u"/do-not-disturb"_s;
    BusInquiry inquiry(limit);
    const auto answer = co_await inquiry.ask(question);
    if (!answer)
        co_return std::nullopt;
    co_return truthOf(answer->arguments().value(0).value<QDBusVariant>().variant());
}

QCoro::Task<Truth> askGnome(milliseconds limit)
{
    const QStringList arguments{u"get"_s, u"org.gnome.desktop.notifications"_s, u"show-banners"_s};
    const auto output = co_await outputOfProgram(u"gsettings"_s, arguments, limit);
    if (output == "true\n" || output == "false\n")
        co_return output == "false\n";
    co_return std::nullopt;
}

/// Each daemon tells in a way of its own whether it keeps quiet just now.
QCoro::Task<Truth> askDoNotDisturb(const QString &daemon, milliseconds limit)
{
    if (daemon == "dunst"_L1)
        return askProperty(u"org.dunstproject.cmd0"_s, u"paused"_s, limit);
    if (daemon == "gnome-shell"_L1)
        return askGnome(limit);
    if (daemon.startsWith("xfce"_L1, Qt::CaseInsensitive))
        return askXfce(limit);
    return askProperty(serviceName, u"Inhibited"_s, limit); // as Plasma's
}

} // namespace

QCoro::Task<Notifications> inspectNotifications(BusNames names, QString applicationId,
    std::function<QByteArray(const char *)> variable, milliseconds limit)
{
    Notifications found;
    found.daemon = names.presenceOf(serviceName);
    DesktopNotificationSwitches switches({.variable = variable,
        .desktopId = applicationId,
        .applicationName = u"Orbitledge"_s,
        .patience = limit});
    auto positions = switches.read();
    if (found.daemon == Presence::Present) {
        BusInquiry inquiry(limit);
        const auto method = [](const QString &name) {
            return QDBusMessage::createMethodCall(serviceName, objectPath, serviceName, name);
        };
        const auto information = co_await inquiry.ask(method(u"GetServerInformation"_s));
        const auto skills = co_await inquiry.ask(method(u"GetCapabilities"_s));
        if (information && skills) {
            const QList<QVariant> words = information->arguments();
            found.name = words.value(0).toString();
            found.vendor = words.value(1).toString();
            found.version = words.value(2).toString();
            found.specification = words.value(3).toString();
            found.capabilities = skills->arguments().value(0).toStringList();
            found.doNotDisturb = co_await askDoNotDisturb(found.name, limit);
        } else {
            found.daemon = information ? skills.error() : information.error();
        }
    }
    const NotificationSwitchPositions set = co_await positions;
    found.allows = set.allows;
    found.popsUp = set.popsUp;
    co_return found;
}

} // namespace orbitledge
