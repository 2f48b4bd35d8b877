#include "state/StoreSession.h"

#include "support/CommandHarness.h"
#include "support/SampleRecords.h"
#include "support/TestMain.h"

using namespace orbitledge;
using namespace orbitledge::testing;
using namespace Qt::StringLiterals;

/// One store that is asked for several things, as the program with windows has it. What one that is made anew
/// says is tested with the commands.
class StoreSessionTest : public QObject {
    Q_OBJECT

private:
    std::optional<CommandHarness> m_harness;
    std::optional<StoreSession::Parts> m_parts;
    std::optional<StoreSession> m_session;

    SessionOutcome refresh() { return QCoro::waitFor(m_session->perform(RefreshRequest())); }

    /// Of somebody who is signed in, up to where the reminders are forgotten.
    QCoro::Task<void> beginSigningOut()
    {
        m_harness->client->hasSession = true;
        if (!refresh().isDone)
            qFatal("nothing is fetched");
        m_harness->center->isSlowToForget = true;
        auto signingOut = m_parts->store->signOut();
        if (!QTest::qWaitFor([this] { return m_harness->center->isForgetting(); }))
            qFatal("the reminders stay");
        return signingOut;
    }

private Q_SLOTS:
    void init()
    {
        m_harness.emplace();
        m_harness->client->profile = sampleProfile();
        m_harness->client->subscriptions = sampleSnapshot(3).subscriptions;
        m_parts = m_harness->makeStore();
        m_session.emplace(*m_parts);
    }
    void cleanup()
    {
        m_session.reset();
        m_parts.reset();
        m_harness.reset();
    }

    void shouldSayWhyAFetchFailedAlsoAfterOthers()
    {
        m_harness->client->hasSession = false;
        QCOMPARE(refresh().problem, u"You are not signed in."_s);
        m_harness->client->hasSession = true;
        const APIError offline(
            APIError::Transport{.message = u"The Internet connection appears to be offline."_s});
        m_harness->client->profile = tl::make_unexpected(offline);
        for (int i = 0; i < 2; ++i) {
            const SessionOutcome outcome = refresh();
            QVERIFY(!outcome.isDone);
            QCOMPARE(outcome.problem, offline.errorDescription());
        }
        m_harness->client->hasSession = false;
        QCOMPARE(refresh().problem, u"You are not signed in."_s);
        m_harness->client->hasSession = true;
        m_harness->client->profile = sampleProfile();
        const SessionOutcome outcome = refresh();
        QVERIFY(outcome.isDone);
        QCOMPARE(outcome.subscriptionCount, 3);
    }

    void shouldNeverFailWithoutAReason()
    {
        m_harness->client->hasSession = true;
        m_harness->client->profile
            = tl::make_unexpected(APIError(APIError::RequestFailed{.statusCode = 500, .message = u""_s}));
        QCOMPARE(refresh().problem, u"The service gives no reason."_s);
    }

    void shouldFetchNothingForWhoSignsOut()
    {
        auto signingOut = beginSigningOut();
        auto refreshing = m_session->perform(RefreshRequest());
        m_harness->center->forgetNow();
        const SessionOutcome outcome = QCoro::waitFor(std::move(refreshing));
        QCoro::waitFor(std::move(signingOut));
        QVERIFY(!outcome.isDone);
        QCOMPARE(outcome.problem, u"You are not signed in."_s);
    }

    void shouldFetchForWhoSignsInAfterAnother()
    {
        auto signingOut = beginSigningOut();
        auto signingIn = m_parts->store->signIn(u"a@b"_s, u"p"_s);
        m_harness->client->subscriptions = sampleSnapshot(5).subscriptions;
        auto refreshing = m_session->perform(RefreshRequest());
        m_harness->client->hasSession = true; // as after signing in
        m_harness->center->isSlowToForget = false;
        m_harness->center->forgetNow();
        const SessionOutcome outcome = QCoro::waitFor(std::move(refreshing));
        QCoro::waitFor(std::move(signingOut));
        QVERIFY(QCoro::waitFor(std::move(signingIn)));
        QVERIFY2(outcome.isDone, qPrintable(outcome.problem));
        QCOMPARE(outcome.subscriptionCount, 5);
    }
};

ORBITLEDGE_TEST_MAIN(StoreSessionTest)
#include "StoreSessionTest.moc"
