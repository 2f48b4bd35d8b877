#include "StoreModel.h"
#include "state/AppStore.h"
#include "support/StoreDesk.h"
#include "support/TestMain.h"
#include "timeline/TimelineBuilder.h"

#include <QRandomGenerator>

#include <array>
#include <cstdio>

using namespace orbitledge;
using namespace orbitledge::testing;
using namespace Qt::StringLiterals;

// A failure names its seed: ORBITLEDGE_SEQUENCE_SEED runs that one sequence again. ORBITLEDGE_SEQUENCES runs
// so many of each kind.

namespace {

UserProfile accountOf(int number)
{
    UserProfile profile = sampleProfile();
    profile.id = QUuid(static_cast<uint>(number), 1, 2, 3, 4, 5, 6, 7, 8, 9, 10);
    profile.defaultCurrency = number % 2 == 0 ? u"EUR"_s : u"USD"_s;
    return profile;
}

/// The one that runs is 1.0.0.
StoreModel::Release releaseOf(int minor, bool isComingSoon)
{
    StoreModel::Release release{.minor = minor, .manifest = {}};
    release.manifest.version = u"1.%1.0"_s.arg(minor);
    release.manifest.build = u"100"_s;
    release.manifest.comingSoon = isComingSoon;
    return release;
}

/// Made once, since ICU takes its time.
const Calendar &calendarOf(const QByteArray &zone)
{
    static std::map<QByteArray, Calendar> calendars;
    const auto known = calendars.find(zone);
    return known != calendars.end() ? known->second : calendars.emplace(zone, calendarIn(zone)).first->second;
}

QString described(const AppState &state)
{
    const QStringList parts{
        u"auth %1"_s.arg(static_cast<int>(state.authState)),
        u"refresh %1"_s.arg(static_cast<int>(state.refreshState)),
        u"user %1"_s.arg(state.user ? state.user->id.toString().mid(1, 8) : u"none"_s),
        u"%1 subscriptions of %2"_s.arg(state.subscriptions.size())
            .arg(state.subscriptions.isEmpty() ? u"nobody"_s : state.subscriptions.first().name),
        u"error \"%1\""_s.arg(state.errorMessage.value_or(u"none"_s)),
        u"offline %1"_s.arg(state.isOffline),
        u"updated %1"_s.arg(
            state.lastUpdatedAt ? QString::fromLatin1(state.lastUpdatedAt->text()) : u"never"_s),
        u"%1 templates"_s.arg(state.templates.size()),
        u"quick add %1"_s.arg(state.isQuickAddPresented),
        u"update %1"_s.arg(state.availableUpdate ? state.availableUpdate->version : u"none"_s),
        u"permission %1"_s.arg(static_cast<int>(state.notificationAuthorization)),
        u"action \"%1\""_s.arg(state.notificationActionMessage.value_or(u"none"_s)),
        u"reminders' failure \"%1\""_s.arg(state.notificationFailureMessage.value_or(u"none"_s)),
        u"%1 skipped"_s.arg(state.notificationsSkippedOverBudget),
    };
    return parts.join(u", "_s);
}

/// A store among fakes, a model of it, and a hand that does the same to both.
class World {
public:
    explicit World(quint32 seed)
        : m_seed(seed)
        , m_random(seed)
    {
        m_desk.calendar = [this] { return calendarOf(m_desk.zone); };
        m_desk.api->tag = m_account;
        m_desk.releases->isSlow = true;
        m_desk.center->isSlowToDecide = true;
        m_model.now = m_desk.clock->now();
        m_model.calendar = calendarOf(m_desk.zone);
        m_model.webURL = m_desk.identity.webURL;
        if (chance(2)) {
            m_model.cached = CacheSnapshot{.version = {},
                .profile = accountOf(m_account),
                .subscriptions = subscriptionsOf(m_account),
                .fetchedAt = at("2026-03-18T09:00:00Z")};
            m_desk.keepInCache(*m_model.cached);
        }
        if (chance(2)) {
            m_desk.settings->setNotificationsEnabled(true);
            m_model.settings.notificationsEnabled = true;
        }
        m_desk.api->hasSession = m_model.hasSession = !chance(5);
        watch();
    }

