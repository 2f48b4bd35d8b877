#include "state/AppStore.h"

#include "support/StoreDesk.h"
#include "support/TestMain.h"

#include <QSignalSpy>

using namespace orbitledge;
using namespace orbitledge::testing;
using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

APIError unauthorized(const QString &message = QString())
{
    return APIError::Unauthorized{message};
}

APIError offline()
{
    return APIError::Transport{u"The Internet connection appears to be offline."_s};
}

ReleaseManifest manifestOf(const QString &version, const QString &build = u"100"_s)
{
    ReleaseManifest manifest;
    manifest.version = version;
    manifest.build = build;
    manifest.url = QUrl(u"https://releases.example.com/new"_s);
    return manifest;
}

} // namespace

class AppStoreTest : public QObject {
    Q_OBJECT

private:
    std::optional<StoreDesk> m_desk;

    [[nodiscard]] const AppState &state() const { return m_desk->store->state(); }

    /// The older of those that wait.
    void answerFetchOfBefore() const
    {
        m_desk->api->answer(u"fetchProfile"_s);
        m_desk->api->answer(u"fetchSubscriptions"_s);
    }

    /// Both halves of a fetch.
    void answerFetch() const
    {
        QTRY_COMPARE(m_desk->api->waitingCount(u"fetchSubscriptions"_s), 1);
        m_desk->api->answer(u"fetchProfile"_s);
        m_desk->api->answer(u"fetchSubscriptions"_s);
    }

private Q_SLOTS:
    void init()
    {
        m_desk.emplace();
        m_desk->api->profile = sampleProfile();
        m_desk->api->subscriptions = sampleSnapshot(3).subscriptions;
    }
    void cleanup() { m_desk.reset(); }

    // ---- starting ----

    void shouldDoNothingBeforeItIsStarted()
    {
        m_desk->make();
        QCOMPARE(state(), AppState());
        QVERIFY(m_desk->api->calls.isEmpty());
        QVERIFY(!m_desk->refreshTimer->running);
        QCOMPARE(m_desk->releases->fetches, 0);
    }

    void shouldEndSignedOutWithoutASession()
    {
        m_desk->api->hasSession = false;
        m_desk->keepInCache(sampleSnapshot(2));
        m_desk->make();
        QCoro::waitFor(m_desk->store->start());
        QCOMPARE(state().authState, AuthState::SignedOut);
        QCOMPARE(state().refreshState, RefreshState::Idle);
        QVERIFY(state().subscriptions.isEmpty());
        QVERIFY(m_desk->api->calls.isEmpty());
        QCOMPARE(m_desk->refreshTimer->running, 15min);
    }

    void shouldShowWhatWasSavedBeforeTheNetworkAnswers()
    {
        m_desk->keepInCache(sampleSnapshot(2));
        m_desk->make();
        auto starting = m_desk->store->start();
        QTRY_COMPARE(state().authState, AuthState::SignedIn);
        QCOMPARE(state().user, sampleProfile());
        QCOMPARE(state().subscriptions.size(), 2);
        QCOMPARE(state().lastUpdatedAt, at("2026-03-18T09:00:00Z"));
        QTRY_COMPARE(state().refreshState, RefreshState::Refreshing);
        m_desk->api->subscriptions = tl::make_unexpected(offline());
        answerFetch();
        QCoro::waitFor(std::move(starting));
        QCOMPARE(state().subscriptions.size(), 2);
        QVERIFY(state().isOffline);
        QCOMPARE(state().errorMessage, u"The Internet connection appears to be offline."_s);
        QCOMPARE(state().authState, AuthState::SignedIn);
        QCOMPARE(state().refreshState, RefreshState::Idle);
    }

    void shouldStayUndecidedWhereNothingIsThereAndTheFetchFails()
    {
        m_desk->api->profile = tl::make_unexpected(offline());
        m_desk->make();
        auto starting = m_desk->store->start();
        QTRY_COMPARE(state().refreshState, RefreshState::Loading);
        answerFetch();
        QCoro::waitFor(std::move(starting));
        QCOMPARE(state().authState, AuthState::Checking);
        QVERIFY(state().isOffline);
        QVERIFY(state().errorMessage);
    }

    void shouldOnlyFetchWhenStartedAgain()
    {
        m_desk->makeSignedIn();
        QCOMPARE(m_desk->releases->fetches, 1);
        m_desk->refreshTimer->running.reset();
        auto again = m_desk->store->start();
        answerFetch();
        QCoro::waitFor(std::move(again));
        QCOMPARE(m_desk->releases->fetches, 1);
        QVERIFY(!m_desk->refreshTimer->running);
        QCOMPARE(m_desk->api->calls, (QStringList{u"fetchProfile"_s, u"fetchSubscriptions"_s}));
    }

    void shouldLearnThePermission()
    {
        m_desk->center->currentSettings.authorization = NotificationAuthorization::Denied;
        m_desk->makeSignedIn();
        QCOMPARE(state().notificationAuthorization, NotificationAuthorization::Denied);
    }

    // ---- fetching ----

    void shouldPublishAndSaveWhatItFetched()
    {
        m_desk->makeSignedIn(0);
        m_desk->clock->set(at("2026-03-18T13:00:00Z"));
        auto refreshing = m_desk->store->refresh();
        QTRY_COMPARE(state().refreshState, RefreshState::Loading);
        m_desk->api->subscriptions = sampleSnapshot(5).subscriptions;
        answerFetch();
        QCoro::waitFor(std::move(refreshing));
        QCOMPARE(state().subscriptions, sampleSnapshot(5).subscriptions);
        QCOMPARE(state().lastUpdatedAt, at("2026-03-18T13:00:00Z"));
        CacheSnapshot expected = sampleSnapshot(5);
        expected.fetchedAt = at("2026-03-18T13:00:00Z");
        QVERIFY(m_desk->cached() == expected);
    }

    void shouldShareOneFetch()
    {
        m_desk->makeSignedIn();
        auto first = m_desk->store->refresh();
        auto second = m_desk->store->refresh();
        answerFetch();
        QCoro::waitFor(std::move(first));
        QCoro::waitFor(std::move(second));
        QCOMPARE(m_desk->api->calls, (QStringList{u"fetchProfile"_s, u"fetchSubscriptions"_s}));
    }

    void shouldShowWhatItFetchedAlsoWhereItCannotBeSaved()
    {
        m_desk->makeSignedIn();
        m_desk->files->failWriting({FileError::Kind::NoSpace, u"No space left on device"_s});
        m_desk->api->subscriptions = sampleSnapshot(7).subscriptions;
        auto refreshing = m_desk->store->refresh();
        answerFetch();
        QCoro::waitFor(std::move(refreshing));
        QCOMPARE(state().subscriptions.size(), 7);
        QVERIFY(!state().errorMessage);
    }

    void shouldClassifyFailures_data()
    {
        QTest::addColumn<APIError>("error");
        QTest::addColumn<bool>("isOffline");
        QTest::newRow("transport") << offline() << true;
        QTest::newRow("forbidden") << APIError(APIError::Forbidden{u"No"_s}) << false;
        QTest::newRow("a page of a hotel's network")
            << APIError(APIError::Decoding{u"The data couldn\u2019t be read"_s}) << false;
        QTest::newRow("server error") << APIError(APIError::RequestFailed{500, u"Broken"_s}) << false;
        QTest::newRow("keyring") << APIError(APIError::SessionStorage{u"Locked"_s}) << false;
    }

