#include "ui/panel/PanelView.h"

#include "platform/MonotonicTimer.h"
#include "ui/kit/ThemedLabel.h"
#include "ui/panel/LoginView.h"
#include "ui/panel/PanelAccessibility.h"
#include "ui/panel/QuickAddView.h"
#include "ui/panel/SessionCheckPanel.h"
#include "ui/panel/SessionRecoveryPanel.h"
#include "ui/panel/TimelinePanel.h"

#include <QContextMenuEvent>
#include <QMenu>
#include <QShortcut>
#include <QVBoxLayout>

namespace orbitledge::ui {

using namespace Qt::StringLiterals;

namespace {

const QKeySequence settingsKeys(Qt::CTRL | Qt::Key_Comma);

/// What begins anew each time.
bool isForm(PanelScreen screen)
{
    return screen == PanelScreen::SignIn || screen == PanelScreen::QuickAdd;
}

} // namespace

PanelView::PanelView(AppStore &store, const Locale &locale, LogoImages *logos, QWidget *parent)
    : QWidget(parent)
    , m_store(store)
    , m_texts(std::make_shared<PanelTexts>(locale))
    , m_logos(logos)
    , m_stack(new ScreenStack)
    , m_notice(new ThemedLabel({},
          {.designSize = 11,
              .tone = Tone::Slate,
              .overflow = ThemedLabel::Overflow::Wrap,
              .alignment = Qt::AlignHCenter | Qt::AlignVCenter}))
    , m_noticeRow(new QHBoxLayout)
    , m_checking(new SessionCheckPanel)
    , m_settingsKeys(new QShortcut(settingsKeys, this))
{
    installPanelAccessibility();
    auto *const layout = new QVBoxLayout(this);
    layout->setContentsMargins({});
    layout->addWidget(m_stack, 1);
    m_noticeRow->addWidget(m_notice);
    layout->addLayout(m_noticeRow);
    updateNotice();
    m_stack->add(m_checking);
    connect(m_settingsKeys, &QShortcut::activated, this, &PanelView::settingsRequested);
    connect(&store, &AppStore::changed, this, &PanelView::follow);
    connect(&store, &AppStore::forgotten, this, &PanelView::forgetDraft);
}

void PanelView::follow()
{
    // Hidden, it costs nothing. But a form that was left is not there any more when it is asked for again.
    const bool leavesForm = isForm(m_screen) && panelScreenOf(m_store.state()) != m_screen;
    if (isVisible() || leavesForm)
        update(ScreenStack::Change::Animated);
    else
        m_isStale = true;
}

void PanelView::showEvent(QShowEvent *event)
{
    // What is opened is there at once.
    if (m_isStale)
        update(ScreenStack::Change::Immediate);
    QWidget::showEvent(event);
}

void PanelView::update(ScreenStack::Change change)
{
    m_isStale = false;
    const PanelScreen screen = panelScreenOf(m_store.state());
    const bool isAnother = screen != m_screen;
    QWidget *const old = m_stack->current();
    QWidget *const widget = isAnother || old == nullptr ? widgetFor(screen) : old;
    if (screen == PanelScreen::SessionRecovery)
        m_recovery->setContent(recoveryMessage(m_store.state()), isRetrying(m_store.state()));
    else if (screen == PanelScreen::Timeline)
        m_timeline->update();
    if (!isAnother)
        return;
    const PanelScreen left = std::exchange(m_screen, screen);
    updateNotice();
    m_settingsKeys->setEnabled(screen != PanelScreen::Timeline);
    m_stack->show(widget, change);
    leave(left, old);
}

QWidget *PanelView::widgetFor(PanelScreen screen)
{
    const auto added = [this]<typename Screen>(
                           Screen *widget, ScreenStack::Entrance entrance = ScreenStack::Entrance::Fade) {
        m_stack->add(widget, entrance);
        return widget;
    };
    switch (screen) {
    case PanelScreen::CheckingSession:
        return m_checking;
    case PanelScreen::SessionRecovery:
        if (m_recovery == nullptr) {
            m_recovery = added(new SessionRecoveryPanel);
            connect(m_recovery, &SessionRecoveryPanel::retryRequested, this, [this] { m_store.refresh(); });
            connect(m_recovery, &SessionRecoveryPanel::signInRequested, this, [this] { m_store.signOut(); });
        }
        return m_recovery;
    case PanelScreen::SignIn:
        return added(new LoginView(m_store));
    case PanelScreen::QuickAdd:
        return added(makeQuickAdd(), ScreenStack::Entrance::MoveAndFade);
    case PanelScreen::Timeline:
        if (m_timeline == nullptr) {
            m_timeline = added(new TimelinePanel(m_store, m_texts, m_logos));
            connect(m_timeline, &TimelinePanel::settingsRequested, this, &PanelView::settingsRequested);
        }
        return m_timeline;
    }
    Q_UNREACHABLE();
}

void PanelView::leave(PanelScreen screen, QWidget *widget)
{
    if (screen == PanelScreen::QuickAdd && m_screen == PanelScreen::SignIn)
        keepDraft(*qobject_cast<QuickAddView *>(widget));
    if (isForm(screen))
        widget->deleteLater();
    if (screen == PanelScreen::QuickAdd && m_screen == PanelScreen::Timeline)
        m_timeline->focusAdd();
}

void PanelView::setNotice(const QString &sentence)
{
    m_notice->setText(sentence);
    updateNotice();
}

void PanelView::updateNotice()
{
    const bool isSignedIn = m_screen == PanelScreen::Timeline || m_screen == PanelScreen::QuickAdd;
    const bool isShown = !m_notice->text().isEmpty() && !isSignedIn;
    m_notice->setVisible(isShown);
    // A row with nothing in it would keep the room around it.
    constexpr int edge = 20;
    m_noticeRow->setContentsMargins(isShown ? QMargins(edge, 0, edge, edge) : QMargins());
}

QWidget *PanelView::makeQuickAdd()
{
    const auto &user = m_store.state().user;
    m_formAccount = user ? std::optional(user->id) : std::nullopt;
    auto *const form = new QuickAddView(
        m_store, m_logos, std::make_shared<MonotonicTimer>(MonotonicTimer::Precision::Milliseconds));
    if (m_draft && m_draft->account == m_formAccount)
        form->fill(m_draft->content);
    m_draft.reset();
    return form;
}

/// The session ended by itself: who signs in again goes on where they were.
void PanelView::keepDraft(const QuickAddView &form)
{
    if (m_formAccount && m_store.state().isQuickAddPresented)
        m_draft = {.account = *m_formAccount, .content = form.draft()};
}

/// What somebody had open is not presented to somebody else.
void PanelView::forgetDraft()
{
    m_draft.reset();
    if (m_store.state().isQuickAddPresented)
        m_store.setQuickAddPresented(false);
}

/// The way to both from every screen, also where there is no tray.
void PanelView::contextMenuEvent(QContextMenuEvent *event)
{
    auto *const menu = new QMenu(this);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    QAction *const settings = menu->addAction(u"Settings"_s, this, &PanelView::settingsRequested);
    settings->setShortcut(settingsKeys);
    QAction *const quit = menu->addAction(u"Quit"_s, this, &PanelView::quitRequested);
    quit->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_Q));
    menu->popup(event->globalPos());
}

bool PanelView::takeEscape()
{
    if (m_screen != PanelScreen::QuickAdd)
        return false;
    m_store.setQuickAddPresented(false);
    return true;
}

} // namespace orbitledge::ui
