#pragma once

#include "presentation/SettingsContent.h"
#include "support/PanelScenes.h"

namespace orbitledge::testing {

inline AboutProgram sampleAbout()
{
    return {
        .version = QStringLiteral("1.0.0"),
        .build = QStringLiteral("100"),
        .api = QUrl(QStringLiteral("https://api.example.com/v1")),
    };
}

/// What keeps reminders, or the start at login, from working; as a table for tests and pictures.
inline std::vector<PanelScene> settingsScenes()
{
    using namespace Qt::StringLiterals;
    const auto allow = [](StoreDesk &desk, NotificationAuthorization authorization) {
        desk.center->currentSettings
            = {.authorization = authorization, .alertsEnabled = true, .notificationCenterEnabled = true};
    };
    return {
        {u"well"_s,
            [allow](StoreDesk &desk) {
                allow(desk, NotificationAuthorization::Authorized);
                desk.settings->setNotificationsEnabled(true);
                desk.loginItem->current = LoginItemStatus::Enabled;
                showList(desk, sampleList());
                desk.settle();
            }},
        {u"denied"_s,
            [allow](StoreDesk &desk) {
                allow(desk, NotificationAuthorization::Denied);
                desk.center->permission = false;
                desk.loginItem->current = LoginItemStatus::RequiresApproval;
                desk.releases->manifest = sampleRelease(u"1.4.2"_s);
                showList(desk, sampleList());
                QCoro::waitFor(desk.store->requestNotificationPermission());
                desk.settle();
            }},
        {u"failing"_s,
            [allow](StoreDesk &desk) {
                allow(desk, NotificationAuthorization::Authorized);
                desk.settings->setNotificationsEnabled(true);
                desk.center->refuse
                    = [](const NotificationRequest &) { return std::optional(u"The disk is full."_s); };
                desk.loginItem->failure = u"The login item could not be saved: The disk is full."_s;
                showList(desk, manySubscriptions(90));
                QCoro::waitFor(desk.store->launchAtLogin().setEnabled(true));
                QCoro::waitFor(desk.store->sendTestNotification());
                desk.settle();
            }},
        {u"signed-out"_s,
            [](StoreDesk &desk) {
                desk.api->hasSession = false;
                desk.make();
                QCoro::waitFor(desk.store->start());
                desk.settle();
            }},
    };
}

} // namespace orbitledge::testing
