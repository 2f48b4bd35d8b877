#include "ui/OrbitledgeApp.h"

#include "presentation/MenuBarContent.h"
#include "presentation/PanelScreen.h"
#include "ui/settings/SettingsWindow.h" // IWYU pragma: keep
#include "ui/tray/BarColors.h"
#include "ui/tray/WindowActivation.h"

#include <QCursor>

#include <chrono>
#include <utility>

namespace orbitledge::ui {

using namespace std::chrono_literals;

namespace {

/// A desktop that is only just starting has no tray yet.
constexpr auto trayPatience = 1500ms;

PanelAnchor pointerAnchor()
{
    return {.icon = std::nullopt, .pointer = QCursor::pos()};
}

} // namespace

OrbitledgeApp::OrbitledgeApp(Parts parts)
    : m_parts(std::move(parts))
    , m_delegate(m_parts.notifications, m_parts.workspace)
    , m_appearance(m_parts.settings, m_parts.preferences, m_parts.style)
    , m_money(m_parts.locale)
    , m_host(TrayHost::windowsAreOnX11())
    , m_icon(m_host)
    , m_panel(new PanelView(*m_parts.store, m_parts.locale, m_parts.logos.get()))
    , m_window(std::make_unique<PanelWindow>(m_panel))
    , m_settings({
          .store = m_parts.store,
          .defaults = m_parts.defaults,
          .locale = m_parts.locale,
          .about = m_parts.about,
          .dress = [this](QWidget *window) { m_appearance.applyTo(window); },
      })
{
    if (m_parts.notice)
        m_panel->setNotice(*m_parts.notice);
    m_appearance.applyTo(m_window.get());
    updateIconColors();
    m_window->setTakesEscape([this] { return m_panel->takeEscape(); });
    m_iconUpdate.setSingleShot(true);
    m_iconUpdate.setInterval(0);

    connect(&m_appearance, &WindowAppearanceApplier::changed, this, &OrbitledgeApp::updateIconColors);
    connect(&m_iconUpdate, &QTimer::timeout, this, &OrbitledgeApp::updateIcon);
    connect(m_parts.store.get(), &AppStore::changed, &m_iconUpdate, qOverload<>(&QTimer::start));
    if (m_parts.logos)
        connect(m_parts.store.get(), &AppStore::forgotten, m_parts.logos.get(), &LogoImages::clear);
    connect(&m_icon, &TrayIcon::activated, this, [this](const PanelAnchor &anchor) {
        m_window->setManner(PanelWindow::mannerFor(m_icon.isShown()));
        m_window->toggle(anchor);
    });
    connect(&m_icon, &TrayIcon::openRequested, this, [this](const PanelAnchor &anchor) { openAt(anchor); });
    connect(&m_icon, &TrayIcon::settingsRequested, this, &OrbitledgeApp::openSettings);
    connect(&m_icon, &TrayIcon::quitRequested, this, &OrbitledgeApp::quitRequested);
    connect(m_window.get(), &PanelWindow::quitRequested, this, &OrbitledgeApp::quitRequested);
    connect(m_panel, &PanelView::settingsRequested, this, &OrbitledgeApp::openSettings);
    connect(m_panel, &PanelView::quitRequested, this, &OrbitledgeApp::quitRequested);
    connect(&m_settings, &SettingsWindowController::quitRequested, this, &OrbitledgeApp::quitRequested);
    // Each time that it is opened the data are fetched anew.
    connect(m_window.get(), &PanelWindow::shown, this, [this] {
        if (!waitsForTurn())
            m_parts.store->start();
    });
    connect(m_window.get(), &PanelWindow::hidden, this, [this] { m_isToAdd = false; });
    connect(m_parts.store.get(), &AppStore::changed, this, &OrbitledgeApp::presentQuickAddWhenPossible,
        Qt::QueuedConnection);
    m_trayPatience.setSingleShot(true);
    m_trayPatience.setInterval(trayPatience);
    connect(&m_icon, &TrayIcon::isShownChanged, this, &OrbitledgeApp::openWhenTrayIsKnown);
    connect(&m_trayPatience, &QTimer::timeout, this, &OrbitledgeApp::openWhenTrayIsKnown);
}

OrbitledgeApp::~OrbitledgeApp() = default;

void OrbitledgeApp::launch(Start start)
{
    updateIcon();
    m_trayPatience.start();
    if (start == Start::Open)
        openWhenPossible(QString());
    if (m_parts.turn)
        beginInTurn(this);
    else
        begin();
    m_host.start();
}

QCoro::Task<void> OrbitledgeApp::beginInTurn(QPointer<OrbitledgeApp> app)
{
    const std::shared_ptr<Completion> turn = app->m_parts.turn;
    co_await Completion::wait(turn);
    if (app)
        app->begin();
}

void OrbitledgeApp::begin()
{
    m_hasBegun = true;
    m_parts.store->start();
    if (std::exchange(m_isToShowSettings, false))
        showSettings(std::exchange(m_activationToken, {}));
}

void OrbitledgeApp::perform(ApplicationAction action, const QString &activationToken)
{
    switch (action) {
    case ApplicationAction::Open:
        openWhenPossible(activationToken);
        break;
    case ApplicationAction::QuickAdd:
        m_isToAdd = true;
        openWhenPossible(activationToken);
        presentQuickAddWhenPossible();
        break;
    case ApplicationAction::Settings:
        showSettings(activationToken);
        break;
    case ApplicationAction::Quit:
        Q_EMIT quitRequested();
        break;
    }
}

void OrbitledgeApp::openPage(const QString &address, const QString &activationToken) const
{
    m_delegate.openPage(address, activationToken);
}

void OrbitledgeApp::openWhenPossible(const QString &activationToken)
{
    if (m_trayPatience.isActive() && !m_icon.isShown()) {
        m_isToOpen = true;
        m_activationToken = activationToken;
    } else {
        openAt(pointerAnchor(), activationToken);
    }
}

void OrbitledgeApp::openWhenTrayIsKnown()
{
    if (m_isToOpen && (m_icon.isShown() || !m_trayPatience.isActive()))
        openAt(pointerAnchor(), std::exchange(m_activationToken, {}));
}

void OrbitledgeApp::openPanel()
{
    openAt(pointerAnchor());
}

void OrbitledgeApp::openSettings()
{
    showSettings(QString());
}

/// They look at the reminders, which are the other process's as long as it is at work.
void OrbitledgeApp::showSettings(const QString &activationToken)
{
    if (waitsForTurn()) {
        m_isToShowSettings = true;
        m_activationToken = activationToken;
        return;
    }
    m_settings.show();
    bringForward(*m_settings.window(), activationToken);
}

/// Only where somebody is signed in; as long as that is not known, it is waited for.
void OrbitledgeApp::presentQuickAddWhenPossible()
{
    const AppState &state = m_parts.store->state();
    if (!m_isToAdd || state.authState == AuthState::Checking)
        return;
    m_isToAdd = false;
    if (state.authState == AuthState::SignedIn && !state.isQuickAddPresented)
        m_parts.store->setQuickAddPresented(true);
}

void OrbitledgeApp::openAt(const PanelAnchor &anchor, const QString &activationToken)
{
    m_isToOpen = false;
    m_window->setManner(PanelWindow::mannerFor(m_icon.isShown()));
    m_window->showAt(anchor, activationToken);
}

void OrbitledgeApp::updateIcon()
{
    const AppStore &store = *m_parts.store;
    m_icon.setContent(menuBarOf(store.state().authState, store.timeline(), panelCurrency(store.state()),
        m_parts.settings->showMenuBadge(), m_money));
}

void OrbitledgeApp::updateIconColors()
{
    m_icon.setColorScheme(m_appearance.colorScheme());
    m_icon.setBarColorScheme(
        barColorScheme(m_parts.desktop.value_or(QByteArray()), m_appearance.desktopColorScheme()));
}

} // namespace orbitledge::ui
