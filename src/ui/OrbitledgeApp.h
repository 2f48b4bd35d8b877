#pragma once

#include "locale/Locale.h"
#include "locale/MoneyFormatter.h"
#include "platform/ApplicationService.h"
#include "platform/Completion.h"
#include "platform/DesktopPreferences.h"
#include "platform/UserDefaults.h"
#include "platform/UserNotificationCenter.h"
#include "presentation/SettingsContent.h"
#include "state/AppStore.h"
#include "ui/AppDelegate.h"
#include "ui/WindowAppearanceApplier.h"
#include "ui/panel/PanelView.h"
#include "ui/settings/SettingsWindowController.h"
#include "ui/tray/PanelWindow.h"
#include "ui/tray/TrayHost.h"
#include "ui/tray/TrayIcon.h"

#include <QObject>
#include <QPointer>
#include <QTimer>

#include <memory>
#include <optional>

namespace orbitledge::ui {

/// The program with its face: the icon in the tray, the panel that it opens, and what answers for
/// notifications.
class OrbitledgeApp : public QObject {
    Q_OBJECT

public:
    struct Parts {
        std::shared_ptr<AppStore> store;
        std::shared_ptr<AppSettings> settings;
        std::shared_ptr<UserNotificationCenter> notifications;
        std::shared_ptr<Workspace> workspace;
        std::shared_ptr<DesktopPreferences> preferences;
        Locale locale;
        /// May be absent; then logos are initials.
        std::shared_ptr<LogoImages> logos;
        /// The application's.
        Style *style = nullptr;
        /// Remembers where windows were; may be absent.
        std::shared_ptr<UserDefaults> defaults = nullptr;
        AboutProgram about = {};
        /// What in this session keeps it from working, as a sentence for people; absent where nothing does.
        std::optional<QString> notice = std::nullopt;
        /// As XDG_CURRENT_DESKTOP names it; may be absent.
        std::optional<QByteArray> desktop = std::nullopt;
        /// From then on the session is this program's to work with: until then another process is at work on
        /// it. May be absent; then it is from the start.
        std::shared_ptr<Completion> turn = nullptr;
    };

    enum class Start {
        /// Somebody wants to see it.
        Open,
        /// Only the icon appears, as at login.
        Background,
    };

    explicit OrbitledgeApp(Parts parts);
    ~OrbitledgeApp() override;

    /// Begins the store's work, whether or not the panel is ever opened, and shows what is to be shown. Call
    /// it once, with an event loop to come.
    void launch(Start start);

    void openPanel();

    void openSettings();

    /// Does what was asked for from outside. A tray that is only just coming is waited for a moment, so that
    /// the panel opens beside its icon.
    void perform(ApplicationAction action, const QString &activationToken);
    /// Opens the page of a reminder.
    void openPage(const QString &address, const QString &activationToken) const;

    PanelWindow &panelWindow() { return *m_window; }
    /// Absent until the settings were opened.
    SettingsWindow *settingsWindow() const { return m_settings.window(); }

Q_SIGNALS:
    void quitRequested();

private:
    static QCoro::Task<void> beginInTurn(QPointer<OrbitledgeApp> app);
    void begin();
    [[nodiscard]] bool waitsForTurn() const { return m_parts.turn && !m_hasBegun; }
    void updateIcon();
    void updateIconColors();
    void openWhenTrayIsKnown();
    void openWhenPossible(const QString &activationToken);
    void openAt(const PanelAnchor &anchor, const QString &activationToken = {});
    void showSettings(const QString &activationToken);
    void presentQuickAddWhenPossible();

    Parts m_parts;
    AppDelegate m_delegate;
    WindowAppearanceApplier m_appearance;
    MoneyFormatter m_money;
    TrayHost m_host;
    TrayIcon m_icon;
    PanelView *m_panel;
    std::unique_ptr<PanelWindow> m_window;
    SettingsWindowController m_settings;
    /// So that several changes in a row draw the icon once.
    QTimer m_iconUpdate;
    /// While a tray may still come.
    QTimer m_trayPatience;
    bool m_hasBegun = false;
    // What was asked for, and cannot be done yet.
    bool m_isToOpen = false;
    bool m_isToAdd = false;
    bool m_isToShowSettings = false;
    QString m_activationToken;
};

} // namespace orbitledge::ui