    /// The first fault that was found, with all that led to it.
    [[nodiscard]] const QString &fault() const { return m_fault; }

    void run(int steps)
    {
        for (int i = 0; i < steps && m_fault.isEmpty(); ++i) {
            takeStep();
            m_desk.settle();
            check();
        }
    }

    /// Everything is answered, well or not, until nothing is pending.
    void comeToRest()
    {
        while (!m_model.isQuiet() && m_fault.isEmpty()) {
            if (!answerOne())
                decideOne();
            m_desk.settle();
            check();
        }
        if (m_fault.isEmpty())
            checkWhatIsKept();
    }

    /// In the middle of whatever is under way, with an answer that is on its way already.
    void destroyStore()
    {
        answerOne();
        if (chance(2))
            QCoreApplication::processEvents();
        m_steps.append(u"the store goes"_s);
        const StoredSettings before = storedSettings();
        m_isGone = true;
        m_desk.store.reset();
        HeldAPIClient &api = *m_desk.api;
        m_desk.settle();
        while (!api.waiting().isEmpty() || decidable() > 0) {
            prepareReply();
            if (!api.waiting().isEmpty())
                api.answerAt(m_random.bounded(api.waiting().size()));
            m_desk.releases->manifest = releaseOf(9, false).manifest;
            m_desk.releases->answerAll();
            m_desk.center->decideAll();
            m_desk.settle();
        }
        require(!m_desk.refreshTimer->running, "the interval goes on without a store");
        require(!m_desk.dayAlarm->target, "the alarm goes on without a store");
        require(storedSettings() == before, "settings changed without a store");
        const qsizetype signOuts = api.calls.count(u"signOut"_s);
        require(signOuts == m_signOuts, "signing out was left undone");
    }

private:
    using StoredSettings = decltype(FakeUserDefaults::values);

    [[nodiscard]] StoredSettings storedSettings() const
    {
        StoredSettings values = m_desk.defaults->values;
        values.removeIf([](const auto &entry) { return !entry.key().startsWith(u"settings."); });
        return values;
    }
    [[nodiscard]] qsizetype decidable() const
    {
        return m_desk.releases->waitingCount() + m_desk.center->undecidedCount();
    }

    // ---- what is done ----

    void takeStep()
    {
        // Answers are as frequent as all the rest, or too much would pile up.
        if (m_random.bounded(100) < 45 && answerOne())
            return;
        if (m_random.bounded(100) < 10 && decideOne())
            return;
        using Step = void (World::*)();
        static constexpr std::array<Step, 24> steps{&World::start, &World::start, &World::refresh,
            &World::refresh, &World::signIn, &World::signOut, &World::cancel, &World::uncancel,
            &World::search, &World::switchReminders, &World::changeLeadDays, &World::changeInterval,
            &World::changeBadge, &World::changeNetwork, &World::moveClock, &World::passMidnight,
            &World::changeZone, &World::elapse, &World::checkForUpdates, &World::dismissUpdate,
            &World::askForPermission, &World::sendTest, &World::showQuickAdd, &World::changeDesktop};
        (this->*pick(steps))();
    }

