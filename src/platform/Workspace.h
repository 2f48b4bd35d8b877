#pragma once

#include <QCoroTask>
#include <QString>
#include <QUrl>

namespace orbitledge {

/// The desktop's way to open what belongs to other programs.
class Workspace {
public:
    Workspace() = default;
    Workspace(const Workspace &) = delete;
    Workspace &operator=(const Workspace &) = delete;
    virtual ~Workspace() = default;

    /// Opens a web page (https, or http) in the person's browser. `activationToken` lets its window come
    /// forward where the desktop wants to see one; empty where there is none. False where nothing opens it.
    [[nodiscard]] virtual QCoro::Task<bool> open(QUrl url, QString activationToken) = 0;

    /// The desktop's settings for notifications. False where there is no such page.
    [[nodiscard]] virtual QCoro::Task<bool> openNotificationSettings() = 0;
};

} // namespace orbitledge