    void shouldClassifyFailures()
    {
        QFETCH(const APIError, error);
        QFETCH(const bool, isOffline);
        m_desk->makeSignedIn(3);
        const auto cached = m_desk->cached();
        m_desk->api->profile = tl::make_unexpected(error);
        auto refreshing = m_desk->store->refresh();
        answerFetch();
        QCoro::waitFor(std::move(refreshing));
        QCOMPARE(state().isOffline, isOffline);
        QCOMPARE(state().errorMessage, error.errorDescription());
        QCOMPARE(state().authState, AuthState::SignedIn);
        QCOMPARE(state().refreshState, RefreshState::Idle);
        QCOMPARE(state().subscriptions.size(), 3);
        QVERIFY(m_desk->cached() == cached);
        // The next good one clears it.
        m_desk->api->profile = sampleProfile();
        auto again = m_desk->store->refresh();
        QTRY_VERIFY(!state().errorMessage);
        answerFetch();
        QCoro::waitFor(std::move(again));
        QVERIFY(!state().isOffline);
    }

    void shouldSignOutWhereTheSessionIsOver_data()
    {
        QTest::addColumn<QString>("message");
        QTest::addColumn<QString>("shown");
        QTest::newRow("without a message") << QString() << u"Your session expired. Please sign in again."_s;
        QTest::newRow("with one") << u"Who are you?"_s << u"Who are you?"_s;
    }

    void shouldSignOutWhereTheSessionIsOver()
    {
        QFETCH(const QString, message);
        QFETCH(const QString, shown);
        m_desk->makeSignedIn(3);
        const auto updated = state().lastUpdatedAt;
        m_desk->api->profile = tl::make_unexpected(unauthorized(message));
        auto refreshing = m_desk->store->refresh();
        answerFetch();
        QCoro::waitFor(std::move(refreshing));
        AppState expected;
        expected.authState = AuthState::SignedOut;
        expected.errorMessage = shown;
        expected.lastUpdatedAt = updated;
        QCOMPARE(state(), expected);
        // Nobody is asked at the service.
        QVERIFY(!m_desk->api->calls.contains(u"signOut"_s));
    }

    // ---- from time to time ----

    void shouldFetchAgainAfterTheInterval()
    {
        m_desk->settings->setRefreshInterval(RefreshInterval::OneHour);
        m_desk->makeSignedIn();
        QCOMPARE(m_desk->refreshTimer->running, 60min);
        // A changed interval counts from the next pause on.
        m_desk->settings->setRefreshInterval(RefreshInterval::FiveMinutes);
        QCOMPARE(m_desk->refreshTimer->running, 60min);
        m_desk->refreshTimer->elapse();
        answerFetch();
        QTRY_COMPARE(m_desk->refreshTimer->running, 5min);
        m_desk->refreshTimer->elapse();
        answerFetch();
        QTRY_COMPARE(m_desk->refreshTimer->running, 5min);
        QCOMPARE(m_desk->api->calls.count(u"fetchProfile"_s), 2);
    }

    void shouldFetchOnceWhenTheNetworkComesBack()
    {
        m_desk->makeSignedIn();
        m_desk->connectivity->setOffline(true);
        QVERIFY(m_desk->api->calls.isEmpty());
        m_desk->connectivity->setOffline(false);
        m_desk->connectivity->setOffline(false);
        m_desk->connectivity->setOffline(false);
        answerFetch();
        QTRY_COMPARE(state().refreshState, RefreshState::Idle);
        QCOMPARE(m_desk->api->calls.count(u"fetchProfile"_s), 1);
        m_desk->connectivity->setOffline(false);
        QCOMPARE(m_desk->api->calls.count(u"fetchProfile"_s), 1);
    }

    void shouldNotFetchWithEachChangeOfANetworkThatReachesNobody()
    {
        m_desk->makeSignedIn();
        m_desk->api->isQuick = true;
        m_desk->api->profile = tl::make_unexpected(APIError(APIError::Transport{u"Offline."_s}));
        QCoro::waitFor(m_desk->store->refresh());
        QVERIFY(state().isOffline);
        m_desk->api->calls.clear();
        const auto fetches = [this] { return m_desk->api->calls.count(u"fetchProfile"_s); };
        const auto change = [&] {
            for (int i = 0; i < 20; ++i) {
                m_desk->connectivity->setOffline(false);
                m_desk->settle();
            }
        };
        change();
        QCOMPARE(fetches(), 1);
        m_desk->clock->set(later(m_desk->clock->now(), 59 * second));
        change();
        QCOMPARE(fetches(), 1);
        m_desk->clock->set(later(m_desk->clock->now(), second));
        change();
        QCOMPARE(fetches(), 2);
        // A clock that is set back ends the patience.
        m_desk->clock->set(later(m_desk->clock->now(), -hour));
        change();
        QCOMPARE(fetches(), 3);
        // A way that comes back is another matter, and what comes soon after it may be what it lacked.
        m_desk->clock->set(later(m_desk->clock->now(), minute));
        m_desk->connectivity->setOffline(true);
        m_desk->connectivity->setOffline(false);
        m_desk->settle();
        QCOMPARE(fetches(), 4);
        change();
        QCOMPARE(fetches(), 5);
        // What had to wait is not forgotten.
        auto *const pause = m_desk->store->findChild<QTimer *>();
        QVERIFY(pause && pause->isActive());
        QCOMPARE(pause->intervalAsDuration(), 1min);
        m_desk->clock->set(later(m_desk->clock->now(), minute));
        pause->start(0);
        QTRY_COMPARE(fetches(), 6);
        m_desk->settle();
        QVERIFY(!pause->isActive());
    }

    void shouldFetchWhateverTheNetworkClaims()
    {
        m_desk->makeSignedIn();
        m_desk->connectivity->setOffline(true);
        auto refreshing = m_desk->store->refresh();
        answerFetch();
        QCoro::waitFor(std::move(refreshing));
        QCOMPARE(m_desk->api->calls.count(u"fetchProfile"_s), 1);
    }

    void shouldFetchOnceAfterSuspend()
    {
        m_desk->makeSignedIn();
        m_desk->dayAlarm->moveTo(at("2026-03-18T20:00:00Z"), FakeWallClockAlarm::Move::Set);
        Q_EMIT m_desk->dayAlarm->clockChanged();
        m_desk->connectivity->setOffline(true);
        m_desk->connectivity->setOffline(false);
        answerFetch();
        QTRY_COMPARE(state().lastUpdatedAt, at("2026-03-18T20:00:00Z"));
        QCOMPARE(m_desk->api->calls.count(u"fetchProfile"_s), 1);
    }

    // ---- the timeline ----

    void shouldBuildTheTimelineOnlyWhereSomethingChanged()
    {
        m_desk->makeSignedIn(3);
        const auto *const first = m_desk->store->timeline().sections.constData();
        QVERIFY(first != nullptr);
        m_desk->clock->set(at("2026-03-18T18:00:00Z"));
        QCOMPARE(m_desk->store->timeline().sections.constData(), first);
        QCOMPARE(m_desk->store->timeline().activeCount, 3);
        // Another day, another zone, another list.
        m_desk->clock->set(at("2026-03-19T18:00:00Z"));
        QVERIFY(m_desk->store->timeline().week != TimelineSnapshot().week);
        const auto badge = m_desk->store->timeline().badgeCount;
        QCOMPARE(badge, 0); // all of them were due on the 18th
    }

    void shouldNotBuildTheTimelineMoreOftenThanWhatItShowsChanges()
    {
        m_desk->makeSignedIn(3);
        // A view reads it at each change. A new one is built before the one before goes.
        const auto *shown = m_desk->store->timeline().sections.constData();
        int built = 0;
        connect(m_desk->store.get(), &AppStore::changed, this, [&] {
            const auto *const now = m_desk->store->timeline().sections.constData();
            built += std::exchange(shown, now) == now ? 0 : 1;
        });
        QSignalSpy changed(m_desk->store.get(), &AppStore::changed);
        m_desk->api->isQuick = true;
        m_desk->settings->setNotificationLeadDays(5);
        m_desk->store->setQuickAddPresented(true);
        QCoro::waitFor(m_desk->store->searchTemplates(u"abc"_s));
        QCoro::waitFor(m_desk->store->synchroniseReminders());
        m_desk->api->profile = tl::make_unexpected(offline());
        QCoro::waitFor(m_desk->store->refresh());
        QVERIFY(changed.size() >= 6);
        QCOMPARE(built, 0);

        m_desk->api->profile = sampleProfile();
        m_desk->api->subscriptions = sampleSnapshot(4).subscriptions;
        QCoro::waitFor(m_desk->store->refresh());
        QCOMPARE(built, 1);
        m_desk->dayAlarm->moveTo(at("2026-03-18T23:00:00Z"));
        QCOMPARE(built, 2);
    }

