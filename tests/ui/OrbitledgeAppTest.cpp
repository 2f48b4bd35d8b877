#include "ui/OrbitledgeApp.h"

#include "support/FakeDesktopPreferences.h"
#include "support/PanelScenes.h"
#include "support/WidgetTestMain.h"
#include "ui/settings/SettingsWindow.h"

#include <QSignalSpy>

using namespace orbitledge;
using namespace orbitledge::testing;
using namespace orbitledge::ui;
using namespace Qt::StringLiterals;

/// Without a bus and without a tray.
class OrbitledgeAppTest : public QObject {
    Q_OBJECT

private:
    std::optional<StoreDesk> m_desk;
    std::shared_ptr<AppStore> m_store;
    std::shared_ptr<FakeDesktopPreferences> m_preferences;
    std::unique_ptr<OrbitledgeApp> m_app;

    void make(std::shared_ptr<Completion> turn = nullptr)
    {
        m_desk.emplace();
        m_desk->api->isQuick = true;
        m_desk->api->profile = sampleAmerican();
        m_desk->api->subscriptions = sampleList();
        m_desk->make();
        m_store = std::move(m_desk->store);
        m_preferences = std::make_shared<FakeDesktopPreferences>();
        m_app = std::make_unique<OrbitledgeApp>(OrbitledgeApp::Parts{
            .store = m_store,
            .settings = m_desk->settings,
            .notifications = m_desk->center,
            .workspace = m_desk->workspace,
            .preferences = m_preferences,
            .locale = localeNamed("en_US"),
            .logos = nullptr,
            .style = nullptr,
            .turn = std::move(turn),
        });
    }

    [[nodiscard]] qsizetype fetches() const { return m_desk->api->calls.count(u"fetchProfile"_s); }

private Q_SLOTS:
    void cleanup()
    {
        m_app.reset();
        m_store.reset();
        m_desk.reset();
    }

    void shouldWorkWithoutAnyoneOpeningThePanel()
    {
        make();
        m_app->launch(OrbitledgeApp::Start::Background);
        QTRY_COMPARE(m_store->state().authState, AuthState::SignedIn);
        QCOMPARE(fetches(), 1);
        QVERIFY(!m_app->panelWindow().isVisible());
        // Also after the time in which a tray would be waited for.
        QVERIFY(!QTest::qWaitFor([this] { return m_app->panelWindow().isVisible(); }, 2000));
    }

    void shouldOpenAWindowWhereThereIsNoTray()
    {
        make();
        m_app->launch(OrbitledgeApp::Start::Open);
        QTRY_VERIFY(m_app->panelWindow().isVisible());
        QCOMPARE(m_app->panelWindow().manner(), PanelWindow::Manner::Window);
    }

    void shouldFetchAnewEachTimeThatThePanelIsShown()
    {
        make();
        m_app->launch(OrbitledgeApp::Start::Background);
        QTRY_COMPARE(m_store->state().authState, AuthState::SignedIn);
        m_desk->settle(); // one that is under way would do for both
        m_app->openPanel();
        QTRY_COMPARE(fetches(), 2);
        m_desk->settle();
        m_app->panelWindow().hide();
        m_app->openPanel();
        QTRY_COMPARE(fetches(), 3);
    }

    void shouldCloseOnEscapeWhereNothingInsideTakesItFirst()
    {
        make();
        m_app->launch(OrbitledgeApp::Start::Background);
        QTRY_COMPARE(m_store->state().authState, AuthState::SignedIn);
        m_app->openPanel();
        m_store->setQuickAddPresented(true);
        QTest::keyClick(&m_app->panelWindow(), Qt::Key_Escape);
        QVERIFY(!m_store->state().isQuickAddPresented);
        QVERIFY(m_app->panelWindow().isVisible());
        QTest::keyClick(&m_app->panelWindow(), Qt::Key_Escape);
        QVERIFY(!m_app->panelWindow().isVisible());
    }

    void shouldQuitByTheKeyboard()
    {
        make();
        m_app->launch(OrbitledgeApp::Start::Background);
        m_app->openPanel();
        QVERIFY(QTest::qWaitForWindowActive(&m_app->panelWindow()));
        QSignalSpy quit(m_app.get(), &OrbitledgeApp::quitRequested);
        QTest::keyClick(&m_app->panelWindow(), Qt::Key_Q, Qt::ControlModifier);
        QCOMPARE(quit.size(), 1);
    }

    void shouldApplyTheChosenAppearanceAtOnce()
    {
        make();
        m_app->openPanel();
        m_desk->settings->setAppearance(Appearance::Dark);
        QCOMPARE(colorSchemeOf(m_app->panelWindow().palette()), ColorScheme::Dark);
        m_desk->settings->setAppearance(Appearance::Light);
        QCOMPARE(colorSchemeOf(m_app->panelWindow().palette()), ColorScheme::Light);
    }

