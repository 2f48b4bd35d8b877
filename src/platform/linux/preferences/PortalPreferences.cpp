#include "platform/linux/preferences/PortalPreferences.h"

#include "platform/linux/notifications/SessionBusCall.h"

#include <QDBusArgument>
#include <QDBusConnection>

#include <chrono>
#include <cmath>

namespace orbitledge {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

constexpr auto service = "org.freedesktop.portal.Desktop"_L1;
constexpr auto path = "/org/freedesktop/portal/desktop"_L1;
constexpr auto interface = "org.freedesktop.portal.Settings"_L1;
constexpr auto appearanceGroup = "org.freedesktop.appearance"_L1;
constexpr auto gnomeGroup = "org.gnome.desktop.interface"_L1;
constexpr auto gnomeAccessGroup = "org.gnome.desktop.a11y.interface"_L1;

/// A portal may have to be started first.
constexpr auto patience = 10s;

DesktopPreferences::Colors colorsOf(const QVariant &value)
{
    switch (value.toUInt()) {
    case 1:
        return DesktopPreferences::Colors::Dark;
    case 2:
        return DesktopPreferences::Colors::Light;
    default:
        return DesktopPreferences::Colors::NoPreference;
    }
}

} // namespace

PortalPreferences::PortalPreferences()
{
    begin(this);
}

QCoro::Task<void> PortalPreferences::begin(QPointer<PortalPreferences> preferences)
{
    const bool hasBus = co_await reachSessionBus();
    if (!hasBus || !preferences)
        co_return;
    QDBusConnection bus = QDBusConnection::sessionBus();
    // From whomever: to ask for the owner of the name would wait.
    bus.connect(QString(), path, interface, u"SettingChanged"_s, preferences,
        SLOT(settingChanged(QString, QString, QDBusVariant)));
    // A portal that comes later, or again, may have other answers.
    preferences->m_watcher = std::make_unique<QDBusServiceWatcher>(
        QString(service), bus, QDBusServiceWatcher::WatchForOwnerChange);
    connect(preferences->m_watcher.get(), &QDBusServiceWatcher::serviceOwnerChanged, preferences,
        &PortalPreferences::ownerChanged);
    co_await read(preferences);
}

QCoro::Task<void> PortalPreferences::read(QPointer<PortalPreferences> preferences)
{
    QDBusMessage call = QDBusMessage::createMethodCall(service, path, interface, u"ReadAll"_s);
    call << QStringList{QString(appearanceGroup), QString(gnomeGroup), QString(gnomeAccessGroup)};
    call.setAutoStartService(true);
    const QDBusMessage answer = co_await callSessionBus(call, patience);
    if (!preferences || answer.type() != QDBusMessage::ReplyMessage || answer.signature() != u"a{sa{sv}}")
        co_return;
    const auto groups
        = qdbus_cast<QMap<QString, QVariantMap>>(answer.arguments().constFirst().value<QDBusArgument>());
    bool isChanged = false;
    for (auto group = groups.cbegin(); group != groups.cend(); ++group) {
        for (auto setting = group->cbegin(); setting != group->cend(); ++setting)
            isChanged = preferences->take(group.key(), setting.key(), *setting) || isChanged;
    }
    if (isChanged)
        Q_EMIT preferences->changed();
}

bool PortalPreferences::take(const QString &group, const QString &key, const QVariant &value)
{
    const auto replace
        = [](auto &member, auto newValue) { return std::exchange(member, newValue) != newValue; };
    if (group == appearanceGroup && key == u"color-scheme")
        return replace(m_colors, colorsOf(value));
    if (group == appearanceGroup && key == u"contrast")
        return replace(m_increasesContrast, value.toUInt() == 1);
    if (group == gnomeAccessGroup && key == u"high-contrast")
        return replace(m_isGnomeHighContrast, value.toBool());
    if (group == gnomeGroup && key == u"enable-animations")
        return replace(m_reducesMotion, !value.toBool());
    if (group == gnomeGroup && key == u"text-scaling-factor") {
        const double scale = value.toDouble();
        return std::isfinite(scale) && scale > 0 && replace(m_textScale, scale);
    }
    return false;
}

void PortalPreferences::settingChanged(const QString &group, const QString &key, const QDBusVariant &value)
{
    if (take(group, key, value.variant()))
        Q_EMIT changed();
}

void PortalPreferences::ownerChanged(
    const QString & /*service*/, const QString & /*oldOwner*/, const QString &newOwner)
{
    if (!newOwner.isEmpty())
        read(this);
}

} // namespace orbitledge
