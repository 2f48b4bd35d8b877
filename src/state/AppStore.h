#pragma once

#include "locale/Calendar.h"
#include "platform/Clock.h"
#include "platform/Connectivity.h"
#include "platform/IntervalTimer.h"
#include "platform/Turns.h"
#include "platform/WallClockAlarm.h"
#include "platform/Workspace.h"
#include "reminders/RenewalNotifier.h"
#include "service/APIClientProtocol.h"
#include "service/AccountData.h"
#include "state/AppSettings.h"
#include "state/AppState.h"
#include "state/LaunchAtLoginController.h"
#include "state/SnapshotCache.h"
#include "timeline/TimelineSnapshot.h"
#include "updates/ReleaseChecker.h"

#include <QObject>
#include <QPointer>

#include <functional>
#include <memory>

class QTimer;

namespace orbitledge {

class Completion;

/// What the program knows and does, as one object that any view can show: whether somebody is signed in, what
/// they subscribe to, what is being fetched, and what went wrong. No failure leaves it but as a part of its
/// state. User-interface thread only; it may be destroyed at any time, and what runs then ends without it.
class AppStore : public QObject {
    Q_OBJECT

public:
    /// Whom it works with.
    struct Collaborators {
        std::shared_ptr<APIClientProtocol> api;
        std::shared_ptr<SnapshotCache> cache;
        std::shared_ptr<RenewalNotifier> notifier;
        std::shared_ptr<ReleaseCheckerProviding> releaseChecker;
        std::shared_ptr<AppSettings> settings;
        std::shared_ptr<LaunchAtLoginController> launchAtLogin;
        std::shared_ptr<Workspace> workspace;
        std::shared_ptr<const Clock> clock;
        /// The person's calendar, zone and region, as they are now.
        std::function<Calendar()> calendar;
        /// For the pause between two fetches.
        std::shared_ptr<IntervalTimer> refreshTimer;
        /// For midnight.
        std::shared_ptr<WallClockAlarm> dayAlarm;
        std::shared_ptr<Connectivity> connectivity;
    };

    /// What is running, and where its pages are.
    struct Identity {
        /// Absent where it is not known; then no updates are looked for.
        std::optional<QString> currentVersion;
        QString currentBuild;
        /// Of the web application.
        QUrl webURL;
    };

    /// Fetches nothing and reads nothing.
    AppStore(Collaborators collaborators, Identity identity, QObject *parent = nullptr);
    ~AppStore() override;

    // ---- what there is to show ----

    [[nodiscard]] const AppState &state() const { return m_state; }
    [[nodiscard]] AppSettings &settings() const { return *m_with.settings; }
    [[nodiscard]] LaunchAtLoginController &launchAtLogin() const { return *m_with.launchAtLogin; }

    /// Derived from the state as of now; built anew only where something that it depends on is another.
    [[nodiscard]] const TimelineSnapshot &timeline() const;
    /// Of the amounts in the timeline: that of the profile, "USD" without one.
    [[nodiscard]] QString timelineCurrency() const;

    /// The person's calendar as it is now, and the day that it is.
    [[nodiscard]] Calendar calendar() const { return m_with.calendar(); }
    [[nodiscard]] LocalDate today() const;

    // ---- what can be done ----

    /// The first time: begins to refresh now and then, looks for updates, shows what was saved last, fetches.
    /// Every later time: fetches.
    QCoro::Task<void> start();

    /// Fetches profile and subscriptions. Who asks while a fetch is under way waits for that one.
    QCoro::Task<void> refresh();

    /// A failure is published, and told to the caller too.
    QCoro::Task<tl::expected<void, APIError>> signIn(QString email, QString password);
    /// Who asks while somebody signs out already waits for that one.
    QCoro::Task<void> signOut();
    /// Waits until everybody who asked to sign in or out by now is through.
    QCoro::Task<void> sessionSettled();

    QCoro::Task<void> cancelSubscription(QUuid id);
    QCoro::Task<void> uncancelSubscription(QUuid id);

    /// What was created is shown at once, and by then everything is fetched anew. A failure is published, and
    /// told to the caller too.
    QCoro::Task<tl::expected<void, APIError>> createSubscription(CreateSubscriptionRequest request);

    /// Up to ten matches become `templates`; of overlapping searches the last one counts.
    QCoro::Task<void> searchTemplates(QString query);

    /// What was found in the catalogue for one form is not there for the next one.
    void setQuickAddPresented(bool isPresented);

    /// Brings the reminders in step with the state and the settings.
    QCoro::Task<void> synchroniseReminders();
    QCoro::Task<void> refreshNotificationAuthorization();
    QCoro::Task<void> requestNotificationPermission();
    QCoro::Task<void> openNotificationSettings();
    QCoro::Task<void> sendTestNotification();

