#pragma once

#include <QString>

namespace orbitledge {

/// Who sends notifications, as the desktop knows it.
struct NotificationSender {
    /// For people.
    QString name;
    /// Of the desktop entry and of the icon.
    QString applicationId;
    /// It leaves the bus right after sending.
    bool isShortLived = false;
};

} // namespace orbitledge
