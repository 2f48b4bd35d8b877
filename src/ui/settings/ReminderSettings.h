#pragma once

#include "state/AppStore.h"
#include "ui/settings/SettingsSection.h"

class QPushButton;
class QSpinBox;

namespace orbitledge::ui {

class NoteLabel;
class SwitchRow;

/// Whether and when reminders appear, and what keeps them from it.
class ReminderSettings : public SettingsSection {
    Q_OBJECT

public:
    explicit ReminderSettings(AppStore &store, QWidget *parent = nullptr);

    void follow() override;

protected:
    void measure() override;

private:
    void addSwitch();
    void addLeadDays();
    void addTest();
    /// Until what is so is what was wished last.
    static QCoro::Task<void> turn(QPointer<ReminderSettings> section, QPointer<AppStore> store);
    void showLeadDays(int days);

    AppStore &m_store;
    SwitchRow *m_switch;
    NoteLabel *m_authorization;
    QPushButton *m_openSettings;
    QSpinBox *m_leadDays;
    NoteLabel *m_budget;
    QPushButton *m_test;
    NoteLabel *m_action;
    NoteLabel *m_failure;
    bool m_wish = false;
    /// Meanwhile the switch shows what was wished.
    bool m_isTurning = false;
};

} // namespace orbitledge::ui