    void shouldCountInDollarsWithoutAProfile()
    {
        m_desk->make();
        QCOMPARE(m_desk->store->timelineCurrency(), u"USD"_s);
        m_desk->makeSignedIn();
        QCOMPARE(m_desk->store->timelineCurrency(), u"EUR"_s);
    }

    void shouldAnnounceTheNextDay()
    {
        m_desk->makeSignedIn();
        QCOMPARE(m_desk->dayAlarm->target, at("2026-03-18T23:00:00Z")); // midnight in Berlin
        QSignalSpy changed(m_desk->store.get(), &AppStore::changed);
        m_desk->dayAlarm->moveTo(at("2026-03-18T23:00:00Z"));
        QCOMPARE(changed.size(), 1);
        QCOMPARE(m_desk->dayAlarm->target, at("2026-03-19T23:00:00Z"));
        QVERIFY(m_desk->api->calls.isEmpty());
    }

    void shouldPlanRemindersAnewInAnotherZone()
    {
        m_desk->settings->setNotificationsEnabled(true);
        m_desk->makeSignedIn();
        m_desk->center->calls.clear();
        m_desk->zone = "Asia/Tokyo";
        QSignalSpy changed(m_desk->store.get(), &AppStore::changed);
        m_desk->dayAlarm->moveTo(at("2026-03-18T12:30:00Z"), FakeWallClockAlarm::Move::Set);
        QVERIFY(changed.size() >= 1);
        QCOMPARE(m_desk->dayAlarm->target, at("2026-03-18T15:00:00Z"));
        QTRY_VERIFY(m_desk->center->calls.contains(u"save"_s));
    }

    // ---- announcing ----

    void shouldAnnounceBeforeAndAfterEachChangeAsAWhole()
    {
        m_desk->make();
        AppState before;
        AppState seen;
        int depth = 0;
        connect(m_desk->store.get(), &AppStore::aboutToChange, this, [&] {
            QCOMPARE(state(), seen); // nothing changed unannounced
            QCOMPARE(++depth, 1);
        });
        connect(m_desk->store.get(), &AppStore::changed, this, [&] {
            QCOMPARE(--depth, 0);
            seen = state();
            // Never the new list with the old state.
            QCOMPARE(seen.authState == AuthState::SignedIn, seen.user.has_value());
            if (!seen.subscriptions.isEmpty())
                QVERIFY(seen.lastUpdatedAt);
        });
        auto starting = m_desk->store->start();
        answerFetch();
        QCoro::waitFor(std::move(starting));
        QCOMPARE(seen.subscriptions.size(), 3);
        m_desk->api->profile = tl::make_unexpected(unauthorized());
        auto refreshing = m_desk->store->refresh();
        answerFetch();
        QCoro::waitFor(std::move(refreshing));
        QCOMPARE(seen.authState, AuthState::SignedOut);
    }

    void shouldAnnounceChangesOfTheSettings()
    {
        m_desk->make();
        QSignalSpy about(m_desk->store.get(), &AppStore::aboutToChange);
        QSignalSpy changed(m_desk->store.get(), &AppStore::changed);
        m_desk->settings->setShowMenuBadge(false);
        QCOMPARE(about.size(), 1);
        QTRY_COMPARE(changed.size(), 1);
    }

    // ---- signing in and out ----

    void shouldSignIn()
    {
        m_desk->api->hasSession = false;
        m_desk->settings->setNotificationsEnabled(true);
        m_desk->make();
        QCoro::waitFor(m_desk->store->start());
        auto signingIn = m_desk->store->signIn(u"ada@example.com"_s, u"secret"_s);
        QTRY_COMPARE(m_desk->api->waiting(), QStringList{u"signIn"_s});
        m_desk->api->answer(u"signIn"_s);
        QTRY_COMPARE(m_desk->api->waiting(), QStringList{u"fetchSubscriptions"_s});
        m_desk->api->answer(u"fetchSubscriptions"_s);
        QVERIFY(QCoro::waitFor(std::move(signingIn)));
        QCOMPARE(state().authState, AuthState::SignedIn);
        QCOMPARE(state().user, sampleProfile());
        QCOMPARE(state().subscriptions.size(), 3);
        QCOMPARE(state().lastUpdatedAt, m_desk->clock->now());
        QVERIFY(m_desk->cached());
        QVERIFY(m_desk->center->calls.contains(u"save"_s));
    }

    void shouldTellWhySigningInFailed_data()
    {
        QTest::addColumn<QString>("failing");
        QTest::newRow("the password is wrong") << u"signIn"_s;
        QTest::newRow("the list cannot be had") << u"list"_s;
    }

    void shouldTellWhySigningInFailed()
    {
        QFETCH(const QString, failing);
        m_desk->api->isQuick = true;
        m_desk->api->hasSession = false;
        if (failing == u"signIn")
            m_desk->api->profile = tl::make_unexpected(unauthorized(u"Wrong."_s));
        else
            m_desk->api->subscriptions = tl::make_unexpected(APIError(APIError::Forbidden{u"Wrong."_s}));
        m_desk->make();
        const auto result = QCoro::waitFor(m_desk->store->signIn(u"a@b"_s, u"c"_s));
        QVERIFY(!result);
        QCOMPARE(result.error().errorDescription(), u"Wrong."_s);
        QCOMPARE(state().errorMessage, u"Wrong."_s);
        QCOMPARE(state().authState, AuthState::SignedOut);
        QVERIFY(!state().user);
        QVERIFY(!m_desk->cached());
    }

    void shouldTellNothingOfEarlierAttemptsOnceSomebodyIsIn()
    {
        m_desk->api->isQuick = true;
        m_desk->api->hasSession = false;
        m_desk->api->profile = tl::make_unexpected(unauthorized(u"Wrong."_s));
        m_desk->make();
        QVERIFY(!QCoro::waitFor(m_desk->store->signIn(u"a@b"_s, u"c"_s)));
        QVERIFY(state().errorMessage);
        m_desk->api->profile = sampleProfile();
        QVERIFY(QCoro::waitFor(m_desk->store->signIn(u"a@b"_s, u"d"_s)));
        QVERIFY(!state().errorMessage);
    }

    void shouldNotKeepAnotherAccountsData()
    {
        m_desk->api->isQuick = true;
        CacheSnapshot other = sampleSnapshot(4);
        other.profile.id = QUuid::createUuid();
        m_desk->keepInCache(other);
        m_desk->api->subscriptions = tl::make_unexpected(offline());
        m_desk->make();
        const QSignalSpy forgotten(m_desk->store.get(), &AppStore::forgotten);
        QVERIFY(!QCoro::waitFor(m_desk->store->signIn(u"a@b"_s, u"c"_s)));
        QVERIFY(!m_desk->cached());
        QCOMPARE(forgotten.size(), 1);
    }

    void shouldForgetNothingOfWhoSignsInAgain()
    {
        m_desk->makeSignedIn(3);
        m_desk->api->isQuick = true;
        const QSignalSpy forgotten(m_desk->store.get(), &AppStore::forgotten);
        m_desk->api->hasSession = false; // it was over by itself
        QCoro::waitFor(m_desk->store->refresh());
        QCOMPARE(state().authState, AuthState::SignedOut);
        QVERIFY(QCoro::waitFor(m_desk->store->signIn(u"a@b"_s, u"c"_s)));
        QVERIFY(forgotten.isEmpty());
    }

