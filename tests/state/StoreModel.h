#pragma once

#include "locale/Calendar.h"
#include "service/APIError.h"
#include "state/AppSettings.h"
#include "state/AppState.h"
#include "state/CacheSnapshot.h"

#include <QSet>
#include <QStringList>
#include <QUrl>

#include <deque>
#include <map>

namespace orbitledge::testing {

/// What a store must have come to when nothing moves by itself any more, said without coroutines and without
/// its code: what is pending is a list, and an end of a session marks what is on it as outdated.
///
/// Each method is something that happens to the store. Where the rules leave an order open it says so:
///
/// - What is done within one step, on the threads of the cache and of the planning, is taken as done when
///   the step is over. Nothing that the store shows depends on which of the two is faster.
/// - Both halves of a fetch are awaited, also where one has failed; the rules would also allow to give up
///   after the first.
class StoreModel {
public:
    // ---- the world around it, as the test set it up ----

    Instant now;
    std::optional<Calendar> calendar;
    QUrl webURL;
    bool hasSession = true;
    bool isDiskFull = false;
    /// Why reminders cannot be kept.
    std::optional<QString> remindersFailure;
    NotificationAuthorization authorization = NotificationAuthorization::NotDetermined;
    bool areAlertsEnabled = false;
    bool hasNotificationSettings = true;

    /// Of the person, as `AppSettings` holds it.
    struct Settings {
        RefreshInterval refreshInterval = RefreshInterval::FifteenMinutes;
        bool notificationsEnabled = false;
        qint64 notificationLeadDays = 3;
        std::optional<Instant> lastUpdateCheck;
        /// The minor number of a version 1.x.0.
        std::optional<int> dismissedMinor;
    };
    Settings settings;

    // ---- what it must have come to ----

    AppState state;
    std::optional<CacheSnapshot> cached;
    /// Whether signing in succeeded, of each that ended.
    QList<bool> signIns;
    std::optional<std::chrono::milliseconds> timer;
    std::optional<Instant> alarm;

    [[nodiscard]] QStringList waiting() const;
    /// Of all reminders that wait or are on their way, sorted.
    [[nodiscard]] QStringList reminders() const { return m_reminders.keys(); }
    [[nodiscard]] qsizetype updateChecks() const { return m_updateChecks.size(); }
    [[nodiscard]] qsizetype permissionRequests() const { return m_permissionRequests.size(); }
    [[nodiscard]] bool isQuiet() const
    {
        return m_calls.isEmpty() && m_updateChecks.isEmpty() && m_permissionRequests.isEmpty();
    }

    // ---- what is done with it ----

    void start();
    void refresh();
    void signIn();
    /// False where somebody signs out already.
    bool signOut();
    /// "cancel" or "uncancel"
    void mutate(const QString &name);
    void search(const QString &query);
    void setQuickAddPresented(bool isPresented)
    {
        state.isQuickAddPresented = isPresented;
        state.templates.clear();
        m_lastSearch.clear();
    }
    void synchroniseReminders();
    void refreshNotificationAuthorization() { state.notificationAuthorization = authorization; }
    void requestNotificationPermission() { m_permissionRequests.append(false); }
    void sendTestNotification();
    void openNotificationSettings();
    void checkForUpdates(bool isForced);
    void dismissUpdate();

    // ---- what happens around it ----

    void setOffline(bool isOffline);
    void moveTo(Instant instant, bool isTold);
    void elapse();

    // ---- what it is answered; by the place in the list of what waits ----

    struct Reply {
        tl::expected<UserProfile, APIError> profile;
        tl::expected<QList<Subscription>, APIError> subscriptions;
        tl::expected<QList<SubscriptionTemplate>, APIError> templates;
    };
    void answer(qsizetype index, const Reply &reply);

    struct Release {
        /// 1.x.0; 1.0.0 is what runs.
        int minor = 0;
        ReleaseManifest manifest;
    };
    void answerUpdateCheck(qsizetype index, const std::optional<Release> &release);

    void decidePermission(qsizetype index, const tl::expected<bool, QString> &decision);

private:
    struct Call {
        QString name;
        /// Of an earlier session: whatever comes back is of no interest.
        bool isOutdated = false;
    };
    struct Fetch {
        bool isOutdated = false;
        std::optional<tl::expected<UserProfile, APIError>> profile;
        std::optional<tl::expected<QList<Subscription>, APIError>> subscriptions;
    };
    struct UpdateCheck {
        /// Of those that come by themselves there is one at a time.
        bool isByItself = false;
    };

    void call(const QString &name);
    /// What was asked for until now is not of this session.
    void endSession();
    void signOutLocally(const APIError &error);
    void fail(const APIError &error);

    void wantFetch();
    void wantNextFetch();
    void beginFetch();
    void takeHalf();
    void endFetch();
    void failFetch(const APIError &error);
    void show(const UserProfile &profile, const QList<Subscription> &subscriptions);
    void endRound();

    void beginTurn();
    void endTurn();
    void learnWhoSignedIn(const tl::expected<UserProfile, APIError> &profile);
    void endSignIn(const tl::expected<QList<Subscription>, APIError> &subscriptions);
    void failSignIn(const APIError &error);
    void endSignOut();

    void removeReminders();
    void planReminders();
    void endTest();
    void lookForUpdates(bool isForced, bool isByItself);
    void setAlarm();

    bool m_isStarted = false;
    QList<Call> m_calls;
    std::optional<Fetch> m_fetch;
    bool m_isNextFetchWanted = false;
    enum class Round { None, ThisFetch, NextFetch };
    Round m_round = Round::None;

    enum class Turn { SignIn, SignOut };
    std::deque<Turn> m_turns;
    bool m_isSigningOut = false;
    std::optional<UserProfile> m_signedInAs;

    bool m_wasNetworkDown = false;
    std::optional<Instant> m_networkTry;
    QString m_lastSearch;
    QList<UpdateCheck> m_updateChecks;
    /// Each: whether a test notification is to follow.
    QList<bool> m_permissionRequests;

    /// Whether it is on its way, by identifier.
    QMap<QString, bool> m_reminders;
    QSet<QString> m_shownReminders;
};

} // namespace orbitledge::testing
