#include "ui/settings/SettingsWindowController.h"

#include "ui/settings/SettingsView.h"
#include "ui/settings/SettingsWindow.h"

namespace orbitledge::ui {

using namespace Qt::StringLiterals;

namespace {

const QString placementKey = u"window.OrbitledgeSettingsWindow"_s;

} // namespace

SettingsWindowController::SettingsWindowController(Parts parts)
    : m_parts(std::move(parts))
{
}

SettingsWindowController::~SettingsWindowController()
{
    if (!m_window)
        return;
    m_window->disconnect(this);
    if (m_window->isVisible())
        remember();
}

void SettingsWindowController::make()
{
    m_view = new SettingsView(*m_parts.store, m_parts.locale, m_parts.about);
    m_window = std::make_unique<SettingsWindow>(m_view);
    if (m_parts.dress)
        m_parts.dress(m_window.get());
    m_window->place(
        m_parts.defaults ? m_parts.defaults->read<QString>(placementKey).value_or(QString()) : QString());
    connect(m_window.get(), &SettingsWindow::activated, m_view, &SettingsView::askPlatform);
    connect(m_window.get(), &SettingsWindow::hidden, this, &SettingsWindowController::remember);
    connect(m_window.get(), &SettingsWindow::quitRequested, this, &SettingsWindowController::quitRequested);
    connect(m_view, &SettingsView::quitRequested, this, &SettingsWindowController::quitRequested);
}

void SettingsWindowController::show()
{
    if (!m_window)
        make();
    if (m_window->isMinimized())
        m_window->showNormal();
    else
        m_window->show();
    m_window->raise();
    m_window->activateWindow();
    m_view->askPlatform();
}

void SettingsWindowController::remember() const
{
    if (m_parts.defaults)
        m_parts.defaults->setValue(placementKey, m_window->placement());
}

} // namespace orbitledge::ui
