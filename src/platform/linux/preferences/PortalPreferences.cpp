#include "platform/linux/preferences/PortalPreferences.h"

#include "platform/linux/bus/SessionBusCall.h"
#include "platform/linux/bus/SessionBusSignal.h"

#include <QDBusArgument>
#include <QDBusConnection>

#include <chrono>
#include <cmath>
#include <utility>

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

DesktopPreferences::Colors colorsOf(uint value)
{
    switch (value) {
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
    hearSignal({.sender = {}, .path = path, .interface = interface, .name = u"SettingChanged"_s},
        preferences.get(), &PortalPreferences::settingChanged);
    // A portal that comes later, or again, may have other answers.
    preferences->m_watcher = std::make_unique<QDBusServiceWatcher>(
        QString(service), QDBusConnection::sessionBus(), QDBusServiceWatcher::WatchForOwnerChange);
    connect(preferences->m_watcher.get(), &QDBusServiceWatcher::serviceOwnerChanged, preferences,
        &PortalPreferences::ownerChanged);
    co_await read(preferences);
}

QCoro::Task<void> PortalPreferences::read(QPointer<PortalPreferences> preferences)
{
    QDBusMessage call = QDBusMessage::createMethodCall(service, path, interface, u"ReadAll"_s);
    call << QStringList{QString(appearanceGroup), QString(gnomeGroup), QString(gnomeAccessGroup)};
    call.setAutoStartService(true);
    ++preferences->m_readCount;
    auto calling = callSessionBus(call, patience);
    const QDBusMessage answer = co_await calling;
    if (!preferences)
        co_return;
    const QList<Setting> toldMeanwhile = preferences->m_toldMeanwhile;
    if (--preferences->m_readCount == 0)
        preferences->m_toldMeanwhile.clear();
    if (!isAnswer(answer) || answer.signature() != u"a{sa{sv}}")
        co_return;
    const auto groups
        = qdbus_cast<QMap<QString, QVariantMap>>(answer.arguments().constFirst().value<QDBusArgument>());
    // What it does not tell is not preferred, whatever another portal told before.
    Look look;
    for (auto group = groups.cbegin(); group != groups.cend(); ++group) {
        for (auto setting = group->cbegin(); setting != group->cend(); ++setting)
            take(look, {.group = group.key(), .key = setting.key(), .value = *setting});
    }
    for (const Setting &setting : toldMeanwhile)
        take(look, setting);
    preferences->show(look);
}

void PortalPreferences::take(Look &look, const Setting &setting)
{
    const auto &[group, key, value] = setting;
    if (group == appearanceGroup && key == u"color-scheme" && value.typeId() == QMetaType::UInt)
        look.colors = colorsOf(value.toUInt());
    if (group == appearanceGroup && key == u"contrast" && value.typeId() == QMetaType::UInt)
        look.increasesContrast = value.toUInt() == 1;
    if (group == gnomeAccessGroup && key == u"high-contrast" && value.typeId() == QMetaType::Bool)
        look.isGnomeHighContrast = value.toBool();
    if (group == gnomeGroup && key == u"enable-animations" && value.typeId() == QMetaType::Bool)
        look.reducesMotion = !value.toBool();
    if (group == gnomeGroup && key == u"text-scaling-factor" && value.typeId() == QMetaType::Double) {
        const double scale = value.toDouble();
        if (std::isfinite(scale) && scale > 0)
            look.textScale = scale;
    }
}

void PortalPreferences::show(const Look &look)
{
    if (std::exchange(m_look, look) != look)
        Q_EMIT changed();
}

void PortalPreferences::settingChanged(const QString &group, const QString &key, const QDBusVariant &value)
{
    const Setting setting{.group = group, .key = key, .value = value.variant()};
    if (m_readCount > 0)
        m_toldMeanwhile.append(setting);
    Look look = m_look;
    take(look, setting);
    show(look);
}

void PortalPreferences::ownerChanged(
    const QString & /*service*/, const QString & /*oldOwner*/, const QString &newOwner)
{
    if (!newOwner.isEmpty())
        read(this);
}

} // namespace orbitledge
