#pragma once

#include "platform/linux/notifications/NotificationSwitches.h"

#include <QByteArray>
#include <QString>

#include <chrono>
#include <functional>

namespace orbitledge {

/// The switches of the desktops that have them for single applications, found by XDG_CURRENT_DESKTOP:
///
/// - GNOME, and those that call themselves a kind of it: the settings `enable` and `show-banners` of
///   org.gnome.desktop.notifications.application, at a path made from the name of the desktop file.
///   They are read with the `gsettings` program.
/// - XFCE: the list /applications/muted_applications of the channel xfce4-notifyd, which Xfconf holds. What
/// is
///   in it is neither shown nor logged.
///
/// Elsewhere all is on. So it is where the answer does not come, is not understood, or takes too long.
class DesktopNotificationSwitches final : public NotificationSwitches {
public:
    struct Settings {
        /// The environment of this process.
        std::function<QByteArray(const char *)> variable;
        /// The name of the desktop file, without ".desktop".
        QString desktopId;
        /// As it is sent with each notification.
        QString applicationName;
        std::chrono::milliseconds patience = std::chrono::seconds(3);
    };

    explicit DesktopNotificationSwitches(Settings settings);

    QCoro::Task<NotificationSwitchPositions> read() override;

private:
    Settings m_settings;
};

} // namespace orbitledge
