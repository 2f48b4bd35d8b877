#pragma once

#include "state/AppStore.h"
#include "ui/settings/SettingsSection.h"

class QPushButton;

namespace orbitledge::ui {

class SettingsRow;
class ThemedLabel;

/// Who is signed in, and the ways out.
class AccountSettings : public SettingsSection {
    Q_OBJECT

public:
    explicit AccountSettings(AppStore &store, QWidget *parent = nullptr);

    void follow() override;

Q_SIGNALS:
    void quitRequested();

private:
    AppStore &m_store;
    ThemedLabel *m_email;
    SettingsRow *m_emailRow;
    QPushButton *m_open;
    QPushButton *m_signOut;
    QPushButton *m_quit;
};

} // namespace orbitledge::ui
