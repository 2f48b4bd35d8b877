#pragma once

#include "state/AppStore.h"
#include "ui/settings/SettingsSection.h"

class QComboBox;
class QPushButton;

namespace orbitledge::ui {

class NoteLabel;
class SwitchRow;

/// How often it refreshes, the badge, the appearance, and starting at login.
class GeneralSettings : public SettingsSection {
    Q_OBJECT

public:
    explicit GeneralSettings(AppStore &store, QWidget *parent = nullptr);

    void follow() override;

protected:
    void measure() override;

private:
    static QCoro::Task<void> turnLaunchAtLogin(QPointer<GeneralSettings> section, bool isOn);
    void addLaunchAtLogin();

    AppStore &m_store;
    QComboBox *m_refresh;
    SwitchRow *m_badge;
    QComboBox *m_appearance;
    SwitchRow *m_launchAtLogin;
    NoteLabel *m_approval;
    QPushButton *m_openLoginItems;
    NoteLabel *m_launchFailure;
    /// Changes that are under way; meanwhile the switch shows what was wished.
    int m_launchChanges = 0;
};

} // namespace orbitledge::ui
