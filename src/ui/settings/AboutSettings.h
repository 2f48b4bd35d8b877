#pragma once

#include "presentation/SettingsContent.h"
#include "state/AppStore.h"
#include "ui/settings/SettingsSection.h"

class QPushButton;

namespace orbitledge::ui {

class NoteLabel;
class SettingsRow;

/// What is running, and whether there is something newer.
class AboutSettings : public SettingsSection {
    Q_OBJECT

public:
    AboutSettings(
        AppStore &store, const Locale &locale, const AboutProgram &about, QWidget *parent = nullptr);

    void follow() override;

private:
    static QCoro::Task<void> check(QPointer<AboutSettings> section);
    void addUpdates();

    AppStore &m_store;
    DateFormatter m_dates;
    QPushButton *m_get;
    SettingsRow *m_offerRow;
    QPushButton *m_check;
    NoteLabel *m_lastCheck;
    bool m_isChecking = false;
};

} // namespace orbitledge::ui