    void shouldNotShowAnotherAccountsDataWhereTheListCannotBeHad()
    {
        m_desk->makeSignedIn(3);
        m_desk->api->hasSession = false; // it was over by itself
        m_desk->api->isQuick = true;
        QCoro::waitFor(m_desk->store->refresh());
        QCOMPARE(state().authState, AuthState::SignedOut);
        UserProfile other = sampleProfile();
        other.id = QUuid::createUuid();
        m_desk->api->profile = other;
        m_desk->api->subscriptions = tl::make_unexpected(offline());
        QVERIFY(!QCoro::waitFor(m_desk->store->signIn(u"other@example.com"_s, u"x"_s)));
        // There is a session now, though nothing to show for it.
        QCoro::waitFor(m_desk->store->refresh());
        QVERIFY(!state().user);
        QVERIFY(state().subscriptions.isEmpty());
        QVERIFY(!state().lastUpdatedAt);
        QCOMPARE(state().authState, AuthState::SignedOut);
        QVERIFY(!m_desk->cached());
    }

    void shouldNotSaveForTheNewSessionWhatWasAskedForInTheOldOne()
    {
        // The refresh is asked for after signing in is, and before the service has answered that.
        m_desk->makeSignedIn(3);
        auto signingIn = m_desk->store->signIn(u"other@example.com"_s, u"x"_s);
        QTRY_COMPARE(m_desk->api->waitingCount(u"signIn"_s), 1);
        auto refreshing = m_desk->store->refresh();
        QTRY_COMPARE(m_desk->api->waitingCount(u"fetchSubscriptions"_s), 1);
        UserProfile other = sampleProfile();
        other.id = QUuid::createUuid();
        m_desk->api->profile = other;
        m_desk->api->answer(u"signIn"_s);
        QTRY_COMPARE(m_desk->api->waitingCount(u"fetchSubscriptions"_s), 2);
        m_desk->api->profile = sampleProfile();
        answerFetchOfBefore();
        QCoro::waitFor(std::move(refreshing));
        QVERIFY(!state().user);
        QVERIFY(!m_desk->cached());
        m_desk->api->subscriptions = tl::make_unexpected(offline());
        m_desk->api->answer(u"fetchSubscriptions"_s);
        QVERIFY(!QCoro::waitFor(std::move(signingIn)));
        QVERIFY(!state().user);
        QVERIFY(!m_desk->cached());
    }

    void shouldSignOutInOrder()
    {
        m_desk->settings->setNotificationsEnabled(true);
        m_desk->makeSignedIn();
        m_desk->store->setQuickAddPresented(true);
        const QSignalSpy forgotten(m_desk->store.get(), &AppStore::forgotten);
        auto signingOut = m_desk->store->signOut();
        QTRY_COMPARE(m_desk->api->waiting(), QStringList{u"signOut"_s});
        QVERIFY(m_desk->cached());
        QVERIFY(state().user);
        QVERIFY(forgotten.isEmpty());
        m_desk->api->answer(u"signOut"_s);
        QCoro::waitFor(std::move(signingOut));
        QCOMPARE(forgotten.size(), 1);
        AppState expected;
        expected.authState = AuthState::SignedOut;
        expected.isQuickAddPresented = true;
        QCOMPARE(state(), expected);
        QVERIFY(!m_desk->cached());
        QCOMPARE(m_desk->center->calls.last(), u"forget orbitledge.renewal."_s);
        QVERIFY(m_desk->settings->notificationsEnabled());
    }

    void shouldSignOutOnceHoweverOftenItIsAskedTo()
    {
        m_desk->makeSignedIn();
        auto first = m_desk->store->signOut();
        auto second = m_desk->store->signOut();
        QTRY_COMPARE(m_desk->api->waitingCount(u"signOut"_s), 1);
        // Who signs in after that, and out again, means a session of its own.
        auto signingIn = m_desk->store->signIn(u"a@b"_s, u"p"_s);
        auto third = m_desk->store->signOut();
        auto settled = m_desk->store->sessionSettled();
        m_desk->api->isQuick = true;
        m_desk->api->answerAll();
        QCoro::waitFor(std::move(second));
        QCoro::waitFor(std::move(first));
        (void)QCoro::waitFor(std::move(signingIn));
        QVERIFY(!settled.isReady());
        QCoro::waitFor(std::move(third));
        QCoro::waitFor(std::move(settled));
        QCOMPARE(m_desk->api->calls.count(u"signOut"_s), 2);
        QCOMPARE(state().authState, AuthState::SignedOut);
    }

    void shouldShowNothingOfWhoWasSignedInAfterAnotherWasRefused()
    {
        m_desk->makeSignedIn();
        QVERIFY(state().user);
        m_desk->api->isQuick = true;
        m_desk->api->profile = tl::make_unexpected(APIError(APIError::Unauthorized{u"Wrong."_s}));
        QVERIFY(!QCoro::waitFor(m_desk->store->signIn(u"a@b"_s, u"p"_s)));
        QVERIFY(!state().user);
        QVERIFY(state().subscriptions.isEmpty());
        QCOMPARE(state().authState, AuthState::SignedOut);
        QCOMPARE(state().errorMessage, u"Wrong."_s);
    }

    void shouldKeepTheOfferOfAnUpdateWhenSigningOut()
    {
        m_desk->releases->manifest = manifestOf(u"2.0.0"_s);
        m_desk->makeSignedIn();
        QTRY_VERIFY(state().availableUpdate);
        m_desk->api->isQuick = true;
        QCoro::waitFor(m_desk->store->signOut());
        QVERIFY(state().availableUpdate);
    }

    void shouldNotBringBackWhoSignedOutDuringAFetch_data()
    {
        QTest::addColumn<bool>("fetchEndsFirst");
        QTest::newRow("the fetch ends after it") << false;
        QTest::newRow("the fetch ends within it") << true;
    }

    void shouldNotBringBackWhoSignedOutDuringAFetch()
    {
        QFETCH(const bool, fetchEndsFirst);
        m_desk->makeSignedIn();
        auto refreshing = m_desk->store->refresh();
        QTRY_COMPARE(m_desk->api->waitingCount(u"fetchSubscriptions"_s), 1);
        auto signingOut = m_desk->store->signOut();
        QTRY_COMPARE(m_desk->api->waitingCount(u"signOut"_s), 1);
        if (fetchEndsFirst) {
            answerFetch();
            QCoro::waitFor(std::move(refreshing));
            m_desk->api->answer(u"signOut"_s);
            QCoro::waitFor(std::move(signingOut));
        } else {
            m_desk->api->answer(u"signOut"_s);
            QCoro::waitFor(std::move(signingOut));
            QCOMPARE(state().authState, AuthState::SignedOut);
            answerFetch();
            QCoro::waitFor(std::move(refreshing));
        }
        AppState expected;
        expected.authState = AuthState::SignedOut;
        QCOMPARE(state(), expected);
        QVERIFY(!m_desk->cached());
    }

    void shouldNotMixSessions()
    {
        // Somebody else signs in while a fetch of the session before is under way.
        m_desk->makeSignedIn(3);
        auto refreshing = m_desk->store->refresh();
        QTRY_COMPARE(m_desk->api->waitingCount(u"fetchSubscriptions"_s), 1);
        UserProfile other = sampleProfile();
        other.id = QUuid::createUuid();
        m_desk->api->profile = other;
        m_desk->api->subscriptions = sampleSnapshot(1).subscriptions;
        auto signingIn = m_desk->store->signIn(u"other@example.com"_s, u"x"_s);
        QTRY_COMPARE(m_desk->api->waitingCount(u"signIn"_s), 1);
        m_desk->api->answer(u"signIn"_s);
        QTRY_COMPARE(m_desk->api->waitingCount(u"fetchSubscriptions"_s), 2);
        m_desk->api->answerAt(m_desk->api->waiting().size() - 1);
        QVERIFY(QCoro::waitFor(std::move(signingIn)));
        QCOMPARE(state().user, other);
        // The old answer, which is of somebody else.
        m_desk->api->profile = sampleProfile();
        m_desk->api->subscriptions = sampleSnapshot(3).subscriptions;
        answerFetch();
        QCoro::waitFor(std::move(refreshing));
        QCOMPARE(state().user, other);
        QCOMPARE(state().subscriptions.size(), 1);
        QCOMPARE(m_desk->cached()->profile, other);
    }

