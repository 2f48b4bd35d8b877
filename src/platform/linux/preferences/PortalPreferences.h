#pragma once

#include "platform/DesktopPreferences.h"

#include <QCoroTask>
#include <QDBusServiceWatcher>
#include <QDBusVariant>
#include <QPointer>
#include <QVariant>

#include <memory>

namespace orbitledge {

/// What the desktop portal tells (org.freedesktop.portal.Settings): the color scheme and the contrast of the
/// freedesktop.org appearance settings, and GNOME's contrast, text scale and animations. Where there is no
/// portal, or before it has answered, nothing is preferred.
class PortalPreferences final : public DesktopPreferences {
    Q_OBJECT

public:
    PortalPreferences();

    [[nodiscard]] Colors colors() const override { return m_colors; }
    [[nodiscard]] bool increasesContrast() const override
    {
        return m_increasesContrast || m_isGnomeHighContrast;
    }
    [[nodiscard]] bool reducesMotion() const override { return m_reducesMotion; }
    [[nodiscard]] double textScale() const override { return m_textScale; }

private:
    static QCoro::Task<void> begin(QPointer<PortalPreferences> preferences);
    static QCoro::Task<void> read(QPointer<PortalPreferences> preferences);
    /// True where that is another value than before.
    bool take(const QString &group, const QString &key, const QVariant &value);

    // Called by the bus.
    Q_SLOT void settingChanged(const QString &group, const QString &key, const QDBusVariant &value);
    Q_SLOT void ownerChanged(const QString &service, const QString &oldOwner, const QString &newOwner);

    std::unique_ptr<QDBusServiceWatcher> m_watcher;
    Colors m_colors = Colors::NoPreference;
    bool m_increasesContrast = false;
    bool m_isGnomeHighContrast = false;
    bool m_reducesMotion = false;
    double m_textScale = 1;
};

} // namespace orbitledge
