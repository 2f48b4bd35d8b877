#include "ui/settings/SettingsSection.h"

#include "ui/kit/Accessibility.h"
#include "ui/kit/ThemedLabel.h"
#include "ui/kit/Typography.h"
#include "ui/settings/SettingsGroup.h"
#include "ui/settings/SettingsRow.h"

#include <QVBoxLayout>

namespace orbitledge::ui {

SettingsSection::SettingsSection(const QString &heading, QWidget *parent)
    : Component(parent)
    , m_layout(new QVBoxLayout(this))
    , m_group(new SettingsGroup)
{
    auto *const label
        = new ThemedLabel(heading, {.designSize = 13, .weight = QFont::DemiBold, .tone = Tone::InkAndWhite});
    label->setHeading(true);
    m_layout->addWidget(label);
    m_layout->addWidget(m_group);
    setAccessibleRole(*m_group, QAccessible::Grouping);
    m_group->setAccessibleName(heading);
    SettingsSection::measure();
}

SettingsRow *SettingsSection::addRow()
{
    auto *const row = new SettingsRow;
    addRow(row);
    return row;
}

void SettingsSection::addRow(SettingsRow *row)
{
    m_group->addRow(row);
}

void SettingsSection::measure()
{
    m_layout->setContentsMargins({});
    m_layout->setSpacing(scaled(*this, 8));
}

} // namespace orbitledge::ui
