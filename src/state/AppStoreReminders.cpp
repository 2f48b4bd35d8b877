#include "state/AppStore.h"

namespace orbitledge {

using namespace Qt::StringLiterals;

QCoro::Task<void> AppStore::synchroniseReminders()
{
    return synchronise(this);
}

QCoro::Task<void> AppStore::synchronise(Store store)
{
    const std::optional<UserProfile> user = store->m_state.user;
    if (!user || store->m_isSigningOut) // which removes them
        co_return;
    const quint64 session = store->m_session;
    const auto notifier = store->m_with.notifier;
    std::optional<QString> failure;
    qint64 skipped = 0;
    if (store->settings().notificationsEnabled()) {
        const auto result = co_await notifier->synchronise(store->m_state.subscriptions,
            store->settings().notificationLeadDays(), store->m_with.clock->now(), user->defaultCurrency,
            store->m_with.calendar());
        if (result.failure)
            failure = u"macOS rejected some reminders: "_s + *result.failure;
        skipped = result.skippedOverBudget;
    } else {
        const auto removed = co_await notifier->removeAll();
        if (!removed)
            failure = removed.error().errorDescription;
    }
    if (!store || !store->isCurrent(session))
        co_return;
    store->change([&](AppState &state) {
        state.notificationFailureMessage = failure;
        state.notificationsSkippedOverBudget = skipped;
    });
}

QCoro::Task<void> AppStore::refreshNotificationAuthorization()
{
    return learnAuthorization(this);
}

QCoro::Task<void> AppStore::learnAuthorization(Store store)
{
    const auto notifier = store->m_with.notifier;
    const NotificationAuthorization authorization = co_await notifier->authorizationStatus();
    if (store)
        store->change([=](AppState &state) { state.notificationAuthorization = authorization; });
}

QCoro::Task<void> AppStore::requestNotificationPermission()
{
    const Store store = this;
    (void)co_await requestPermission(store);
}

QCoro::Task<bool> AppStore::requestPermission(Store store)
{
    const auto notifier = store->m_with.notifier;
    const auto granted = co_await notifier->requestAuthorization();
    if (!store)
        co_return false;
    if (!granted) {
        store->showActionMessage(u"Could not request permission: "_s + granted.error().errorDescription);
        co_return false;
    }
    co_await learnAuthorization(store);
    if (!store)
        co_return false;
    store->settings().setNotificationsEnabled(*granted);
    if (*granted) {
        co_await synchronise(store);
    } else {
        store->showActionMessage(
            u"macOS denied notifications for Orbitledge. Allow them in System Settings, then try again."_s);
    }
    co_return true;
}

QCoro::Task<void> AppStore::openNotificationSettings()
{
    const Store store = this;
    const auto workspace = m_with.workspace;
    const bool isOpened = co_await workspace->openNotificationSettings();
    if (store && !isOpened) {
        store->showActionMessage(
            u"Could not open System Settings. Open it manually and look under Notifications."_s);
    }
}

QCoro::Task<void> AppStore::sendTestNotification()
{
    return sendTest(this);
}

QCoro::Task<void> AppStore::sendTest(Store store)
{
    const auto notifier = store->m_with.notifier;
    co_await learnAuthorization(store);
    if (!store)
        co_return;
    if (store->m_state.notificationAuthorization == NotificationAuthorization::NotDetermined) {
        const bool isAnswered = co_await requestPermission(store);
        if (!store || !isAnswered)
            co_return;
    }
    const NotificationAuthorization authorization = store->m_state.notificationAuthorization;
    if (authorization != NotificationAuthorization::Authorized
        && authorization != NotificationAuthorization::Provisional) {
        store->showActionMessage(
            u"macOS is not allowing notifications from Orbitledge. Turn them on in System "
            "Settings, then try again."_s);
        co_return;
    }
    const auto sent = co_await notifier->sendTestNotification();
    const bool canPresent = co_await notifier->canPresent();
    if (!store)
        co_return;
    if (!sent) {
        store->showActionMessage(u"Could not send a test notification: "_s + sent.error().errorDescription);
    } else if (canPresent) {
        store->showActionMessage(u"Test notification sent \u2014 it should appear in a moment."_s);
    } else {
        store->showActionMessage(u"Queued, but macOS has alerts turned off for Orbitledge, so nothing will "
                                 "appear. Enable them under Notifications in System Settings."_s);
    }
}

void AppStore::showActionMessage(const QString &message)
{
    change([&message](AppState &state) { state.notificationActionMessage = message; });
}

} // namespace orbitledge
