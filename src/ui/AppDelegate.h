#pragma once

#include "platform/UserNotificationCenter.h"
#include "platform/Workspace.h"

#include <QObject>

#include <memory>

namespace orbitledge::ui {

/// Answers for the program as a whole: what a person chooses among the notifications is opened.
class AppDelegate : public QObject {
    Q_OBJECT

public:
    AppDelegate(std::shared_ptr<UserNotificationCenter> notifications, std::shared_ptr<Workspace> workspace);

    /// Opens the page of a reminder, where it is one.
    void openPage(const QString &address, const QString &activationToken) const;

private:
    void open(const QMap<QString, QString> &userInfo, const QString &activationToken) const;

    std::shared_ptr<UserNotificationCenter> m_notifications;
    std::shared_ptr<Workspace> m_workspace;
};

} // namespace orbitledge::ui
