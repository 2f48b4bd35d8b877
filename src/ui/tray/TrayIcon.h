#pragma once

#include "presentation/MenuBarContent.h"
#include "ui/kit/Palette.h"
#include "ui/tray/PanelPlacement.h"
#include "ui/tray/TrayHost.h"

#include <QMenu>
#include <QObject>
#include <QSystemTrayIcon>

#include <memory>

class QAction;

namespace orbitledge::ui {

/// The icon in the tray, whenever there is a tray. Everything is reachable from its menu as well, since some
/// desktops show nothing else.
class TrayIcon : public QObject {
    Q_OBJECT

public:
    /// The host outlives it, and is started by its owner.
    explicit TrayIcon(TrayHost &host, QObject *parent = nullptr);
    ~TrayIcon() override;

    void setContent(const MenuBarContent &content);
    /// Of its menu.
    void setColorScheme(ColorScheme colorScheme);
    /// Of what it stands on.
    void setBarColorScheme(ColorScheme colorScheme);

    /// Whether a host is there that shows it.
    [[nodiscard]] bool isShown() const;

Q_SIGNALS:
    /// Somebody clicked it: what is open is to close, and the other way round.
    void activated(const orbitledge::ui::PanelAnchor &anchor);
    /// Chosen in the menu.
    void openRequested(const orbitledge::ui::PanelAnchor &anchor);
    void settingsRequested();
    void quitRequested();

    void isShownChanged();

private:
    void makeMenu();
    void follow();
    void show();
    void update();
    void activate(QSystemTrayIcon::ActivationReason reason);
    [[nodiscard]] PanelAnchor anchor() const;

    TrayHost &m_host;
    MenuBarContent m_content;
    ColorScheme m_colorScheme = ColorScheme::Light;
    ColorScheme m_barColorScheme = ColorScheme::Dark;
    QMenu m_menu;
    QAction *m_nextRenewal = nullptr;
    /// Not before there is a host.
    std::unique_ptr<QSystemTrayIcon> m_icon;
    /// Which of the toolkit's two ways it was made in.
    TrayHost::Kind m_kind = TrayHost::Kind::None;
    bool m_wasShown = false;
};

} // namespace orbitledge::ui
