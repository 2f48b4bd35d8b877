#pragma once

#include "locale/Locale.h"
#include "presentation/PanelScreen.h"
#include "presentation/QuickAddDraft.h"
#include "state/AppStore.h"
#include "ui/panel/LogoImages.h"
#include "ui/panel/PanelTexts.h"
#include "ui/panel/ScreenStack.h"

#include <QUuid>
#include <QWidget>

#include <optional>

class QHBoxLayout;
class QShortcut;

namespace orbitledge::ui {

class QuickAddView;
class SessionRecoveryPanel;
class ThemedLabel;
class TimelinePanel;

/// Everything that the panel shows. It reads the store and calls it, and has no state of its own but what was
/// typed into a form when the session ended.
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
    void quitRequested();

protected:
    void showEvent(QShowEvent *event) override;
    void contextMenuEvent(QContextMenuEvent *event) override;

private:
    void follow();
    void update(ScreenStack::Change change);
    QWidget *widgetFor(PanelScreen screen);
    void leave(PanelScreen screen, QWidget *widget);
    void updateNotice();
    QWidget *makeQuickAdd();
    void keepDraft(const QuickAddView &form);
    void forgetDraft();

    AppStore &m_store;
    std::shared_ptr<PanelTexts> m_texts;
    LogoImages *m_logos;
    ScreenStack *m_stack;
    ThemedLabel *m_notice;
    QHBoxLayout *m_noticeRow;
    PanelScreen m_screen = PanelScreen::CheckingSession;
    QWidget *m_checking;
    SessionRecoveryPanel *m_recovery = nullptr;
    TimelinePanel *m_timeline = nullptr;
    /// Elsewhere the footer's button has those keys.
    QShortcut *m_settingsKeys;
    /// Whose form it is that is shown; absent where that is not known.
    std::optional<QUuid> m_formAccount;
    /// What was typed when the session of this account ended.
    struct Draft {
        QUuid account;
        QuickAddDraft content;
    };
    std::optional<Draft> m_draft;
    /// What is shown is older than the store.
    bool m_isStale = true;
};

} // namespace orbitledge::ui
