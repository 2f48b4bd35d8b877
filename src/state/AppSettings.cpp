#include "state/AppSettings.h"

#include <algorithm>

namespace orbitledge {

using namespace Qt::StringLiterals;

namespace {

constexpr qint64 fewestLeadDays = 0;
constexpr qint64 mostLeadDays = 14;

const QString refreshIntervalKey = u"settings.refreshInterval"_s;
const QString notificationsEnabledKey = u"settings.notificationsEnabled"_s;
const QString notificationLeadDaysKey = u"settings.notificationLeadDays"_s;
const QString showMenuBadgeKey = u"settings.showMenuBadge"_s;
const QString appearanceKey = u"settings.appearance"_s;
const QString lastUpdateCheckKey = u"settings.lastUpdateCheck"_s;
const QString dismissedUpdateVersionKey = u"settings.dismissedUpdateVersion"_s;

QString storedAppearance(Appearance appearance)
{
    switch (appearance) {
    case Appearance::System:
        break;
    case Appearance::Light:
        return u"light"_s;
    case Appearance::Dark:
        return u"dark"_s;
    }
    return u"system"_s;
}

Appearance appearanceFrom(const std::optional<QString> &stored)
{
    const auto *const found = std::ranges::find(appearances, stored.value_or(QString()), storedAppearance);
    return found == appearances.end() ? Appearance::System : *found;
}

} // namespace

std::optional<RefreshInterval> refreshIntervalFromSeconds(qint64 seconds)
{
    const auto *const found = std::ranges::find(refreshIntervals, std::chrono::seconds(seconds), durationOf);
    return found == refreshIntervals.end() ? std::nullopt : std::optional(*found);
}

std::chrono::seconds durationOf(RefreshInterval interval)
{
    return std::chrono::seconds(static_cast<qint64>(interval));
}

QString titleOf(RefreshInterval interval)
{
    constexpr qint64 secondsPerMinute = 60;
    if (interval == RefreshInterval::OneHour)
        return u"1 hour"_s;
    return u"%1 minutes"_s.arg(durationOf(interval).count() / secondsPerMinute);
}

AppSettings::AppSettings(std::shared_ptr<UserDefaults> defaults, QObject *parent)
    : QObject(parent)
    , m_defaults(std::move(defaults))
{
    if (const auto seconds = m_defaults->read<qint64>(refreshIntervalKey))
        m_refreshInterval = refreshIntervalFromSeconds(*seconds).value_or(m_refreshInterval);
    m_notificationsEnabled = m_defaults->read<bool>(notificationsEnabledKey).value_or(m_notificationsEnabled);
    m_notificationLeadDays = storedLeadDays(*m_defaults);
    m_showMenuBadge = m_defaults->read<bool>(showMenuBadgeKey).value_or(m_showMenuBadge);
    m_appearance = appearanceFrom(m_defaults->read<QString>(appearanceKey));
    m_lastUpdateCheck = m_defaults->read<Instant>(lastUpdateCheckKey);
    m_dismissedUpdateVersion = m_defaults->read<QString>(dismissedUpdateVersionKey);
    // What is there with another type goes.
    storeUpdateCheck();
    storeDismissedVersion();
}

qint64 AppSettings::storedLeadDays(const UserDefaults &defaults)
{
    constexpr qint64 usualLeadDays = 3;
    return std::clamp(
        defaults.read<qint64>(notificationLeadDaysKey).value_or(usualLeadDays), fewestLeadDays, mostLeadDays);
}

void AppSettings::setRefreshInterval(RefreshInterval interval)
{
    Q_EMIT aboutToChange();
    m_refreshInterval = interval;
    m_defaults->setValue(refreshIntervalKey, qint64{durationOf(interval).count()});
    Q_EMIT changed();
}

void AppSettings::setNotificationsEnabled(bool enabled)
{
    Q_EMIT aboutToChange();
    m_notificationsEnabled = enabled;
    m_defaults->setValue(notificationsEnabledKey, enabled);
    Q_EMIT changed();
}

void AppSettings::setNotificationLeadDays(qint64 days)
{
    Q_EMIT aboutToChange();
    m_notificationLeadDays = std::clamp(days, fewestLeadDays, mostLeadDays);
    m_defaults->setValue(notificationLeadDaysKey, m_notificationLeadDays);
    Q_EMIT changed();
}

void AppSettings::setShowMenuBadge(bool show)
{
    Q_EMIT aboutToChange();
    m_showMenuBadge = show;
    m_defaults->setValue(showMenuBadgeKey, show);
    Q_EMIT changed();
}

void AppSettings::setAppearance(Appearance appearance)
{
    Q_EMIT aboutToChange();
    m_appearance = appearance;
    m_defaults->setValue(appearanceKey, storedAppearance(appearance));
    Q_EMIT changed();
}

void AppSettings::setLastUpdateCheck(std::optional<Instant> instant)
{
    Q_EMIT aboutToChange();
    m_lastUpdateCheck = instant;
    storeUpdateCheck();
    Q_EMIT changed();
}

void AppSettings::setDismissedUpdateVersion(const std::optional<QString> &version)
{
    Q_EMIT aboutToChange();
    m_dismissedUpdateVersion = version;
    storeDismissedVersion();
    Q_EMIT changed();
}

void AppSettings::storeUpdateCheck()
{
    if (m_lastUpdateCheck)
        m_defaults->setValue(lastUpdateCheckKey, *m_lastUpdateCheck);
    else
        m_defaults->remove(lastUpdateCheckKey);
}

void AppSettings::storeDismissedVersion()
{
    if (m_dismissedUpdateVersion)
        m_defaults->setValue(dismissedUpdateVersionKey, *m_dismissedUpdateVersion);
    else
        m_defaults->remove(dismissedUpdateVersionKey);
}

} // namespace orbitledge
