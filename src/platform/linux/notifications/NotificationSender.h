#pragma once

#include <QString>

namespace orbitledge {

/// Who sends notifications, as the desktop knows it.
struct NotificationSender {
    /// For people.
    QString name;
    /// Of the desktop entry and of the icon.
    QString applicationId;
};

} // namespace orbitledge