    void start()
    {
        step(u"start"_s);
        m_model.start();
        m_desk.store->start();
    }
    void refresh()
    {
        step(u"refresh"_s);
        m_model.refresh();
        m_desk.store->refresh();
    }
    void signIn()
    {
        step(u"sign in"_s);
        m_model.signIn();
        rememberSignIn();
    }
    void signOut()
    {
        step(u"sign out"_s);
        if (m_model.signOut())
            ++m_signOuts;
        m_desk.store->signOut();
    }
    void cancel()
    {
        step(u"cancel"_s);
        m_model.mutate(u"cancel"_s);
        m_desk.store->cancelSubscription(sampleSubscription(1).id);
    }
    void uncancel()
    {
        step(u"take back"_s);
        m_model.mutate(u"uncancel"_s);
        m_desk.store->uncancelSubscription(sampleSubscription(1).id);
    }
    void search()
    {
        const QString query = QString::number(++m_searches);
        step(u"search "_s + query);
        m_model.search(query);
        m_desk.store->searchTemplates(query);
    }
    void switchReminders()
    {
        m_model.settings.notificationsEnabled = chance(2);
        step(u"reminders %1"_s.arg(m_model.settings.notificationsEnabled));
        m_desk.settings->setNotificationsEnabled(m_model.settings.notificationsEnabled);
        synchronise();
    }
    void changeLeadDays()
    {
        m_model.settings.notificationLeadDays = m_random.bounded(15);
        step(u"lead days %1"_s.arg(m_model.settings.notificationLeadDays));
        m_desk.settings->setNotificationLeadDays(m_model.settings.notificationLeadDays);
        synchronise();
    }
    void synchronise()
    {
        if (chance(4))
            return;
        m_model.synchroniseReminders();
        m_desk.store->synchroniseReminders();
    }
    void changeInterval()
    {
        m_model.settings.refreshInterval = pick(refreshIntervals);
        step(u"interval %1"_s.arg(static_cast<int>(m_model.settings.refreshInterval)));
        m_desk.settings->setRefreshInterval(m_model.settings.refreshInterval);
    }
    void changeBadge()
    {
        step(u"badge"_s);
        m_desk.settings->setShowMenuBadge(chance(2));
    }
    void changeNetwork()
    {
        const bool isOffline = chance(2);
        step(u"offline %1"_s.arg(isOffline));
        m_model.setOffline(isOffline);
        m_desk.connectivity->setOffline(isOffline);
    }
    void moveClock() { moveTo(later(m_model.now, m_random.bounded(-20, 40) * hour)); }
    void passMidnight()
    {
        if (m_model.alarm)
            moveTo(later(*m_model.alarm, m_random.bounded(-1, 2) * second));
    }
    void moveTo(Instant instant)
    {
        const bool isTold = chance(2);
        step(u"%1 %2"_s.arg(
            isTold ? u"clock set to"_s : u"time passes to"_s, QString::fromLatin1(instant.text())));
        using Move = FakeWallClockAlarm::Move;
        m_model.moveTo(instant, isTold);
        m_desk.dayAlarm->moveTo(instant, isTold ? Move::Set : Move::Passed);
    }
    void changeZone()
    {
        static constexpr std::array zones{"Europe/Berlin", "Asia/Tokyo", "America/New_York", "UTC"};
        m_desk.zone = pick(zones);
        step(u"zone "_s + QString::fromLatin1(m_desk.zone));
        m_model.calendar = calendarOf(m_desk.zone);
        m_model.moveTo(m_model.now, true);
        m_desk.dayAlarm->moveTo(m_model.now, FakeWallClockAlarm::Move::Set);
    }
    void elapse()
    {
        step(u"interval elapses"_s);
        m_model.elapse();
        m_desk.refreshTimer->elapse();
    }
    void checkForUpdates()
    {
        const bool isForced = chance(2);
        step(u"check for updates, forced %1"_s.arg(isForced));
        m_model.checkForUpdates(isForced);
        m_desk.store->checkForUpdates(isForced ? AppStore::UpdateCheck::Now : AppStore::UpdateCheck::WhenDue);
    }
    void dismissUpdate()
    {
        step(u"dismiss update"_s);
        m_model.dismissUpdate();
        m_desk.store->dismissUpdate();
    }
    void askForPermission()
    {
        step(u"ask for permission"_s);
        m_model.requestNotificationPermission();
        m_desk.store->requestNotificationPermission();
    }
    void sendTest()
    {
        step(u"send a test"_s);
        m_model.sendTestNotification();
        m_desk.store->sendTestNotification();
    }
    void showQuickAdd()
    {
        const bool isPresented = chance(2);
        step(u"quick add %1"_s.arg(isPresented));
        m_model.setQuickAddPresented(isPresented);
        m_desk.store->setQuickAddPresented(isPresented);
    }
    /// What the desktop allows, has, and can keep.
    void changeDesktop()
    {
        step(u"desktop"_s);
        m_model.authorization = static_cast<NotificationAuthorization>(m_random.bounded(4));
        m_model.areAlertsEnabled = chance(2);
        m_model.hasNotificationSettings = chance(2);
        m_model.isDiskFull = chance(4);
        m_model.remindersFailure = chance(4) ? std::optional(u"No room."_s) : std::nullopt;
        m_desk.center->currentSettings = {m_model.authorization, m_model.areAlertsEnabled, false};
        m_desk.center->savingFailure = m_model.remindersFailure;
        m_desk.workspace->hasNotificationSettings = m_model.hasNotificationSettings;
        if (m_model.isDiskFull)
            m_desk.files->failWriting({FileError::Kind::NoSpace, u"No space left on device"_s});
        else
            m_desk.files->writeAgain();
        if (chance(2)) {
            m_model.openNotificationSettings();
            m_desk.store->openNotificationSettings();
        }
        if (chance(2)) {
            m_model.refreshNotificationAuthorization();
            m_desk.store->refreshNotificationAuthorization();
        }
    }

