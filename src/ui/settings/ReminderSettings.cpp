#include "ui/settings/ReminderSettings.h"

#include "presentation/SettingsContent.h"
#include "ui/settings/NoteLabel.h"
#include "ui/settings/SettingsFields.h"
#include "ui/settings/SettingsRow.h"
#include "ui/settings/SwitchRow.h"

#include <QPushButton>
#include <QSignalBlocker>
#include <QSpinBox>

namespace orbitledge::ui {

using namespace Qt::StringLiterals;

namespace {

constexpr int mostLeadDays = 14;

} // namespace

ReminderSettings::ReminderSettings(AppStore &store, QWidget *parent)
    : SettingsSection(u"Renewal reminders"_s, parent)
    , m_store(store)
    , m_switch(new SwitchRow(u"Enable notifications"_s))
    , m_authorization(new NoteLabel)
    , m_openSettings(new QPushButton(u"Open Notification Settings"_s))
    , m_leadDays(makeNumber(0, mostLeadDays))
    , m_budget(new NoteLabel)
    , m_test(new QPushButton(u"Send Test Notification"_s))
    , m_action(new NoteLabel(Tone::Slate, NoteLabel::Selection::Selectable))
    , m_failure(new NoteLabel(Tone::Slate, NoteLabel::Selection::Selectable))
{
    addSwitch();
    addLeadDays();
    addTest();
    ReminderSettings::measure();
}

void ReminderSettings::addSwitch()
{
    auto *const row = new SettingsRow(m_switch);
    addRow(row);
    row->add(m_authorization);
    row->addButton(m_openSettings);
    connect(m_switch, &QAbstractButton::clicked, this, [this](bool isOn) {
        m_wish = isOn;
        if (!m_isTurning)
            turn(this, &m_store);
    });
    connect(m_openSettings, &QAbstractButton::clicked, this, [this] { m_store.openNotificationSettings(); });
}

void ReminderSettings::addLeadDays()
{
    auto *const row = new SettingsRow(u"Remind me"_s, m_leadDays);
    addRow(row);
    auto *const hour = new NoteLabel;
    row->add(hour);
    hour->setNote(u"Notifications are delivered at 09:00 local time."_s);
    row->add(m_budget);
    connect(m_leadDays, &QSpinBox::valueChanged, this, [this](int days) {
        showLeadDays(days);
        m_store.settings().setNotificationLeadDays(days);
        m_store.synchroniseReminders();
    });
}

void ReminderSettings::addTest()
{
    SettingsRow *const row = addRow();
    row->addButton(m_test);
    row->add(m_action);
    row->add(m_failure);
    connect(m_test, &QAbstractButton::clicked, this, [this] { m_store.sendTestNotification(); });
}

QCoro::Task<void> ReminderSettings::turn(QPointer<ReminderSettings> section, QPointer<AppStore> store)
{
    section->m_isTurning = true;
    bool isOn = !section->m_wish;
    while (section && store && isOn != section->m_wish) {
        isOn = section->m_wish;
        if (!isOn)
            store->settings().setNotificationsEnabled(false);
        auto change = isOn ? store->requestNotificationPermission() : store->synchroniseReminders();
        co_await change;
    }
    if (!section)
        co_return;
    section->m_isTurning = false;
    section->follow();
}

void ReminderSettings::showLeadDays(int days)
{
    // To set the same one would put back what somebody is typing over.
    if (const QString suffix = leadDaysSuffix(days); m_leadDays->suffix() != suffix)
        m_leadDays->setSuffix(suffix);
}

void ReminderSettings::follow()
{
    const AppState &state = m_store.state();
    m_switch->setChecked(m_isTurning ? m_wish : m_store.settings().notificationsEnabled());
    const auto note = authorizationNote(state.notificationAuthorization);
    m_authorization->setNote(note ? std::optional(note->text) : std::nullopt);
    m_openSettings->setVisible(note && note->offersSettings);
    const int days = int(m_store.settings().notificationLeadDays());
    if (m_leadDays->value() != days) {
        const QSignalBlocker blocker(m_leadDays);
        m_leadDays->setValue(days);
    }
    showLeadDays(days);
    m_budget->setNote(budgetNote(state.notificationsSkippedOverBudget));
    m_action->setNote(state.notificationActionMessage);
    m_failure->setNote(state.notificationFailureMessage);
}

void ReminderSettings::measure()
{
    SettingsSection::measure();
    measureField(*m_leadDays);
}

} // namespace orbitledge::ui
