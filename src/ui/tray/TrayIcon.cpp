#include "ui/tray/TrayIcon.h"

#include "ui/tray/MenuBarLabel.h"

#include <QAction>
#include <QCursor>

namespace orbitledge::ui {

using namespace Qt::StringLiterals;

namespace {

/// In a menu, an ampersand marks the letter after it.
QString menuTextOf(QString text)
{
    return text.replace(u'&', u"&&"_s);
}

/// Hosts show it, and tell it to those who do not see the icon as its title.
QString toolTipOf(const MenuBarContent &content)
{
    QStringList lines{u"Orbitledge"_s};
    if (!content.badgeLabel.isEmpty())
        lines.append(content.badgeLabel);
    if (!content.nextRenewal.isEmpty())
        lines.append(content.nextRenewal);
    return lines.join(u'\n');
}

} // namespace

TrayIcon::TrayIcon(TrayHost &host, QObject *parent)
    : QObject(parent)
    , m_host(host)
{
    makeMenu();
    applyColorScheme(m_menu, m_colorScheme);
    connect(&m_host, &TrayHost::changed, this, &TrayIcon::follow);
    follow();
}

TrayIcon::~TrayIcon() = default;

void TrayIcon::makeMenu()
{
    QAction *const open = m_menu.addAction(u"Open Orbitledge"_s);
    connect(open, &QAction::triggered, this, [this] { Q_EMIT openRequested(anchor()); });
    m_menu.setDefaultAction(open);
    m_nextRenewal = m_menu.addAction(QString());
    m_nextRenewal->setEnabled(false);
    m_nextRenewal->setVisible(false);
    m_menu.addSeparator();
    connect(m_menu.addAction(u"Settings"_s), &QAction::triggered, this, &TrayIcon::settingsRequested);
    connect(m_menu.addAction(u"Quit"_s), &QAction::triggered, this, &TrayIcon::quitRequested);
}

void TrayIcon::setContent(const MenuBarContent &content)
{
    if (m_content == content)
        return; // each change is sent to the host
    m_content = content;
    m_nextRenewal->setText(menuTextOf(content.nextRenewal));
    m_nextRenewal->setVisible(!content.nextRenewal.isEmpty());
    update();
}

void TrayIcon::setColorScheme(ColorScheme colorScheme)
{
    if (m_colorScheme == colorScheme)
        return;
    m_colorScheme = colorScheme;
    applyColorScheme(m_menu, colorScheme);
}

void TrayIcon::setBarColorScheme(ColorScheme colorScheme)
{
    if (m_barColorScheme == colorScheme)
        return;
    m_barColorScheme = colorScheme;
    update();
}

bool TrayIcon::isShown() const
{
    return m_icon && m_host.has(m_kind);
}

void TrayIcon::follow()
{
    if (!m_icon && m_host.kind() != TrayHost::Kind::None)
        show();
    if (std::exchange(m_wasShown, isShown()) != isShown())
        Q_EMIT isShownChanged();
}

void TrayIcon::show()
{
    m_kind = m_host.kind();
    m_icon = std::make_unique<QSystemTrayIcon>();
    connect(m_icon.get(), &QSystemTrayIcon::activated, this, &TrayIcon::activate);
    m_icon->setContextMenu(&m_menu);
    update();
    m_icon->show();
}

void TrayIcon::update()
{
    if (!m_icon)
        return;
    m_icon->setIcon(MenuBarLabel(m_content.badge, m_barColorScheme).icon());
    m_icon->setToolTip(toolTipOf(m_content));
}

void TrayIcon::activate(QSystemTrayIcon::ActivationReason reason)
{
    // In a tray of windows the second of two quick clicks comes as a double one, and not as a click besides.
    if (reason == QSystemTrayIcon::Trigger || reason == QSystemTrayIcon::DoubleClick
        || reason == QSystemTrayIcon::MiddleClick)
        Q_EMIT activated(anchor());
}

PanelAnchor TrayIcon::anchor() const
{
    PanelAnchor anchor{.icon = std::nullopt, .pointer = QCursor::pos()};
    if (const QRect place = m_icon ? m_icon->geometry() : QRect(); !place.isEmpty())
        anchor.icon = place;
    return anchor;
}

} // namespace orbitledge::ui
