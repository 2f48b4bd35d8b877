#include "state/AppStore.h"
#include "support/StoreDesk.h"
#include "support/TestMain.h"

#include <QRandomGenerator>

using namespace orbitledge;
using namespace orbitledge::testing;
using namespace Qt::StringLiterals;

namespace {

UserProfile accountOf(int number)
{
    UserProfile profile = sampleProfile();
    profile.id = QUuid(static_cast<uint>(number), 1, 2, 3, 4, 5, 6, 7, 8, 9, 10);
    return profile;
}

/// Each names its account.
QList<Subscription> subscriptionsOf(int account, int count)
{
    QList<Subscription> subscriptions;
    for (int i = 0; i < count; ++i) {
        subscriptions.append(sampleSubscription(i));
        subscriptions.last().name = QString::number(account);
    }
    return subscriptions;
}

/// A store, a service with accounts, and what must hold of the two whatever happens in whatever order.
class World {
public:
    explicit World(quint32 seed)
        : m_random(seed)
    {
        CacheSnapshot saved = sampleSnapshot(0);
        saved.profile = accountOf(m_account);
        saved.subscriptions = subscriptionsOf(m_account, 2);
        m_desk.api->tag = m_account;
        m_desk.keepInCache(saved);
        AppStore &store = m_desk.make();
        QObject::connect(
            &store, &AppStore::aboutToChange, &store, [this] { require(++m_depth == 1, "nested"); });
        QObject::connect(
            &store, &AppStore::changed, &store, [this] { require(--m_depth == 0, "unannounced"); });
    }

    void takeStep()
    {
        switch (m_random.bounded(16)) {
        case 0:
            step(u"start"_s);
            m_desk.store->start();
            break;
        case 1:
        case 2:
            step(u"refresh"_s);
            m_desk.store->refresh();
            break;
        case 3:
            step(u"sign in"_s);
            signIn(++m_lastAccount);
            break;
        case 4:
            step(u"sign out"_s);
            signOut();
            break;
        case 5:
            step(u"cancel"_s);
            m_desk.store->cancelSubscription(sampleSubscription(1).id);
            break;
        case 6:
            step(u"take back"_s);
            m_desk.store->uncancelSubscription(sampleSubscription(1).id);
            break;
        case 7:
            step(u"search"_s);
            m_desk.store->searchTemplates(u"abc"_s);
            break;
        case 8:
            step(u"setting"_s);
            m_desk.settings->setRefreshInterval(refreshIntervals.at(m_random.bounded(4U)));
            break;
        case 9:
            step(u"network"_s);
            m_desk.connectivity->setOffline(m_random.bounded(2) == 0);
            break;
        case 10:
            step(u"clock"_s);
            m_desk.dayAlarm->moveTo(later(m_desk.clock->now(), m_random.bounded(-20, 40) * hour),
                m_random.bounded(2) == 0 ? FakeWallClockAlarm::Move::Set : FakeWallClockAlarm::Move::Passed);
            break;
        case 11:
            step(u"time"_s);
            m_desk.refreshTimer->elapse();
            break;
        default:
            answerOne(m_random.bounded(5));
            break;
        }
        m_desk.settle();
        check();
    }

    /// Everything is answered well, and then everything is as the service has it.
    void comeToRest()
    {
        step(u"rest"_s);
        while (!m_desk.api->waiting().isEmpty()) {
            answerOne(0);
            m_desk.settle();
            check();
        }
        m_desk.store->refresh();
        m_desk.settle();
        while (!m_desk.api->waiting().isEmpty()) {
            answerOne(0);
            m_desk.settle();
        }
        check();
        const AppState &state = m_desk.store->state();
        require(state.refreshState == RefreshState::Idle, "still fetching");
        if (m_desk.api->hasSession) {
            require(state.authState == AuthState::SignedIn, "not signed in with a session");
            require(state.subscriptions == subscriptionsOf(m_account, m_count), "not the service's list");
            require(!state.errorMessage && !state.isOffline, "an old failure");
            require(m_desk.cached() && m_desk.cached()->subscriptions == state.subscriptions, "not saved");
        } else {
            require(state.authState == AuthState::SignedOut, "signed in without a session");
        }
    }

    /// In the middle of whatever is under way.
    void destroyStore() { m_desk.store.reset(); }

private:
    void step(const QString &name) { m_steps.append(name); }

    void require(bool isSo, const char *what) const
    {
        if (!isSo)
            qFatal("%s, after: %s", what, qPrintable(m_steps.join(u", "_s)));
    }

    void signIn(int account)
    {
        const int previousTag = std::exchange(m_desk.api->tag, account);
        m_signInsAsked.append(account);
        m_desk.store->signIn(u"a@b"_s, u"c"_s);
        m_desk.api->tag = previousTag;
    }

