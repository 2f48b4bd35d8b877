#pragma once

#include "platform/UserDefaults.h"

#include <QObject>

#include <array>
#include <chrono>
#include <memory>

namespace orbitledge {

/// How often the data are fetched anew. The numbers are seconds, and are what is stored.
enum class RefreshInterval : qint64 {
    FiveMinutes = 300,
    FifteenMinutes = 900,
    ThirtyMinutes = 1800,
    OneHour = 3600,
};

/// In the order in which people choose from them.
inline constexpr std::array refreshIntervals{RefreshInterval::FiveMinutes, RefreshInterval::FifteenMinutes,
    RefreshInterval::ThirtyMinutes, RefreshInterval::OneHour};

/// Absent for a number that is none of them.
std::optional<RefreshInterval> refreshIntervalFromSeconds(qint64 seconds);
std::chrono::seconds durationOf(RefreshInterval interval);
/// "15 minutes"
QString titleOf(RefreshInterval interval);

/// Whether windows are light or dark.
enum class Appearance { System, Light, Dark };

/// In the order in which people choose from them.
inline constexpr std::array appearances{Appearance::System, Appearance::Light, Appearance::Dark};

/// The person's preferences, and what the program remembers of updates. Read once, written through on each
/// change. What is stored with a wrong type or a value that does not exist counts as not set. User-interface
/// thread only.
class AppSettings : public QObject {
    Q_OBJECT

public:
    explicit AppSettings(std::shared_ptr<UserDefaults> defaults, QObject *parent = nullptr);

    [[nodiscard]] RefreshInterval refreshInterval() const { return m_refreshInterval; }
    void setRefreshInterval(RefreshInterval interval);

    [[nodiscard]] bool notificationsEnabled() const { return m_notificationsEnabled; }
    void setNotificationsEnabled(bool enabled);

    /// How many days before a renewal it is announced: 0 to 14.
    [[nodiscard]] qint64 notificationLeadDays() const { return m_notificationLeadDays; }
    /// Taken as 0 where it is less, as 14 where it is more.
    void setNotificationLeadDays(qint64 days);

    /// What is stored, for those who only look.
    static qint64 storedLeadDays(const UserDefaults &defaults);

    [[nodiscard]] bool showMenuBadge() const { return m_showMenuBadge; }
    void setShowMenuBadge(bool show);

    [[nodiscard]] Appearance appearance() const { return m_appearance; }
    void setAppearance(Appearance appearance);

    [[nodiscard]] std::optional<Instant> lastUpdateCheck() const { return m_lastUpdateCheck; }
    void setLastUpdateCheck(std::optional<Instant> instant);

    [[nodiscard]] std::optional<QString> dismissedUpdateVersion() const { return m_dismissedUpdateVersion; }
    void setDismissedUpdateVersion(const std::optional<QString> &version);

Q_SIGNALS:
    /// Before a property changes, so that those who show it can compare, and after that.
    void aboutToChange();
    void changed();

private:
    void storeUpdateCheck();
    void storeDismissedVersion();

    std::shared_ptr<UserDefaults> m_defaults;
    RefreshInterval m_refreshInterval = RefreshInterval::FifteenMinutes;
    bool m_notificationsEnabled = false;
    qint64 m_notificationLeadDays = 0;
    bool m_showMenuBadge = true;
    Appearance m_appearance = Appearance::System;
    std::optional<Instant> m_lastUpdateCheck;
    std::optional<QString> m_dismissedUpdateVersion;
};

} // namespace orbitledge