    // ---- what it is answered ----

    /// False where nobody waits.
    bool answerOne()
    {
        HeldAPIClient &api = *m_desk.api;
        const QStringList waiting = api.waiting();
        if (waiting.isEmpty())
            return false;
        const qsizetype index = m_random.bounded(waiting.size());
        if (waiting[index] == u"signIn")
            m_answeringAccount = m_random.bounded(1, 4);
        else
            m_answeringAccount = api.tagAt(index);
        const bool isGood = prepareReply();
        if (waiting[index] == u"signIn" && isGood)
            api.tag = m_answeringAccount; // what is asked for from now on is this account's
        step(u"answer %1 of %2 %3"_s.arg(waiting[index])
                .arg(m_answeringAccount)
                .arg(isGood ? u"well"_s : u"with \"%1\""_s.arg(api.profile.error().errorDescription())));
        m_model.answer(index, {api.profile, api.subscriptions, api.templates});
        api.answerAt(index);
        return true;
    }

    /// Whether it is a good one.
    bool prepareReply()
    {
        HeldAPIClient &api = *m_desk.api;
        static const std::array<APIError, 5> errors{APIError::Forbidden{u"No"_s},
            APIError::Transport{u"Offline"_s}, APIError::Unauthorized{QString()},
            APIError::Unauthorized{u"Who are you?"_s}, APIError::RequestFailed{500, u"Broken"_s}};
        const bool isGood = m_random.bounded(100) < 60;
        if (isGood) {
            api.profile = accountOf(m_answeringAccount);
            api.subscriptions = subscriptionsOf(m_answeringAccount);
            api.templates = QList<SubscriptionTemplate>(m_random.bounded(3));
            api.subscription = sampleSubscription(1);
            return true;
        }
        const APIError &error = pick(errors);
        api.profile = tl::make_unexpected(error);
        api.subscriptions = tl::make_unexpected(error);
        api.templates = tl::make_unexpected(error);
        api.subscription = tl::make_unexpected(error);
        return false;
    }

    /// False where nobody waits for a release or a decision.
    bool decideOne()
    {
        if (decidable() == 0)
            return false;
        const qsizetype index = m_random.bounded(decidable());
        if (index < m_desk.releases->waitingCount())
            answerUpdateCheck(index);
        else
            decidePermission(index - m_desk.releases->waitingCount());
        return true;
    }

    void answerUpdateCheck(qsizetype index)
    {
        std::optional<StoreModel::Release> release;
        if (!chance(4))
            release = releaseOf(m_random.bounded(5), chance(4));
        step(u"release %1"_s.arg(release ? release->manifest.version : u"unknown"_s));
        m_model.answerUpdateCheck(index, release);
        if (release)
            m_desk.releases->manifest = release->manifest;
        else
            m_desk.releases->manifest = tl::make_unexpected(ReleaseCheckError{u"gone"_s});
        m_desk.releases->answerAt(index);
    }

