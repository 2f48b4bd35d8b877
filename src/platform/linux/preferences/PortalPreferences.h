#pragma once

#include "platform/DesktopPreferences.h"

#include <QCoroTask>
#include <QDBusServiceWatcher>
#include <QDBusVariant>
#include <QList>
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

    [[nodiscard]] Colors colors() const override { return m_look.colors; }
    [[nodiscard]] bool increasesContrast() const override
    {
        return m_look.increasesContrast || m_look.isGnomeHighContrast;
    }
    [[nodiscard]] bool reducesMotion() const override { return m_look.reducesMotion; }
    [[nodiscard]] double textScale() const override { return m_look.textScale; }

private:
    struct Look {
        Colors colors = Colors::NoPreference;
        bool increasesContrast = false;
        bool isGnomeHighContrast = false;
        bool reducesMotion = false;
        double textScale = 1;

        bool operator==(const Look &) const = default;
    };
    struct Setting {
        QString group;
        QString key;
        QVariant value;
    };

    static QCoro::Task<void> begin(QPointer<PortalPreferences> preferences);
    static QCoro::Task<void> read(QPointer<PortalPreferences> preferences);
    /// Settings of a type that they do not have are passed over.
    static void take(Look &look, const Setting &setting);
    void show(const Look &look);

    // Called by the bus.
    void settingChanged(const QString &group, const QString &key, const QDBusVariant &value);
    void ownerChanged(const QString &service, const QString &oldOwner, const QString &newOwner);

    std::unique_ptr<QDBusServiceWatcher> m_watcher;
    Look m_look;
    int m_readCount = 0;
    /// What was told while an answer was waited for. The answer may be handed on later than what came after
    /// it.
    QList<Setting> m_toldMeanwhile;
};

} // namespace orbitledge