    void shouldNotBringBackAnybodyWhileItSignsOut()
    {
        // A fetch that begins and ends after the saved data were removed, and before the rest is.
        m_desk->makeSignedIn();
        m_desk->center->isSlowToForget = true;
        auto signingOut = m_desk->store->signOut();
        m_desk->api->answer(u"signOut"_s);
        QTRY_VERIFY(m_desk->center->isForgetting());
        QVERIFY(!m_desk->cached());
        m_desk->api->hasSession = true; // as if it could not be removed
        auto refreshing = m_desk->store->refresh();
        QTRY_VERIFY(!m_desk->api->waiting().isEmpty() || refreshing.isReady());
        m_desk->api->answerAll();
        QCoro::waitFor(std::move(refreshing));
        m_desk->center->forgetNow();
        QCoro::waitFor(std::move(signingOut));
        QCOMPARE(state().authState, AuthState::SignedOut);
        QVERIFY(!state().user);
        QVERIFY(!m_desk->cached());
    }

    void shouldNotBringBackRemindersWhileItSignsOut()
    {
        m_desk->settings->setNotificationsEnabled(true);
        m_desk->makeSignedIn(3);
        QCOMPARE(m_desk->center->requests.size(), 3);
        m_desk->center->isSlowToForget = true;
        auto signingOut = m_desk->store->signOut();
        m_desk->api->answer(u"signOut"_s);
        QTRY_VERIFY(m_desk->center->isForgetting());
        // Behind the removal of the reminders, and before the rest is removed.
        auto synchronising = m_desk->store->synchroniseReminders();
        m_desk->center->forgetNow();
        QCoro::waitFor(std::move(signingOut));
        QCoro::waitFor(std::move(synchronising));
        QVERIFY(m_desk->center->requests.isEmpty());
    }

    void shouldFetchForTheNewSessionWhereAnOlderFetchIsUnderWay()
    {
        m_desk->makeSignedIn();
        auto refreshing = m_desk->store->refresh();
        QTRY_COMPARE(m_desk->api->waitingCount(u"fetchProfile"_s), 1);
        auto signingIn = m_desk->store->signIn(u"a@b"_s, u"c"_s);
        m_desk->api->answer(u"signIn"_s);
        QTRY_COMPARE(m_desk->api->waitingCount(u"fetchSubscriptions"_s), 2);
        m_desk->api->answerAt(m_desk->api->waiting().size() - 1);
        QVERIFY(QCoro::waitFor(std::move(signingIn)));
        auto again = m_desk->store->refresh();
        QCOMPARE(m_desk->api->waitingCount(u"fetchProfile"_s), 1); // one at a time
        answerFetch();
        QCoro::waitFor(std::move(refreshing));
        m_desk->clock->set(at("2026-03-18T14:00:00Z"));
        answerFetch();
        QCoro::waitFor(std::move(again));
        QCOMPARE(state().lastUpdatedAt, at("2026-03-18T14:00:00Z"));
    }

    void shouldSignOutAfterSigningInThatIsUnderWay()
    {
        m_desk->api->hasSession = false;
        m_desk->make();
        auto signingIn = m_desk->store->signIn(u"a@b"_s, u"c"_s);
        auto signingOut = m_desk->store->signOut();
        m_desk->api->answer(u"signIn"_s);
        QTRY_COMPARE(m_desk->api->waiting(), QStringList{u"fetchSubscriptions"_s});
        m_desk->api->answer(u"fetchSubscriptions"_s);
        QVERIFY(QCoro::waitFor(std::move(signingIn)));
        QTRY_COMPARE(m_desk->api->waiting(), QStringList{u"signOut"_s});
        m_desk->api->answer(u"signOut"_s);
        QCoro::waitFor(std::move(signingOut));
        QCOMPARE(state().authState, AuthState::SignedOut);
        QVERIFY(!m_desk->api->hasSession);
        QVERIFY(!m_desk->cached());
    }

    // ---- changing subscriptions ----

    void shouldFetchAfterCancelling_data()
    {
        QTest::addColumn<bool>("isUndone");
        QTest::newRow("cancel") << false;
        QTest::newRow("take back") << true;
    }

    void shouldFetchAfterCancelling()
    {
        QFETCH(const bool, isUndone);
        m_desk->makeSignedIn(3);
        const QUuid id = sampleSubscription(1).id;
        auto mutating
            = isUndone ? m_desk->store->uncancelSubscription(id) : m_desk->store->cancelSubscription(id);
        const QString name = isUndone ? u"uncancel"_s : u"cancel"_s;
        QTRY_COMPARE(m_desk->api->waiting(), QStringList{name});
        m_desk->api->answer(name);
        QTRY_COMPARE(m_desk->api->waitingCount(u"fetchSubscriptions"_s), 1);
        m_desk->api->subscriptions = sampleSnapshot(2).subscriptions;
        answerFetch();
        QCoro::waitFor(std::move(mutating));
        QCOMPARE(state().subscriptions.size(), 2);
    }

    void shouldNotTakeAnEarlierFetchForTheOneAfterAMutation()
    {
        m_desk->makeSignedIn(3);
        auto refreshing = m_desk->store->refresh();
        QTRY_COMPARE(m_desk->api->waitingCount(u"fetchSubscriptions"_s), 1);
        auto mutating = m_desk->store->cancelSubscription(sampleSubscription(1).id);
        m_desk->api->answer(u"cancel"_s);
        answerFetch(); // as it was before the cancellation
        QCoro::waitFor(std::move(refreshing));
        QCOMPARE(state().subscriptions.size(), 3);
        QTRY_COMPARE(m_desk->api->waitingCount(u"fetchSubscriptions"_s), 1);
        m_desk->api->subscriptions = sampleSnapshot(2).subscriptions;
        answerFetch();
        QCoro::waitFor(std::move(mutating));
        QCOMPARE(state().subscriptions.size(), 2);
    }

    void shouldFetchOnceForSeveralMutations()
    {
        m_desk->makeSignedIn(3);
        auto refreshing = m_desk->store->refresh();
        QTRY_COMPARE(m_desk->api->waitingCount(u"fetchSubscriptions"_s), 1);
        auto first = m_desk->store->cancelSubscription(sampleSubscription(1).id);
        auto second = m_desk->store->cancelSubscription(sampleSubscription(2).id);
        m_desk->api->answer(u"cancel"_s);
        m_desk->api->answer(u"cancel"_s);
        answerFetch();
        QCoro::waitFor(std::move(refreshing));
        answerFetch();
        QCoro::waitFor(std::move(first));
        QCoro::waitFor(std::move(second));
        QCOMPARE(m_desk->api->calls.count(u"fetchProfile"_s), 2);
        QVERIFY(m_desk->api->waiting().isEmpty());
    }

    void shouldLeaveTheListWhereCancellingFails()
    {
        m_desk->makeSignedIn(3);
        m_desk->api->isQuick = true;
        m_desk->api->subscription = tl::make_unexpected(APIError(APIError::Forbidden{u"Not yours."_s}));
        QCoro::waitFor(m_desk->store->cancelSubscription(sampleSubscription(1).id));
        QCOMPARE(state().errorMessage, u"Not yours."_s);
        QCOMPARE(state().subscriptions.size(), 3);
        QCOMPARE(m_desk->api->calls, QStringList{u"cancel"_s});
    }

