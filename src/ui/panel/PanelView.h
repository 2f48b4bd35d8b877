#pragma once

#include "locale/Locale.h"
#include "presentation/PanelScreen.h"
#include "state/AppStore.h"
#include "ui/panel/LogoImages.h"
#include "ui/panel/PanelTexts.h"
#include "ui/panel/ScreenStack.h"

#include <QWidget>

#include <optional>

namespace orbitledge::ui {

class SessionRecoveryPanel;
class ThemedLabel;
class TimelinePanel;

/// Everything that the panel shows. It reads the store and calls it, and has no state of its own.
class PanelView : public QWidget {
    Q_OBJECT

public:
    /// The size that it is made for.
    static constexpr QSize panelSize{360, 480};

    /// `logos` may be absent; then there are initials only. All but the parent outlive it.
    PanelView(AppStore &store, const Locale &locale, LogoImages *logos, QWidget *parent = nullptr);

    PanelScreen screen() const { return m_screen; }
    /// A sentence below what is shown as long as nobody is signed in: what in this session will not work.
    void setNotice(const QString &sentence);
    /// Whether Escape closes something of what is shown, which it then has done.
    bool takeEscape();

Q_SIGNALS:
    void settingsRequested();

protected:
    void showEvent(QShowEvent *event) override;

private:
    void follow();
    void update(ScreenStack::Change change);
    QWidget *widgetFor(PanelScreen screen);
    void leave(PanelScreen screen, QWidget *widget);
    void updateNotice();

    AppStore &m_store;
    std::shared_ptr<PanelTexts> m_texts;
    LogoImages *m_logos;
    ScreenStack *m_stack;
    ThemedLabel *m_notice = nullptr;
    PanelScreen m_screen = PanelScreen::CheckingSession;
    QWidget *m_checking;
    SessionRecoveryPanel *m_recovery = nullptr;
    TimelinePanel *m_timeline = nullptr;
    /// What is shown is older than the store.
    bool m_isStale = true;
};

} // namespace orbitledge::ui