    void shouldOpenTheSettingsFromThePanel()
    {
        make();
        m_app->launch(OrbitledgeApp::Start::Background);
        QTRY_COMPARE(m_store->state().authState, AuthState::SignedIn);
        m_app->openPanel();
        QVERIFY(QTest::qWaitForWindowActive(&m_app->panelWindow()));
        QVERIFY(m_app->settingsWindow() == nullptr);
        QTest::keyClick(&m_app->panelWindow(), Qt::Key_Comma, Qt::ControlModifier);
        QTRY_VERIFY(m_app->settingsWindow() != nullptr && m_app->settingsWindow()->isActiveWindow());
        // Themed at once, and by what is chosen there.
        m_desk->settings->setAppearance(Appearance::Dark);
        QCOMPARE(colorSchemeOf(m_app->settingsWindow()->palette()), ColorScheme::Dark);
        m_desk->settings->setAppearance(Appearance::Light);
        QCOMPARE(colorSchemeOf(m_app->settingsWindow()->palette()), ColorScheme::Light);
        QSignalSpy quit(m_app.get(), &OrbitledgeApp::quitRequested);
        QTest::keyClick(m_app->settingsWindow(), Qt::Key_Q, Qt::ControlModifier);
        QCOMPARE(quit.size(), 1);
    }

    void shouldLeaveTheAppearanceToTheDesktopWhereNoneIsChosen()
    {
        make();
        m_app->openSettings();
        m_desk->settings->setAppearance(Appearance::Dark);
        m_desk->settings->setAppearance(Appearance::System);
        QCOMPARE(colorSchemeOf(m_app->settingsWindow()->palette()), ColorScheme::Light);
        m_preferences->preferredColors = DesktopPreferences::Colors::Dark;
        m_preferences->announce();
        QCOMPARE(colorSchemeOf(m_app->settingsWindow()->palette()), ColorScheme::Dark);
    }

    void shouldOpenTheFormForAddingAsSoonAsItIsKnownThatSomebodyIsSignedIn()
    {
        make();
        m_app->launch(OrbitledgeApp::Start::Background);
        m_app->perform(ApplicationAction::QuickAdd, QString());
        QVERIFY(!m_store->state().isQuickAddPresented);
        QTRY_VERIFY(m_store->state().isQuickAddPresented);
        QTRY_VERIFY(m_app->panelWindow().isVisible());
        // Asked for again, what is being written stays.
        m_desk->settle();
        QSignalSpy changes(m_store.get(), &AppStore::changed);
        m_app->perform(ApplicationAction::QuickAdd, QString());
        QCOMPARE(changes.size(), 0);
    }

    void shouldNotOpenTheFormForAddingWhereNobodyIsSignedIn()
    {
        make();
        m_desk->api->hasSession = false;
        m_app->launch(OrbitledgeApp::Start::Background);
        m_app->perform(ApplicationAction::QuickAdd, QString());
        QTRY_COMPARE(m_store->state().authState, AuthState::SignedOut);
        QTRY_VERIFY(m_app->panelWindow().isVisible());
        QVERIFY(!m_store->state().isQuickAddPresented);
        // Nor later, when somebody has signed in for something else.
        m_desk->api->hasSession = true;
        QCoro::waitFor(m_store->refresh());
        QCOMPARE(m_store->state().authState, AuthState::SignedIn);
        m_desk->settle();
        QVERIFY(!m_store->state().isQuickAddPresented);
    }

    void shouldDoWhatIsAskedForFromOutside()
    {
        make();
        m_app->launch(OrbitledgeApp::Start::Background);
        QTRY_COMPARE(m_store->state().authState, AuthState::SignedIn);
        m_app->perform(ApplicationAction::Open, QString());
        QTRY_VERIFY(m_app->panelWindow().isVisible());
        m_app->perform(ApplicationAction::Settings, QString());
        QVERIFY(m_app->settingsWindow()->isVisible());
        QSignalSpy quit(m_app.get(), &OrbitledgeApp::quitRequested);
        m_app->perform(ApplicationAction::Quit, QString());
        QCOMPARE(quit.size(), 1);
    }

    void shouldNotTouchTheSessionBeforeItsTurn()
    {
        const auto turn = std::make_shared<Completion>();
        make(turn);
        m_app->launch(OrbitledgeApp::Start::Background);
        m_app->perform(ApplicationAction::Open, QString());
        m_app->perform(ApplicationAction::Settings, QString());
        QTRY_VERIFY(m_app->panelWindow().isVisible());
        QVERIFY(m_desk->api->calls.isEmpty());
        QVERIFY(m_desk->center->calls.isEmpty());
        QVERIFY(m_app->settingsWindow() == nullptr);
        turn->complete();
        QTRY_COMPARE(m_store->state().authState, AuthState::SignedIn);
        QTRY_VERIFY(m_app->settingsWindow() != nullptr && m_app->settingsWindow()->isVisible());
    }

    void shouldMayBeDestroyedAtAnyTime()
    {
        make();
        m_app->launch(OrbitledgeApp::Start::Open);
        m_app.reset();
        make();
        m_app->launch(OrbitledgeApp::Start::Open);
        m_app->openPanel();
        m_app->openSettings();
        m_app.reset();
    }
};

ORBITLEDGE_WIDGET_TEST_MAIN(OrbitledgeAppTest)
#include "OrbitledgeAppTest.moc"