    void decidePermission(qsizetype index)
    {
        tl::expected<bool, QString> decision = chance(2);
        if (chance(4))
            decision = tl::make_unexpected(u"Nobody there."_s);
        step(u"permission %1"_s.arg(decision ? QString::number(*decision) : decision.error()));
        if (decision) {
            m_model.authorization
                = *decision ? NotificationAuthorization::Authorized : NotificationAuthorization::Denied;
        }
        m_model.decidePermission(index, decision);
        m_desk.center->currentSettings.authorization = m_model.authorization;
        if (decision)
            m_desk.center->permission = *decision;
        else
            m_desk.center->permission = tl::make_unexpected(NotificationError{decision.error()});
        m_desk.center->decideAt(index);
    }

    /// Each names its account.
    QList<Subscription> subscriptionsOf(int account)
    {
        QList<Subscription> subscriptions;
        // Now and then more than there is room for among the reminders.
        const int count = chance(20) ? 64 : m_random.bounded(5);
        for (int i = 0; i < count; ++i) {
            subscriptions.append(sampleSubscription(i));
            subscriptions.last().name = QString::number(account);
            subscriptions.last().nextBillingDate = LocalDate::fromDaysSinceEpoch(
                LocalDate{2026, 3, 14}.daysSinceEpoch() + m_random.bounded(40));
        }
        return subscriptions;
    }

    // ---- what must hold ----

    void watch()
    {
        AppStore &store = m_desk.make();
        QObject::connect(&store, &AppStore::aboutToChange, &store, [this, &store] {
            require(++m_depth == 1, "a change within a change");
            require(store.state() == m_announced, "a change that was not announced");
        });
        QObject::connect(&store, &AppStore::changed, &store, [this, &store] {
            require(--m_depth == 0, "a change that was not announced");
            require(!m_isGone, "a change without a store");
            m_announced = store.state();
        });
    }

    QCoro::Task<> rememberSignIn()
    {
        const auto results = m_signIns;
        const auto result = co_await m_desk.store->signIn(u"a@b"_s, u"c"_s);
        results->append(result.has_value());
    }

    void check()
    {
        const HeldAPIClient &api = *m_desk.api;
        const AppStore &store = *m_desk.store;
        require(m_depth == 0, "a change without an end");
        require(store.state() == m_announced, "a change that was not announced");
        if (store.state() != m_model.state) {
            fail(u"the store shows another state:\n  shown    %1\n  expected %2"_s.arg(
                described(store.state()), described(m_model.state)));
        }
        if (api.waiting() != m_model.waiting()) {
            fail(u"other calls are pending:\n  pending  %1\n  expected %2"_s.arg(
                api.waiting().join(u", "_s), m_model.waiting().join(u", "_s)));
        }
        require(api.waitingCount(u"fetchProfile"_s) <= 1, "two fetches");
        require(api.waitingCount(u"fetchSubscriptions"_s) <= 2, "two fetches"); // one to sign in
        require(m_desk.releases->waitingCount() == m_model.updateChecks(), "other update checks are pending");
        require(m_desk.center->undecidedCount() == m_model.permissionRequests(),
            "other requests for permission are pending");
        require(*m_signIns == m_model.signIns, "signing in ended otherwise");
        require(m_desk.refreshTimer->running == m_model.timer, "another interval");
        require(m_desk.dayAlarm->target == m_model.alarm, "another alarm");
        checkSettings();
        if (chance(4)) // building one takes longer than all the rest
            checkTimeline();
        if (m_model.isQuiet())
            checkWhatIsKept();
    }

    void checkSettings()
    {
        const AppSettings &settings = *m_desk.settings;
        const StoreModel::Settings &expected = m_model.settings;
        require(settings.refreshInterval() == expected.refreshInterval
                && settings.notificationsEnabled() == expected.notificationsEnabled
                && settings.notificationLeadDays() == expected.notificationLeadDays,
            "other settings");
        require(settings.lastUpdateCheck() == expected.lastUpdateCheck, "another last check for updates");
        std::optional<QString> dismissed;
        if (expected.dismissedMinor)
            dismissed = u"1.%1.0"_s.arg(*expected.dismissedMinor);
        require(settings.dismissedUpdateVersion() == dismissed, "another update is dismissed");
    }

    void checkTimeline()
    {
        const AppState &state = m_model.state;
        const QString currency = state.user ? state.user->defaultCurrency : u"USD"_s;
        require(m_desk.store->timelineCurrency() == currency, "another currency");
        const bool isAsExpected = m_desk.store->timeline()
            == buildTimeline(state.subscriptions, currency, m_model.now, *m_model.calendar);
        require(isAsExpected, "another timeline");
    }