    enum class UpdateCheck {
        /// Not within six hours of the last one.
        WhenDue,
        Now,
    };
    QCoro::Task<void> checkForUpdates(UpdateCheck check);
    void dismissUpdate();
    QCoro::Task<void> openUpdate();

    /// Opens a page of the web application: "/login".
    QCoro::Task<void> openWebPage(QString path) const;

Q_SIGNALS:
    /// Before something that is shown changes, and when all of that has changed together.
    void aboutToChange();
    void changed();

    /// What others hold of the account that was signed in goes too: somebody has signed out, or signs in as
    /// somebody else.
    void forgotten();

private:
    using Store = QPointer<AppStore>;
    struct Fetch;
    struct BuiltTimeline;
    enum class Mutation { Cancel, Uncancel };

    // They outlive the store, which they may find gone after each co_await.

    static QCoro::Task<void> startFirst(Store store);
    static QCoro::Task<void> showSavedThenFetch(Store store);
    static QCoro::Task<void> refreshNowAndThen(Store store);
    /// Waits for the fetch that is under way, or for a new one.
    static QCoro::Task<void> joinFetch(Store store);
    /// Waits for a fetch that begins from now on.
    static QCoro::Task<void> fetchAnew(Store store);
    static QCoro::Task<void> fetch(Store store, std::shared_ptr<Fetch> fetch);
    static QCoro::Task<void> fetchForSession(Store store, quint64 session);
    /// Shows what was fetched, saves it, and brings the reminders in step.
    static QCoro::Task<void> keep(Store store, AccountData data);
    /// Signs in, lets go of what is of another account, and fetches what there is.
    static QCoro::Task<tl::expected<AccountData, APIError>> openSession(
        Store store, QString email, QString password);
    static QCoro::Task<tl::expected<void, APIError>> signInTurn(Store store, QString email, QString password);
    static QCoro::Task<void> signOutOnce(Store store, std::shared_ptr<Completion> signedOut);
    static QCoro::Task<void> signOutTurn(Store store, std::shared_ptr<APIClientProtocol> api,
        std::shared_ptr<SnapshotCache> cache, std::shared_ptr<RenewalNotifier> notifier);
    static QCoro::Task<void> mutate(Store store, QUuid id, Mutation mutation);
    static QCoro::Task<tl::expected<void, APIError>> create(Store store, CreateSubscriptionRequest request);
    static QCoro::Task<void> search(Store store, QString query);
    static QCoro::Task<void> synchronise(Store store);
    static QCoro::Task<void> learnAuthorization(Store store);
    /// False where the person, or the desktop, could not be asked.
    static QCoro::Task<bool> requestPermission(Store store);
    static QCoro::Task<void> sendTest(Store store);
    static QCoro::Task<void> lookForUpdate(Store store, UpdateCheck check);
    /// Where nobody does it already.
    static QCoro::Task<void> lookForUpdateOnce(Store store);

    /// Announces the change before and after it.
    template <typename Change> void change(const Change &apply)
    {
        Q_EMIT aboutToChange();
        apply(m_state);
        Q_EMIT changed();
    }
    void publishFetchFailure(const APIError &error);
    void publishFailure(const APIError &error);
    void publishSignInFailure(const APIError &error);
    void publishCreated(Subscription created);
    void showActionMessage(const QString &message);
    void beginSessionOf(const UserProfile &profile);
    void signOutLocally(const APIError::Unauthorized &error);
    [[nodiscard]] bool isCurrent(quint64 session) const;
    void setDayAlarm();
    void beginDay();
    void followClock();
    void followNetwork();
    [[nodiscard]] bool isTryingPatiently() const;

    Collaborators m_with;
    Identity m_identity;
    AppState m_state;
    bool m_didStart = false;
    /// The fetch that is under way.
    std::shared_ptr<Fetch> m_fetch;
    bool m_isLookingForUpdate = false;
    /// Signing in and out, one after the other.
    std::shared_ptr<Turns> m_sessionTurns = std::make_shared<Turns>();
    /// Another number for each session: what was asked for in an earlier one is not published any more.
    quint64 m_session = 0;
    bool m_isSigningOut = false;
    /// The end of the last thing asked for of a session, where that is to sign out.
    std::shared_ptr<Completion> m_signingOut;
    quint64 m_search = 0;
    bool m_wasOffline = false;
    /// When a change of the network had the data fetched last, though there had been a way before.
    std::optional<Instant> m_networkTry;
    /// Runs where such a change has to wait.
    QTimer *m_networkPause;
    mutable std::unique_ptr<BuiltTimeline> m_timeline;
};

} // namespace orbitledge
