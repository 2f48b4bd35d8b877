#include "ui/settings/SettingsView.h"

#include "ui/kit/Accessibility.h"
#include "ui/kit/Typography.h"
#include "ui/panel/ScrollArea.h"
#include "ui/settings/AboutSettings.h"
#include "ui/settings/AccountSettings.h"
#include "ui/settings/GeneralSettings.h"
#include "ui/settings/NoteLabel.h"
#include "ui/settings/ReminderSettings.h"

#include <QScrollArea>
#include <QScrollBar>
#include <QShowEvent>
#include <QStyle>
#include <QTimer>
#include <QVBoxLayout>

#include <algorithm>

namespace orbitledge::ui {

namespace {

constexpr QSize designSize(460, 620);
constexpr qreal margin = 20;
constexpr qreal leastHeight = 240;

} // namespace

SettingsView::SettingsView(AppStore &store, const Locale &locale, const AboutProgram &about, QWidget *parent)
    : Component(parent)
    , m_store(store)
    , m_form(new QWidget)
    , m_layout(new QVBoxLayout(m_form))
    , m_scroll(makeScrollArea(m_form))
{
    auto *const all = new QVBoxLayout(this);
    all->setContentsMargins({});
    all->addWidget(m_scroll);
    setAccessibleRole(*m_form, QAccessible::Grouping);
    m_form->setAccessibleName(QStringLiteral("Settings"));
    m_scroll->setVerticalScrollBarPolicy(Qt::ScrollBarAsNeeded);
    add(new GeneralSettings(store));
    add(new ReminderSettings(store));
    auto *const account = new AccountSettings(store);
    add(account);
    add(new AboutSettings(store, locale, about));
    m_layout->addStretch();
    connect(account, &AccountSettings::quitRequested, this, &SettingsView::quitRequested);
    connect(&store, &AppStore::changed, this, &SettingsView::follow);
    connect(&store.launchAtLogin(), &LaunchAtLoginController::changed, this, &SettingsView::follow);
    for (NoteLabel *note : m_form->findChildren<NoteLabel *>())
        connect(note, &NoteLabel::arrived, this, [this, note] { reveal(note); });
    SettingsView::measure();
}

void SettingsView::add(SettingsSection *section)
{
    m_layout->addWidget(section);
    m_sections.append(section);
}

void SettingsView::askPlatform()
{
    m_store.launchAtLogin().refreshStatus();
    m_store.refreshNotificationAuthorization();
}

// What somebody waits for may have come up where the form is not scrolled to; what comes up elsewhere does
// not take them away from where they are.
void SettingsView::reveal(QWidget *note)
{
    const QWidget *const focus = m_form->focusWidget();
    const auto isWaitedFor = [note, focus](const SettingsSection *section) {
        return section->isAncestorOf(note) && section->isAncestorOf(focus);
    };
    if (m_isStale || focus == nullptr || std::ranges::none_of(m_sections, isWaitedFor))
        return;
    QTimer::singleShot(0, note, [this, note] { m_scroll->ensureWidgetVisible(note, 0, scaled(*this, 12)); });
}

void SettingsView::follow()
{
    // Hidden, it costs nothing.
    if (isVisible())
        followAll();
    else
        m_isStale = true;
}

void SettingsView::followAll()
{
    for (SettingsSection *section : std::as_const(m_sections))
        section->follow();
    m_isStale = false;
}

void SettingsView::showEvent(QShowEvent *event)
{
    if (m_isStale)
        followAll();
    // Nothing is chosen yet: keys scroll, and Tab goes to what is first. A window that was only out of sight
    // for a while comes back as it was.
    if (!event->spontaneous())
        m_form->setFocus(Qt::OtherFocusReason);
    Component::showEvent(event);
}

QSize SettingsView::sizeHint() const
{
    return {scaled(*this, designSize.width()), scaled(*this, designSize.height())};
}

QSize SettingsView::minimumSizeHint() const
{
    const int bar = style()->pixelMetric(QStyle::PM_ScrollBarExtent, nullptr, m_scroll->verticalScrollBar());
    return {m_layout->minimumSize().width() + bar, scaled(*this, leastHeight)};
}

void SettingsView::measure()
{
    const int side = scaled(*this, margin);
    m_layout->setContentsMargins(side, side, side, side);
    m_layout->setSpacing(scaled(*this, 20));
}

} // namespace orbitledge::ui