    /// The file, and the reminders.
    void checkWhatIsKept()
    {
        require(m_desk.cached() == m_model.cached, "something else is saved");
        QStringList reminders = m_desk.center->identifiers();
        reminders.removeIf([](const QString &identifier) { return identifier.contains(u".test."); });
        reminders.sort();
        if (reminders != m_model.reminders()) {
            fail(u"other reminders:\n  pending  %1\n  expected %2"_s.arg(
                reminders.join(u", "_s), m_model.reminders().join(u", "_s)));
        }
    }

    template <typename Choice, std::size_t Count> const Choice &pick(const std::array<Choice, Count> &choices)
    {
        return choices.at(m_random.bounded(static_cast<quint32>(Count)));
    }
    bool chance(int ofHowMany) { return m_random.bounded(ofHowMany) == 0; }

    void step(const QString &name) { m_steps.append(name); }

    void require(bool isSo, const char *what)
    {
        if (!isSo)
            fail(QString::fromLatin1(what));
    }

    void fail(const QString &what)
    {
        if (!m_fault.isEmpty())
            return;
        m_fault = u"ORBITLEDGE_SEQUENCE_SEED=%1: %2\nafter:"_s.arg(m_seed).arg(what);
        for (qsizetype i = 0; i < m_steps.size(); ++i)
            m_fault += u"\n  %1. %2"_s.arg(i + 1).arg(m_steps[i]);
    }

    quint32 m_seed;
    QRandomGenerator m_random;
    StoreDesk m_desk;
    StoreModel m_model;
    /// Of the service's session.
    int m_account = 1;
    int m_answeringAccount = 1;
    int m_searches = 0;
    int m_signOuts = 0;
    int m_depth = 0;
    bool m_isGone = false;
    AppState m_announced;
    std::shared_ptr<QList<bool>> m_signIns = std::make_shared<QList<bool>>();
    QStringList m_steps;
    QString m_fault;
};

/// Those of the run, or the one that was asked for.
QList<quint32> seeds(int count)
{
#ifdef __SANITIZE_THREAD__
    count /= 4; // it is as much slower
#endif
    if (qEnvironmentVariableIsSet("ORBITLEDGE_SEQUENCE_SEED"))
        return {qEnvironmentVariable("ORBITLEDGE_SEQUENCE_SEED").toUInt()};
    if (qEnvironmentVariableIsSet("ORBITLEDGE_SEQUENCES"))
        count = qEnvironmentVariableIntValue("ORBITLEDGE_SEQUENCES");
    QList<quint32> seeds(count);
    QRandomGenerator::system()->fillRange(seeds.data(), seeds.size());
    return seeds;
}

/// Says what is not; Qt Test's own messages would be cut off.
bool isAsExpected(const World &world)
{
    if (!world.fault().isEmpty())
        std::fprintf(stderr, "%s\n", qPrintable(world.fault()));
    return world.fault().isEmpty();
}

/// Some are short, since what goes wrong early is easier to understand.
int lengthOf(quint32 seed)
{
    constexpr quint32 longest = 60;
    return static_cast<int>(seed % longest) + 1;
}

} // namespace

class AppStoreSequencesTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void shouldBeAsTheModelSaysAfterEachStep()
    {
        constexpr int sequences = 2000;
        for (const quint32 seed : seeds(sequences)) {
            World world(seed);
            world.run(lengthOf(seed));
            world.comeToRest();
            QVERIFY(isAsExpected(world));
        }
    }

    void shouldBeSilentOnceItIsGone()
    {
        constexpr int sequences = 1000;
        for (const quint32 seed : seeds(sequences)) {
            World world(seed);
            world.run(lengthOf(seed));
            if (world.fault().isEmpty())
                world.destroyStore();
            QVERIFY(isAsExpected(world));
        }
    }
};

ORBITLEDGE_TEST_MAIN(AppStoreSequencesTest)
#include "AppStoreSequencesTest.moc"
