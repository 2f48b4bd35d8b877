#include "ui/OrbitledgeApp.h"

#include "presentation/MenuBarContent.h"
#include "presentation/PanelScreen.h"
#include "ui/tray/BarColors.h"

#include <QCursor>

#include <chrono>

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
    if (!m_parts.notice.isEmpty())
        m_panel->setNotice(m_parts.notice);
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
    connect(&m_icon, &TrayIcon::openRequested, this, &OrbitledgeApp::openAt);
    connect(&m_icon, &TrayIcon::settingsRequested, this, &OrbitledgeApp::openSettings);
    connect(&m_icon, &TrayIcon::quitRequested, this, &OrbitledgeApp::quitRequested);
    connect(m_window.get(), &PanelWindow::quitRequested, this, &OrbitledgeApp::quitRequested);
    connect(m_panel, &PanelView::settingsRequested, this, &OrbitledgeApp::openSettings);
    connect(m_panel, &PanelView::quitRequested, this, &OrbitledgeApp::quitRequested);
    connect(&m_settings, &SettingsWindowController::quitRequested, this, &OrbitledgeApp::quitRequested);
    // Each time that it is opened the data are fetched anew.
    connect(m_window.get(), &PanelWindow::shown, this, [this] { m_parts.store->start(); });
}

OrbitledgeApp::~OrbitledgeApp() = default;

void OrbitledgeApp::launch(Start start)
{
    m_parts.store->start();
    updateIcon();
    m_isToOpen = start == Start::Open;
    if (m_isToOpen) {
        connect(&m_icon, &TrayIcon::isShownChanged, this, &OrbitledgeApp::openWhenTrayIsKnown);
        QTimer::singleShot(trayPatience, this, [this] {
            if (m_isToOpen)
                openPanel();
        });
    }
    m_host.start();
}

void OrbitledgeApp::openWhenTrayIsKnown()
{
    if (m_isToOpen && m_icon.isShown())
        openPanel();
}

void OrbitledgeApp::openPanel()
{
    openAt(pointerAnchor());
}

void OrbitledgeApp::openSettings()
{
    m_settings.show();
}

void OrbitledgeApp::openAt(const PanelAnchor &anchor)
{
    m_isToOpen = false;
    m_window->setManner(PanelWindow::mannerFor(m_icon.isShown()));
    m_window->showAt(anchor);
}

void OrbitledgeApp::updateIcon()
{
    const AppStore &store = *m_parts.store;
    m_icon.setContent(menuBarOf(
        store.timeline(), panelCurrency(store.state()), m_parts.settings->showMenuBadge(), m_money));
}

void OrbitledgeApp::updateIconColors()
{
    m_icon.setColorScheme(m_appearance.colorScheme());
    m_icon.setBarColorScheme(barColorScheme(m_parts.desktop, m_appearance.desktopColorScheme()));
}

} // namespace orbitledge::ui
