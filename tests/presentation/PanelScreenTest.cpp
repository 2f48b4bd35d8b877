#include "presentation/PanelScreen.h"

#include "support/SampleRecords.h"
#include "support/TestMain.h"

using namespace orbitledge;
using namespace orbitledge::testing;
using namespace Qt::StringLiterals;

class PanelScreenTest : public QObject {
    Q_OBJECT

private:
    static AppState stateOf(AuthState auth)
    {
        AppState state;
        state.authState = auth;
        return state;
    }

private Q_SLOTS:
    void shouldFollowFromTheStateAlone_data()
    {
        QTest::addColumn<AppState>("state");
        QTest::addColumn<PanelScreen>("screen");
        const auto row = [](const char *name, const AppState &state, PanelScreen screen) {
            QTest::newRow(name) << state << screen;
        };
        AppState state = stateOf(AuthState::Checking);
        row("just started", state, PanelScreen::CheckingSession);
        state.refreshState = RefreshState::Loading;
        row("the first fetch", state, PanelScreen::CheckingSession);
        state.isOffline = true;
        row("offline, and without a word", state, PanelScreen::SessionRecovery);
        state.errorMessage = u"It is dark."_s;
        row("offline", state, PanelScreen::SessionRecovery);
        state.isOffline = false;
        row("an error", state, PanelScreen::SessionRecovery);
        state.isQuickAddPresented = true;
        row("quick add is for those who are signed in", state, PanelScreen::SessionRecovery);

        state.authState = AuthState::SignedOut;
        row("signed out, whatever else", state, PanelScreen::SignIn);
        row("signed out", stateOf(AuthState::SignedOut), PanelScreen::SignIn);

        state.authState = AuthState::SignedIn;
        row("quick add", state, PanelScreen::QuickAdd);
        state.isQuickAddPresented = false;
        row("signed in, with an error", state, PanelScreen::Timeline);
        row("signed in", stateOf(AuthState::SignedIn), PanelScreen::Timeline);
    }
    void shouldFollowFromTheStateAlone()
    {
        QFETCH(AppState, state);
        QFETCH(PanelScreen, screen);
        QCOMPARE(panelScreenOf(state), screen);
    }

    void shouldSayWhyTheSessionCouldNotBeChecked()
    {
        AppState state = stateOf(AuthState::Checking);
        state.isOffline = true;
        QCOMPARE(recoveryMessage(state), u"Orbitledge couldn’t check your saved session."_s);
        state.errorMessage = u"The request timed out."_s;
        QCOMPARE(recoveryMessage(state), u"The request timed out."_s);
    }

    void shouldRetryWhileSomethingIsFetched()
    {
        AppState state = stateOf(AuthState::Checking);
        QVERIFY(!isRetrying(state));
        state.refreshState = RefreshState::Loading;
        QVERIFY(isRetrying(state));
        state.refreshState = RefreshState::Refreshing;
        QVERIFY(isRetrying(state));
    }

    void shouldShowWhatThereIsUnderTheBanner()
    {
        AppState state = stateOf(AuthState::SignedIn);
        TimelineSnapshot nothing;
        QCOMPARE(timelineContentOf(state, nothing), TimelineContent::Empty);
        state.refreshState = RefreshState::Loading;
        QCOMPARE(timelineContentOf(state, nothing), TimelineContent::Loading);
        state.refreshState = RefreshState::Refreshing;
        QCOMPARE(timelineContentOf(state, nothing), TimelineContent::Empty);

        TimelineSnapshot something;
        something.sections.append(TimelineSection{.id = u"week"_s, .title = u"This week"_s, .entries = {}});
        QCOMPARE(timelineContentOf(state, something), TimelineContent::Sections);
        state.refreshState = RefreshState::Loading;
        state.subscriptions.append(sampleSubscription());
        QCOMPARE(timelineContentOf(state, something), TimelineContent::Sections);
    }

    void shouldCountInEurosWithoutAProfile()
    {
        AppState state = stateOf(AuthState::SignedIn);
        QCOMPARE(panelCurrency(state), u"EUR"_s);
        state.user = sampleProfile();
        state.user->defaultCurrency = u"CHF"_s;
        QCOMPARE(panelCurrency(state), u"CHF"_s);
    }
};

ORBITLEDGE_TEST_MAIN(PanelScreenTest)
#include "PanelScreenTest.moc"
