#pragma once

#include "model/Instant.h"
#include "model/Subscription.h"
#include "model/SubscriptionTemplate.h"
#include "model/UserProfile.h"
#include "platform/UserNotificationCenter.h"
#include "updates/ReleaseManifest.h"

#include <QList>
#include <QString>

#include <optional>

namespace orbitledge {

enum class AuthState { Checking, SignedOut, SignedIn };

enum class RefreshState {
    Idle,
    /// A fetch with nothing to show yet.
    Loading,
    /// A fetch while what is there stays.
    Refreshing,
};

/// Everything that the program shows, but for the settings and what follows from this.
struct AppState {
    AuthState authState = AuthState::Checking;
    std::optional<UserProfile> user;
    /// As the service gave them.
    QList<Subscription> subscriptions;
    RefreshState refreshState = RefreshState::Idle;
    /// The last failure, for people.
    std::optional<QString> errorMessage;
    /// The last fetch failed for want of a network.
    bool isOffline = false;
    /// When what is shown was fetched.
    std::optional<Instant> lastUpdatedAt;
    /// What was found in the catalogue last.
    QList<SubscriptionTemplate> templates;
    bool isQuickAddPresented = false;
    std::optional<ReleaseManifest> availableUpdate;
    /// As it was known last.
    NotificationAuthorization notificationAuthorization = NotificationAuthorization::NotDetermined;
    /// How something that was done about reminders ended, for people.
    std::optional<QString> notificationActionMessage;
    /// Why some reminders could not be scheduled, for people.
    std::optional<QString> notificationFailureMessage;
    /// Reminders that wait until there is room for them.
    qint64 notificationsSkippedOverBudget = 0;

    friend bool operator==(const AppState &, const AppState &) = default;
};

} // namespace orbitledge
