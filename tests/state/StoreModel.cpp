#include "StoreModel.h"

#include "reminders/RenewalNotificationPlanner.h"

namespace orbitledge::testing {

using namespace Qt::StringLiterals;

namespace {

const QString signInCall = u"signIn"_s;
const QString signOutCall = u"signOut"_s;
const QString profileCall = u"fetchProfile"_s;
const QString listCall = u"fetchSubscriptions"_s;
/// The same to the service; told apart here.
const QString listOfSignInCall = u"fetchSubscriptions to sign in"_s;

QString sessionIsOver(const APIError &error)
{
    const QString message = error.errorDescription();
    return message.isEmpty() ? u"Your session expired. Please sign in again."_s : message;
}

bool isUnauthorized(const APIError &error)
{
    return error.is<APIError::Unauthorized>();
}

} // namespace

QStringList StoreModel::waiting() const
{
    QStringList names;
    for (const Call &call : m_calls)
        names.append(call.name == listOfSignInCall ? listCall : call.name);
    return names;
}

void StoreModel::call(const QString &name)
{
    m_calls.append({name, m_isSigningOut});
}

// ---- sessions --------------------------------------------------------------------------------------------

void StoreModel::endSession()
{
    for (Call &call : m_calls)
        call.isOutdated = true;
    if (m_fetch)
        m_fetch->isOutdated = true;
}

void StoreModel::signOutLocally(const APIError &error)
{
    endSession();
    state.user.reset();
    state.subscriptions.clear();
    state.templates.clear();
    state.authState = AuthState::SignedOut;
    state.isOffline = false;
    state.refreshState = RefreshState::Idle;
    state.errorMessage = sessionIsOver(error);
}

void StoreModel::fail(const APIError &error)
{
    if (isUnauthorized(error))
        signOutLocally(error);
    else
        state.errorMessage = error.errorDescription();
}

void StoreModel::signIn()
{
    m_turns.push_back(Turn::SignIn);
    if (m_turns.size() == 1)
        beginTurn();
}

bool StoreModel::signOut()
{
    if (!m_turns.empty() && m_turns.back() == Turn::SignOut)
        return false;
    m_turns.push_back(Turn::SignOut);
    if (m_turns.size() == 1)
        beginTurn();
    return true;
}

void StoreModel::beginTurn()
{
    endSession();
    call(m_turns.front() == Turn::SignIn ? signInCall : signOutCall);
    m_isSigningOut = m_turns.front() == Turn::SignOut;
}

void StoreModel::endTurn()
{
    m_turns.pop_front();
    if (!m_turns.empty())
        beginTurn();
}

void StoreModel::learnWhoSignedIn(const tl::expected<UserProfile, APIError> &profile)
{
    hasSession = profile.has_value();
    if (!profile) {
        failSignIn(profile.error());
        return;
    }
    endSession();
    m_signedInAs = *profile;
    if (cached && cached->profile.id != profile->id && !isDiskFull)
        cached.reset();
    // Nobody is shown what is somebody else's.
    if (state.user && state.user->id != profile->id) {
        state.user.reset();
        state.subscriptions.clear();
        state.templates.clear();
        state.lastUpdatedAt.reset();
        state.isOffline = false;
        state.authState = AuthState::SignedOut;
    }
    call(listOfSignInCall);
}

void StoreModel::endSignIn(const tl::expected<QList<Subscription>, APIError> &subscriptions)
{
    if (!subscriptions) {
        failSignIn(subscriptions.error());
        return;
    }
    endSession();
    state.errorMessage.reset();
    show(*m_signedInAs, *subscriptions);
    signIns.append(true);
    endTurn();
}

void StoreModel::failSignIn(const APIError &error)
{
    fail(error);
    state.authState = AuthState::SignedOut;
    state.refreshState = RefreshState::Idle;
    signIns.append(false);
    endTurn();
}

void StoreModel::endSignOut()
{
    hasSession = false;
    if (!isDiskFull)
        cached.reset();
    removeReminders();
    m_isSigningOut = false;
    endSession();
    state.user.reset();
    state.subscriptions.clear();
    state.templates.clear();
    state.lastUpdatedAt.reset();
    state.isOffline = false;
    state.errorMessage.reset();
    state.notificationsSkippedOverBudget = 0;
    state.authState = AuthState::SignedOut;
    endTurn();
}

// ---- fetching --------------------------------------------------------------------------------------------

void StoreModel::start()
{
    if (std::exchange(m_isStarted, true)) {
        wantFetch();
        return;
    }
    timer = durationOf(settings.refreshInterval);
    setAlarm();
    lookForUpdates(false, true);
    refreshNotificationAuthorization();
    if (m_isSigningOut)
        return;
    if (!hasSession) {
        state.authState = AuthState::SignedOut;
        return;
    }
    if (cached && !state.lastUpdatedAt) {
        state.user = cached->profile;
        state.subscriptions = cached->subscriptions;
        state.lastUpdatedAt = cached->fetchedAt;
        state.authState = AuthState::SignedIn;
    }
    wantFetch();
}

void StoreModel::refresh()
{
    wantFetch();
}

void StoreModel::wantFetch()
{
    if (!m_fetch)
        beginFetch();
    else if (m_fetch->isOutdated)
        m_isNextFetchWanted = true;
}

void StoreModel::wantNextFetch()
{
    if (m_fetch)
        m_isNextFetchWanted = true;
    else
        beginFetch();
}

void StoreModel::beginFetch()
{
    // There is nothing to be had for a session that ends.
    if (m_isSigningOut)
        return;
    state.refreshState = RefreshState::Idle;
    if (!hasSession) {
        state.authState = AuthState::SignedOut;
        return;
    }
    state.refreshState = state.subscriptions.isEmpty() ? RefreshState::Loading : RefreshState::Refreshing;
    state.errorMessage.reset();
    m_fetch.emplace();
    call(profileCall);
    call(listCall);
}

void StoreModel::takeHalf()
{
    if (!m_fetch->profile || !m_fetch->subscriptions)
        return;
    const Fetch fetch = *m_fetch;
    state.refreshState = RefreshState::Idle;
    if (!fetch.isOutdated) {
        if (!*fetch.profile)
            failFetch(fetch.profile->error());
        else if (!*fetch.subscriptions)
            failFetch(fetch.subscriptions->error());
        else
            show(**fetch.profile, **fetch.subscriptions);
    }
    endFetch();
}

void StoreModel::failFetch(const APIError &error)
{
    if (isUnauthorized(error)) {
        signOutLocally(error);
        return;
    }
    state.isOffline = error.is<APIError::Transport>();
    state.errorMessage = error.errorDescription();
    if (state.user)
        state.authState = AuthState::SignedIn;
}

void StoreModel::show(const UserProfile &profile, const QList<Subscription> &subscriptions)
{
    state.user = profile;
    state.subscriptions = subscriptions;
    state.lastUpdatedAt = now;
    state.isOffline = false;
    state.authState = AuthState::SignedIn;
    state.refreshState = RefreshState::Idle;
    if (!isDiskFull) {
        cached = CacheSnapshot{
            .version = {}, .profile = profile, .subscriptions = subscriptions, .fetchedAt = now};
    }
    synchroniseReminders();
}

void StoreModel::endFetch()
{
    m_fetch.reset();
    if (m_round == Round::ThisFetch)
        endRound();
    if (!std::exchange(m_isNextFetchWanted, false))
        return;
    beginFetch();
    if (m_round != Round::NextFetch)
        return;
    m_round = Round::ThisFetch;
    if (!m_fetch)
        endRound();
}

// ---- from time to time -----------------------------------------------------------------------------------

void StoreModel::elapse()
{
    if (!timer)
        return;
    timer.reset();
    wantFetch();
    if (!m_fetch)
        endRound();
    else
        m_round = m_fetch->isOutdated ? Round::NextFetch : Round::ThisFetch;
}

void StoreModel::endRound()
{
    m_round = Round::None;
    lookForUpdates(false, true);
    timer = durationOf(settings.refreshInterval);
}

void StoreModel::setAlarm()
{
    LocalDate tomorrow = LocalDate::fromDaysSinceEpoch(calendar->localDate(now).daysSinceEpoch() + 1);
    alarm = calendar->midnight(tomorrow);
}

void StoreModel::moveTo(Instant instant, bool isTold)
{
    now = instant;
    if (isTold && m_isStarted) {
        setAlarm();
        synchroniseReminders();
        wantFetch();
    }
    if (alarm && *alarm <= now)
        setAlarm();
}

void StoreModel::setOffline(bool isOffline)
{
    const bool isBack = std::exchange(m_wasNetworkDown, isOffline) && !isOffline;
    const bool isPatient = m_networkTry && *m_networkTry <= now
        && now.millisecondsSinceEpoch() < m_networkTry->millisecondsSinceEpoch() + 60'000;
    if (!m_isStarted || isOffline || !(isBack || (state.isOffline && !isPatient)))
        return;
    if (!isBack)
        m_networkTry = now;
    wantFetch();
}

// ---- what people do --------------------------------------------------------------------------------------

void StoreModel::mutate(const QString &name)
{
    state.errorMessage.reset();
    call(name);
}

void StoreModel::search(const QString &query)
{
    m_lastSearch = u"search %1 10"_s.arg(query);
    call(m_lastSearch);
}

void StoreModel::answer(qsizetype index, const Reply &reply)
{
    const Call call = m_calls.takeAt(index);
    const bool isGood = reply.profile.has_value();
    if (!isGood && isUnauthorized(reply.profile.error()) && call.name != signOutCall)
        hasSession = false; // the client forgets it
    if (call.name == profileCall) {
        m_fetch->profile = reply.profile;
        takeHalf();
    } else if (call.name == listCall) {
        m_fetch->subscriptions = reply.subscriptions;
        takeHalf();
    } else if (call.name == signInCall) {
        learnWhoSignedIn(reply.profile);
    } else if (call.name == listOfSignInCall) {
        endSignIn(reply.subscriptions);
    } else if (call.name == signOutCall) {
        endSignOut();
    } else if (call.isOutdated) {
        return;
    } else if (call.name == u"cancel" || call.name == u"uncancel") {
        if (isGood)
            wantNextFetch();
        else
            fail(reply.profile.error());
    } else if (!isGood && isUnauthorized(reply.profile.error())) {
        signOutLocally(reply.profile.error());
    } else if (call.name == m_lastSearch) {
        state.templates = reply.templates.value_or(QList<SubscriptionTemplate>());
    }
}

// ---- reminders -------------------------------------------------------------------------------------------

void StoreModel::synchroniseReminders()
{
    if (!state.user || m_isSigningOut)
        return;
    state.notificationFailureMessage.reset();
    state.notificationsSkippedOverBudget = 0;
    if (settings.notificationsEnabled)
        planReminders();
    else
        removeReminders();
}

void StoreModel::removeReminders()
{
    m_reminders.clear();
    m_shownReminders.clear();
}

void StoreModel::planReminders()
{
    const ReminderSettings wanted{settings.notificationLeadDays, state.user->defaultCurrency, webURL};
    RenewalNotificationPlanning planning
        = orbitledge::planReminders(state.subscriptions, wanted, now, *calendar, m_shownReminders);
    // What is on its way goes on where it still is of something.
    m_reminders.removeIf([&planning](const auto &reminder) {
        const QString key = reminder.key().mid(renewalIdentifierPrefix.size());
        return !reminder.value() || !planning.ledger.contains(key);
    });
    for (const RenewalNotificationPlan &plan : planning.plans) {
        m_reminders[plan.identifier] = plan.delivery.isImmediate();
        if (plan.delivery.isImmediate() && remindersFailure)
            planning.ledger.remove(plan.key); // not safe, so to be planned again
    }
    m_shownReminders = planning.ledger;
    state.notificationsSkippedOverBudget = planning.skippedOverBudget;
    if (remindersFailure)
        state.notificationFailureMessage = u"macOS rejected some reminders: "_s + *remindersFailure;
}

void StoreModel::decidePermission(qsizetype index, const tl::expected<bool, QString> &decision)
{
    const bool isForTest = m_permissionRequests.takeAt(index);
    if (!decision) {
        state.notificationActionMessage = u"Could not request permission: "_s + decision.error();
        return;
    }
    refreshNotificationAuthorization();
    settings.notificationsEnabled = *decision;
    if (*decision) {
        synchroniseReminders();
    } else {
        state.notificationActionMessage
            = u"macOS denied notifications for Orbitledge. Allow them in System Settings, then try again."_s;
    }
    if (isForTest)
        endTest();
}

void StoreModel::sendTestNotification()
{
    refreshNotificationAuthorization();
    if (authorization == NotificationAuthorization::NotDetermined)
        m_permissionRequests.append(true);
    else
        endTest();
}

void StoreModel::endTest()
{
    const bool isAllowed = authorization == NotificationAuthorization::Authorized
        || authorization == NotificationAuthorization::Provisional;
    if (!isAllowed) {
        state.notificationActionMessage
            = u"macOS is not allowing notifications from Orbitledge. Turn them on in System Settings, then try again."_s;
    } else if (remindersFailure) {
        state.notificationActionMessage = u"Could not send a test notification: "_s + *remindersFailure;
    } else if (areAlertsEnabled) {
        state.notificationActionMessage = u"Test notification sent — it should appear in a moment."_s;
    } else {
        state.notificationActionMessage
            = u"Queued, but macOS has alerts turned off for Orbitledge, so nothing will appear. Enable them under Notifications in System Settings."_s;
    }
}

void StoreModel::openNotificationSettings()
{
    if (!hasNotificationSettings)
        state.notificationActionMessage
            = u"Could not open System Settings. Open it manually and look under Notifications."_s;
}

// ---- updates ---------------------------------------------------------------------------------------------

void StoreModel::checkForUpdates(bool isForced)
{
    lookForUpdates(isForced, false);
}

void StoreModel::lookForUpdates(bool isForced, bool isByItself)
{
    if (isByItself && std::ranges::any_of(m_updateChecks, &UpdateCheck::isByItself))
        return;
    constexpr qint64 sixHours = 6LL * 60 * 60 * 1000;
    if (!isForced && settings.lastUpdateCheck) {
        const Instant due = Instant::fromMillisecondsSinceEpoch(
            settings.lastUpdateCheck->millisecondsSinceEpoch() + sixHours);
        if (*settings.lastUpdateCheck <= now && now < due)
            return;
    }
    settings.lastUpdateCheck = now;
    m_updateChecks.append(UpdateCheck{isByItself});
}

void StoreModel::answerUpdateCheck(qsizetype index, const std::optional<Release> &release)
{
    m_updateChecks.removeAt(index);
    if (!release || release->manifest.comingSoon)
        return;
    if (release->minor > std::max(0, settings.dismissedMinor.value_or(0)))
        state.availableUpdate = release->manifest;
}

void StoreModel::dismissUpdate()
{
    if (!state.availableUpdate)
        return;
    settings.dismissedMinor = state.availableUpdate->version.section(u'.', 1, 1).toInt();
    state.availableUpdate.reset();
}

} // namespace orbitledge::testing