    void shouldSignOutWhereTheSessionIsOverInAMutation()
    {
        m_desk->makeSignedIn(3);
        auto refreshing = m_desk->store->refresh();
        QTRY_COMPARE(m_desk->api->waitingCount(u"fetchSubscriptions"_s), 1);
        auto first = m_desk->store->cancelSubscription(sampleSubscription(1).id);
        auto second = m_desk->store->uncancelSubscription(sampleSubscription(2).id);
        m_desk->api->subscription = tl::make_unexpected(unauthorized());
        m_desk->api->answer(u"cancel"_s);
        QCoro::waitFor(std::move(first));
        QCOMPARE(state().authState, AuthState::SignedOut);
        m_desk->api->answer(u"uncancel"_s);
        answerFetch();
        QCoro::waitFor(std::move(second));
        QCoro::waitFor(std::move(refreshing));
        QCOMPARE(state().authState, AuthState::SignedOut);
        QVERIFY(state().subscriptions.isEmpty());
        QCOMPARE(state().errorMessage, u"Your session expired. Please sign in again."_s);
        QCOMPARE(state().refreshState, RefreshState::Idle);
    }

    // ---- creating ----

    void shouldShowWhatWasCreatedBeforeTheFetch()
    {
        m_desk->makeSignedIn(3);
        const Subscription created = sampleSubscription(7);
        m_desk->api->subscription = created;
        CreateSubscriptionRequest request;
        request.name = u"Northlight Video"_s;
        auto creating = m_desk->store->createSubscription(request);
        QTRY_COMPARE(m_desk->api->waiting(), QStringList{u"create"_s});
        QCOMPARE(m_desk->api->requests, QList{request});
        QCOMPARE(state().subscriptions.size(), 3);
        m_desk->api->answer(u"create"_s);
        QTRY_COMPARE(m_desk->api->waitingCount(u"fetchSubscriptions"_s), 1);
        QCOMPARE(state().subscriptions.size(), 4);
        QCOMPARE(state().subscriptions.last(), created);
        QCOMPARE(state().refreshState, RefreshState::Refreshing);
        m_desk->api->subscriptions = sampleSnapshot(5).subscriptions;
        answerFetch();
        QVERIFY(QCoro::waitFor(std::move(creating)));
        QCOMPARE(state().subscriptions.size(), 5);
    }

    void shouldNotShowWhatWasCreatedTwice()
    {
        m_desk->makeSignedIn(3);
        Subscription created = sampleSubscription(1);
        created.name = u"As it was created"_s;
        m_desk->api->subscription = created;
        auto creating = m_desk->store->createSubscription({});
        m_desk->api->answer(u"create"_s);
        QTRY_COMPARE(m_desk->api->waitingCount(u"fetchSubscriptions"_s), 1);
        QCOMPARE(state().subscriptions.size(), 3);
        QCOMPARE(state().subscriptions[1], created);
        answerFetch();
        QVERIFY(QCoro::waitFor(std::move(creating)));
    }

    void shouldNotTakeAnEarlierFetchForTheOneAfterACreation()
    {
        m_desk->makeSignedIn(3);
        auto refreshing = m_desk->store->refresh();
        QTRY_COMPARE(m_desk->api->waitingCount(u"fetchSubscriptions"_s), 1);
        m_desk->api->subscription = sampleSubscription(7);
        auto creating = m_desk->store->createSubscription({});
        m_desk->api->answer(u"create"_s);
        answerFetch(); // as it was before
        QCoro::waitFor(std::move(refreshing));
        m_desk->api->subscriptions = sampleSnapshot(4).subscriptions;
        answerFetch();
        QVERIFY(QCoro::waitFor(std::move(creating)));
        QCOMPARE(state().subscriptions.size(), 4);
    }

    void shouldKeepWhatWasCreatedWhereTheFetchFails()
    {
        m_desk->makeSignedIn(3);
        m_desk->api->subscription = sampleSubscription(7);
        m_desk->api->subscriptions = tl::make_unexpected(offline());
        m_desk->api->isQuick = true;
        QVERIFY(QCoro::waitFor(m_desk->store->createSubscription({})));
        QCOMPARE(state().subscriptions.size(), 4);
        QVERIFY(state().isOffline);
    }

    void shouldSayWhyNothingWasCreated()
    {
        m_desk->makeSignedIn(3);
        m_desk->api->subscription = tl::make_unexpected(APIError(APIError::Forbidden{u"Too many."_s}));
        auto creating = m_desk->store->createSubscription({});
        m_desk->api->answer(u"create"_s);
        const auto result = QCoro::waitFor(std::move(creating));
        QVERIFY(!result);
        QVERIFY(result.error().is<APIError::Forbidden>());
        QCOMPARE(state().errorMessage, u"Too many."_s);
        QCOMPARE(state().subscriptions.size(), 3);
        QCOMPARE(m_desk->api->calls, QStringList{u"create"_s});

        // And not any more while it is tried again.
        auto again = m_desk->store->createSubscription({});
        QVERIFY(!state().errorMessage);
        m_desk->api->answer(u"create"_s);
        QVERIFY(!QCoro::waitFor(std::move(again)));
    }

    void shouldSignOutWhereTheSessionIsOverInACreation()
    {
        m_desk->makeSignedIn(3);
        m_desk->api->subscription = tl::make_unexpected(unauthorized());
        m_desk->api->isQuick = true;
        QVERIFY(!QCoro::waitFor(m_desk->store->createSubscription({})));
        QCOMPARE(state().authState, AuthState::SignedOut);
        QCOMPARE(state().errorMessage, u"Your session expired. Please sign in again."_s);
    }

    void shouldNotShowInAnotherSessionWhatWasCreatedInTheOneBefore_data()
    {
        QTest::addColumn<bool>("succeeds");
        QTest::newRow("created") << true;
        QTest::newRow("failed") << false;
    }
    void shouldNotShowInAnotherSessionWhatWasCreatedInTheOneBefore()
    {
        QFETCH(const bool, succeeds);
        m_desk->makeSignedIn(3);
        if (succeeds)
            m_desk->api->subscription = sampleSubscription(7);
        else
            m_desk->api->subscription = tl::make_unexpected(APIError(APIError::Forbidden{u"No."_s}));
        auto creating = m_desk->store->createSubscription({});
        auto signingOut = m_desk->store->signOut();
        QTRY_COMPARE(m_desk->api->waiting(), (QStringList{u"create"_s, u"signOut"_s}));
        m_desk->api->answer(u"signOut"_s);
        QCoro::waitFor(std::move(signingOut));
        m_desk->api->answer(u"create"_s);
        QCOMPARE(QCoro::waitFor(std::move(creating)).has_value(), succeeds);
        QVERIFY(state().subscriptions.isEmpty());
        QVERIFY(!state().errorMessage);
        QVERIFY(m_desk->api->waiting().isEmpty());
    }

    // ---- the catalogue ----

    void shouldLetTheLastSearchCount()
    {
        m_desk->makeSignedIn();
        auto first = m_desk->store->searchTemplates(u"ne"_s);
        auto second = m_desk->store->searchTemplates(u"net"_s);
        QTRY_COMPARE(m_desk->api->waiting(), (QStringList{u"search ne 10"_s, u"search net 10"_s}));
        SubscriptionTemplate found;
        found.name = u"Net"_s;
        m_desk->api->templates = QList{found};
        m_desk->api->answerAt(1);
        QCoro::waitFor(std::move(second));
        m_desk->api->templates = QList<SubscriptionTemplate>();
        m_desk->api->answerAt(0);
        QCoro::waitFor(std::move(first));
        QCOMPARE(state().templates.size(), 1);
        m_desk->api->isQuick = true;
        m_desk->api->templates = tl::make_unexpected(offline());
        QCoro::waitFor(m_desk->store->searchTemplates(u"nets"_s));
        QVERIFY(state().templates.isEmpty());
        QVERIFY(!state().errorMessage);
    }

