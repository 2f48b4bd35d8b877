#pragma once

#include "ui/panel/Component.h"

class QVBoxLayout;

namespace orbitledge::ui {

class SettingsGroup;
class SettingsRow;

/// A heading, and rows under it.
class SettingsSection : public Component {
    Q_OBJECT

public:
    /// Brings everything in step with the store.
    virtual void follow() = 0;

protected:
    SettingsSection(const QString &heading, QWidget *parent);

    SettingsRow *addRow();
    void addRow(SettingsRow *row);

    void measure() override;

private:
    QVBoxLayout *m_layout;
    SettingsGroup *m_group;
};

} // namespace orbitledge::ui