    void signOut() { watchSignOut(); }

    QCoro::Task<> watchSignOut()
    {
        const QPointer<AppStore> store = m_desk.store.get();
        co_await m_desk.store->signOut();
        if (!store)
            co_return;
        m_isSignedOut = true;
        require(store->state().authState == AuthState::SignedOut, "not signed out");
        require(!m_desk.cached(), "data left behind");
    }

    void answerOne(int kind)
    {
        const QStringList waiting = m_desk.api->waiting();
        if (waiting.isEmpty())
            return;
        const qsizetype index = m_random.bounded(waiting.size());
        const QString &name = waiting[index];
        step(u"answer %1 with %2"_s.arg(name).arg(kind));
        APIError error = APIError::Forbidden{u"No"_s};
        if (kind == 1)
            error = APIError::Transport{u"Offline"_s};
        else if (kind == 2)
            error = APIError::Unauthorized{QString()};
        const bool isGood = kind == 0 || kind == 4;

        HeldAPIClient &api = *m_desk.api;
        if (name == u"signIn") {
            // Signing in goes one at a time, in the order in which it was asked for.
            const int account = m_signInsAsked.takeFirst();
            if (isGood) {
                // From here on there is a session, which a fetch may be the first to show.
                m_account = account;
                m_isSignedOut = false;
            }
        }
        if (name == u"cancel" && isGood)
            m_count = 3;
        if (name == u"uncancel" && isGood)
            m_count = 4;
        const int account = name == u"signIn" ? m_account : api.tagAt(index);
        if (isGood) {
            api.profile = accountOf(account);
            api.subscriptions = subscriptionsOf(account, m_count);
            api.subscription = sampleSubscription(1);
            api.templates = QList<SubscriptionTemplate>();
        } else {
            api.profile = tl::make_unexpected(error);
            api.subscriptions = tl::make_unexpected(error);
            api.subscription = tl::make_unexpected(error);
            api.templates = tl::make_unexpected(error);
        }
        const bool isSignIn = name == u"signIn";
        api.answerAt(index);
        if (isSignIn && isGood)
            api.tag = account; // what is asked for from now on is this account's
    }

    void check() const
    {
        const AppState &state = m_desk.store->state();
        const HeldAPIClient &api = *m_desk.api;
        require(m_depth == 0, "a change without an end");
        require(api.waitingCount(u"fetchProfile"_s) <= 1, "two fetches");
        require(api.waitingCount(u"fetchSubscriptions"_s) <= 2, "two fetches"); // one to sign in
        require(api.waitingCount(u"signIn"_s) + api.waitingCount(u"signOut"_s) <= 1, "two sessions");
        require(state.authState != AuthState::SignedIn || state.user, "signed in as nobody");
        require(state.user || state.subscriptions.isEmpty(), "subscriptions of nobody");
        for (const Subscription &subscription : state.subscriptions)
            require(state.user->id == accountOf(subscription.name.toInt()).id, "two accounts in one");
        if (m_isSignedOut) {
            require(!state.user, "back after signing out");
            require(!m_desk.cached(), "data back after signing out");
        }
        const bool isFetching
            = api.waiting().contains(u"fetchProfile"_s) || api.waiting().contains(u"fetchSubscriptions"_s);
        require(isFetching || state.refreshState == RefreshState::Idle, "fetching nothing");
    }

    QRandomGenerator m_random;
    StoreDesk m_desk;
    int m_account = 1;
    int m_lastAccount = 1;
    int m_count = 2;
    int m_depth = 0;
    bool m_isSignedOut = false;
    QList<int> m_signInsAsked;
    QStringList m_steps;
};

} // namespace

class AppStoreSequencesTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void shouldHoldWhateverHappensInWhateverOrder()
    {
        const quint32 seed = QRandomGenerator::system()->generate();
        qInfo("seed %u", seed);
        QRandomGenerator random(seed);
        constexpr int sequences = 400;
        for (int i = 0; i < sequences; ++i) {
            World world(random.generate());
            const int steps = random.bounded(5, 60);
            for (int step = 0; step < steps; ++step)
                world.takeStep();
            world.comeToRest();
        }
    }

    void shouldBeDestroyedWhateverHappens()
    {
        const quint32 seed = QRandomGenerator::system()->generate();
        qInfo("seed %u", seed);
        QRandomGenerator random(seed);
        constexpr int sequences = 200;
        for (int i = 0; i < sequences; ++i) {
            World world(random.generate());
            const int steps = random.bounded(1, 30);
            for (int step = 0; step < steps; ++step)
                world.takeStep();
            world.destroyStore();
        }
    }
};

ORBITLEDGE_TEST_MAIN(AppStoreSequencesTest)
#include "AppStoreSequencesTest.moc"