    void shouldBeginEachFormWithoutWhatWasFoundForAnother()
    {
        m_desk->makeSignedIn();
        m_desk->store->setQuickAddPresented(true);
        m_desk->api->templates = QList{SubscriptionTemplate()};
        auto first = m_desk->store->searchTemplates(u"ne"_s);
        m_desk->api->answerAll();
        QCoro::waitFor(std::move(first));
        QCOMPARE(state().templates.size(), 1);
        auto late = m_desk->store->searchTemplates(u"net"_s);
        QTRY_COMPARE(m_desk->api->waiting().size(), 1);
        m_desk->store->setQuickAddPresented(false);
        QVERIFY(state().templates.isEmpty());
        m_desk->api->answerAll();
        QCoro::waitFor(std::move(late));
        QVERIFY(state().templates.isEmpty());
    }

    // ---- reminders ----

    void shouldPlanRemindersAfterAFetch()
    {
        m_desk->settings->setNotificationsEnabled(true);
        m_desk->makeSignedIn(3);
        QCOMPARE(m_desk->center->requests.size(), 3);
    }

    void shouldRemoveRemindersWhereTheyAreOff()
    {
        m_desk->makeSignedIn(3);
        QCOMPARE(m_desk->center->calls, QStringList{u"forget orbitledge.renewal."_s});
        QVERIFY(m_desk->center->requests.isEmpty());
    }

    void shouldPlanNothingWithoutAProfile()
    {
        m_desk->settings->setNotificationsEnabled(true);
        m_desk->make();
        QCoro::waitFor(m_desk->store->synchroniseReminders());
        QVERIFY(m_desk->center->calls.isEmpty());
    }

    void shouldSayWhatWasRejectedUntilItIsNot()
    {
        m_desk->settings->setNotificationsEnabled(true);
        m_desk->center->savingFailure = u"No room."_s;
        m_desk->makeSignedIn(3);
        QCOMPARE(state().notificationFailureMessage, u"macOS rejected some reminders: No room."_s);
        m_desk->center->savingFailure.reset();
        QCoro::waitFor(m_desk->store->synchroniseReminders());
        QVERIFY(!state().notificationFailureMessage);
    }

    void shouldSayHowManyWait()
    {
        m_desk->settings->setNotificationsEnabled(true);
        m_desk->settings->setNotificationLeadDays(0);
        m_desk->api->subscriptions = QList<Subscription>();
        m_desk->makeSignedIn(64);
        QCOMPARE(state().notificationsSkippedOverBudget, 4);
        m_desk->settings->setNotificationsEnabled(false);
        QCoro::waitFor(m_desk->store->synchroniseReminders());
        QCOMPARE(state().notificationsSkippedOverBudget, 0);
    }

    void shouldAskForPermission()
    {
        m_desk->makeSignedIn(3);
        m_desk->center->currentSettings.authorization = NotificationAuthorization::Authorized;
        QCoro::waitFor(m_desk->store->requestNotificationPermission());
        QVERIFY(m_desk->settings->notificationsEnabled());
        QCOMPARE(state().notificationAuthorization, NotificationAuthorization::Authorized);
        QVERIFY(!state().notificationActionMessage);
        QCOMPARE(m_desk->center->requests.size(), 3);
    }

    void shouldTurnRemindersOffWherePermissionIsRefused()
    {
        m_desk->settings->setNotificationsEnabled(true);
        m_desk->makeSignedIn(3);
        m_desk->center->permission = false;
        m_desk->center->currentSettings.authorization = NotificationAuthorization::Denied;
        QCoro::waitFor(m_desk->store->requestNotificationPermission());
        QVERIFY(!m_desk->settings->notificationsEnabled());
        QCOMPARE(state().notificationAuthorization, NotificationAuthorization::Denied);
        QCOMPARE(state().notificationActionMessage,
            u"macOS denied notifications for Orbitledge. Allow them in System Settings, then try again."_s);
    }

    void shouldSayThatItCouldNotAsk()
    {
        m_desk->settings->setNotificationsEnabled(true);
        m_desk->makeSignedIn();
        m_desk->center->permission = tl::make_unexpected(NotificationError{u"Nobody there."_s});
        QCoro::waitFor(m_desk->store->requestNotificationPermission());
        QCOMPARE(state().notificationActionMessage, u"Could not request permission: Nobody there."_s);
        QVERIFY(m_desk->settings->notificationsEnabled());
    }

    void shouldSendATest_data()
    {
        using enum NotificationAuthorization;
        QTest::addColumn<NotificationAuthorization>("authorization");
        QTest::addColumn<bool>("alerts");
        QTest::addColumn<QString>("message");
        QTest::addColumn<int>("requests");
        QTest::newRow("allowed") << Authorized << true
                                 << u"Test notification sent \u2014 it should appear in a moment."_s << 1;
        QTest::newRow("provisional") << Provisional << true
                                     << u"Test notification sent \u2014 it should appear in a moment."_s << 1;
        QTest::newRow("without alerts")
            << Authorized << false
            << u"Queued, but macOS has alerts turned off for Orbitledge, so nothing will appear. Enable them "
               "under Notifications in System Settings."_s
            << 1;
        QTest::newRow("denied")
            << Denied << false
            << u"macOS is not allowing notifications from Orbitledge. Turn them on in System Settings, then "
               "try again."_s
            << 0;
    }

    void shouldSendATest()
    {
        QFETCH(const NotificationAuthorization, authorization);
        QFETCH(const bool, alerts);
        QFETCH(const QString, message);
        QFETCH(const int, requests);
        m_desk->center->currentSettings = {authorization, alerts, false};
        m_desk->makeSignedIn();
        QCoro::waitFor(m_desk->store->sendTestNotification());
        QCOMPARE(state().notificationActionMessage, message);
        QCOMPARE(m_desk->center->requests.size(), requests);
    }

    void shouldAskBeforeATest()
    {
        m_desk->makeSignedIn();
        m_desk->center->permission = tl::make_unexpected(NotificationError{u"Nobody there."_s});
        QCoro::waitFor(m_desk->store->sendTestNotification());
        QCOMPARE(state().notificationActionMessage, u"Could not request permission: Nobody there."_s);
        QVERIFY(m_desk->center->requests.isEmpty());
    }

    void shouldSayWhyATestCouldNotBeSent()
    {
        m_desk->center->currentSettings = {NotificationAuthorization::Authorized, true, true};
        m_desk->center->refuse = [](const NotificationRequest &) { return u"No room."_s; };
        m_desk->makeSignedIn();
        QCoro::waitFor(m_desk->store->sendTestNotification());
        QCOMPARE(state().notificationActionMessage, u"Could not send a test notification: No room."_s);
    }

    void shouldSayThatTheSettingsCannotBeOpened()
    {
        m_desk->make();
        QCoro::waitFor(m_desk->store->openNotificationSettings());
        QVERIFY(!state().notificationActionMessage);
        m_desk->workspace->hasNotificationSettings = false;
        QCoro::waitFor(m_desk->store->openNotificationSettings());
        QCOMPARE(state().notificationActionMessage,
            u"Could not open System Settings. Open it manually and look under Notifications."_s);
    }

    // ---- updates ----

    void shouldLookForUpdatesWhenDue_data()
    {
        QTest::addColumn<std::optional<Instant>>("last");
        QTest::addColumn<int>("fetches");
        const auto row = [](const char *name, std::optional<Instant> last, int fetches) {
            QTest::newRow(name) << last << fetches;
        };
        row("never", std::nullopt, 1);
        row("just now", at("2026-03-18T12:00:00Z"), 0);
        row("almost six hours ago", at("2026-03-18T06:00:01Z"), 0);
        row("six hours ago", at("2026-03-18T06:00:00Z"), 1);
        row("in the future", at("2026-03-18T12:00:01Z"), 1);
    }

