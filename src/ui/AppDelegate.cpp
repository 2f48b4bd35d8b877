#include "ui/AppDelegate.h"

#include <QUrl>

namespace orbitledge::ui {

using namespace Qt::StringLiterals;

AppDelegate::AppDelegate(
    std::shared_ptr<UserNotificationCenter> notifications, std::shared_ptr<Workspace> workspace)
    : m_notifications(std::move(notifications))
    , m_workspace(std::move(workspace))
{
    connect(m_notifications.get(), &UserNotificationCenter::chosen, this, &AppDelegate::open);
}

void AppDelegate::open(const QMap<QString, QString> &userInfo, const QString &activationToken) const
{
    openPage(userInfo.value(u"url"_s), activationToken);
}

void AppDelegate::openPage(const QString &address, const QString &activationToken) const
{
    const QUrl page(address, QUrl::StrictMode);
    if (page.isValid() && !page.isEmpty())
        (void)m_workspace->open(page, activationToken); // goes on by itself
}

} // namespace orbitledge::ui