    void shouldLookForUpdatesWhenDue()
    {
        QFETCH(const std::optional<Instant>, last);
        QFETCH(const int, fetches);
        m_desk->make();
        m_desk->settings->setLastUpdateCheck(last);
        QCoro::waitFor(m_desk->store->checkForUpdates(AppStore::UpdateCheck::WhenDue));
        QCOMPARE(m_desk->releases->fetches, fetches);
        QCOMPARE(m_desk->settings->lastUpdateCheck(), fetches > 0 ? m_desk->clock->now() : last);
        QCoro::waitFor(m_desk->store->checkForUpdates(AppStore::UpdateCheck::Now));
        QCOMPARE(m_desk->releases->fetches, fetches + 1);
    }

    void shouldOfferUpdates_data()
    {
        QTest::addColumn<ReleaseManifest>("manifest");
        QTest::addColumn<QString>("dismissed");
        QTest::addColumn<bool>("isOffered");
        ReleaseManifest soon = manifestOf(u"2.0.0"_s);
        soon.comingSoon = true;
        QTest::newRow("newer") << manifestOf(u"1.1.0"_s) << QString() << true;
        QTest::newRow("the same") << manifestOf(u"1.0.0"_s) << QString() << false;
        QTest::newRow("a newer build") << manifestOf(u"0.9.0"_s, u"101"_s) << QString() << true;
        QTest::newRow("coming soon") << soon << QString() << false;
        QTest::newRow("dismissed") << manifestOf(u"1.1.0"_s) << u"1.1.0"_s << false;
        QTest::newRow("newer than dismissed") << manifestOf(u"1.2.0"_s) << u"1.1.0"_s << true;
    }

    void shouldOfferUpdates()
    {
        QFETCH(const ReleaseManifest, manifest);
        QFETCH(const QString, dismissed);
        QFETCH(const bool, isOffered);
        m_desk->make();
        m_desk->releases->manifest = manifest;
        if (!dismissed.isEmpty())
            m_desk->settings->setDismissedUpdateVersion(dismissed);
        QCoro::waitFor(m_desk->store->checkForUpdates(AppStore::UpdateCheck::Now));
        QCOMPARE(state().availableUpdate.has_value(), isOffered);
    }

    void shouldKeepAnOfferWhereTheNextCheckFails()
    {
        m_desk->make();
        m_desk->releases->manifest = manifestOf(u"2.0.0"_s);
        QCoro::waitFor(m_desk->store->checkForUpdates(AppStore::UpdateCheck::Now));
        m_desk->releases->manifest = tl::make_unexpected(ReleaseCheckError{u"gone"_s});
        QCoro::waitFor(m_desk->store->checkForUpdates(AppStore::UpdateCheck::Now));
        QVERIFY(state().availableUpdate);
        QVERIFY(!state().errorMessage);
    }

    void shouldNotLookForUpdatesOfAnUnknownVersion()
    {
        m_desk->identity.currentVersion.reset();
        m_desk->make();
        QCoro::waitFor(m_desk->store->checkForUpdates(AppStore::UpdateCheck::Now));
        QCOMPARE(m_desk->releases->fetches, 0);
        QVERIFY(!m_desk->settings->lastUpdateCheck());
    }

    void shouldLookForUpdatesOnceAtATime()
    {
        m_desk->releases->isSlow = true;
        m_desk->makeSignedIn();
        QCOMPARE(m_desk->releases->fetches, 1);
        m_desk->clock->set(at("2026-03-19T12:00:00Z"));
        m_desk->refreshTimer->elapse();
        answerFetch();
        QTRY_VERIFY(m_desk->refreshTimer->running);
        QCOMPARE(m_desk->releases->fetches, 1);
        m_desk->releases->answerAll();
        QCoreApplication::processEvents();
        m_desk->refreshTimer->elapse();
        answerFetch();
        QTRY_COMPARE(m_desk->releases->fetches, 2);
        m_desk->releases->answerAll();
    }

    void shouldDismissAndOpenUpdates()
    {
        m_desk->make();
        m_desk->store->dismissUpdate(); // of none
        QVERIFY(!m_desk->settings->dismissedUpdateVersion());
        m_desk->releases->manifest = manifestOf(u"2.0.0"_s);
        QCoro::waitFor(m_desk->store->checkForUpdates(AppStore::UpdateCheck::Now));
        QCoro::waitFor(m_desk->store->openUpdate());
        m_desk->releases->manifest->url = QUrl(u"http://example.com/new"_s);
        QCoro::waitFor(m_desk->store->checkForUpdates(AppStore::UpdateCheck::Now));
        QCoro::waitFor(m_desk->store->openUpdate());
        QCOMPARE(m_desk->workspace->opened,
            (QList<QUrl>{
                QUrl(u"https://releases.example.com/new"_s), QUrl(u"https://example.com/download"_s)}));
        m_desk->store->dismissUpdate();
        QCOMPARE(m_desk->settings->dismissedUpdateVersion(), u"2.0.0"_s);
        QVERIFY(!state().availableUpdate);
        QCoro::waitFor(m_desk->store->openUpdate());
        QCOMPARE(m_desk->workspace->opened.size(), 2);
    }

    void shouldOpenPages()
    {
        m_desk->make();
        QCoro::waitFor(m_desk->store->openWebPage(u"/login"_s));
        QCOMPARE(m_desk->workspace->opened, QList<QUrl>{QUrl(u"https://example.com/login"_s)});
        QCoro::waitFor(m_desk->store->openWebPage(QString()));
        QCoro::waitFor(m_desk->store->openWebPage(u"http://["_s));
        QCOMPARE(m_desk->workspace->opened.size(), 1);
    }

    // ---- its end ----

    void shouldBeDestroyedInTheMiddleOfAnything_data()
    {
        QTest::addColumn<int>("turns");
        for (int turns = 0; turns < 10; ++turns)
            QTest::newRow(QByteArray::number(turns).constData()) << turns;
    }

    void shouldBeDestroyedInTheMiddleOfAnything()
    {
        QFETCH(const int, turns);
        m_desk->settings->setNotificationsEnabled(true);
        m_desk->releases->isSlow = true;
        m_desk->keepInCache(sampleSnapshot(2));
        m_desk->make();
        auto starting = m_desk->store->start();
        auto refreshing = m_desk->store->refresh();
        auto mutating = m_desk->store->cancelSubscription(sampleSubscription(1).id);
        auto creating = m_desk->store->createSubscription({});
        auto searching = m_desk->store->searchTemplates(u"abc"_s);
        auto testing = m_desk->store->sendTestNotification();
        auto asking = m_desk->store->requestNotificationPermission();
        auto signingIn = m_desk->store->signIn(u"a@b"_s, u"c"_s);
        auto signingOut = m_desk->store->signOut();
        for (int i = 0; i < turns; ++i) {
            m_desk->api->answerAll();
            QCoreApplication::processEvents(QEventLoop::AllEvents);
        }
        m_desk->store.reset();
        QVERIFY(!m_desk->refreshTimer->running);
        QVERIFY(!m_desk->dayAlarm->target);
        m_desk->api->isQuick = true;
        m_desk->api->answerAll();
        m_desk->releases->answerAll();
        QCoro::waitFor(std::move(starting));
        QCoro::waitFor(std::move(refreshing));
        QCoro::waitFor(std::move(mutating));
        (void)QCoro::waitFor(std::move(creating));
        QCoro::waitFor(std::move(searching));
        QCoro::waitFor(std::move(testing));
        QCoro::waitFor(std::move(asking));
        (void)QCoro::waitFor(std::move(signingIn));
        QCoro::waitFor(std::move(signingOut));
        // Signing out goes on to its end.
        QVERIFY(!m_desk->api->hasSession);
        QVERIFY(!m_desk->cached());
    }
};

ORBITLEDGE_TEST_MAIN(AppStoreTest)
#include "AppStoreTest.moc"
