#include "ui/settings/GeneralSettings.h"

#include "presentation/SettingsContent.h"
#include "ui/settings/NoteLabel.h"
#include "ui/settings/SettingsFields.h"
#include "ui/settings/SettingsRow.h"
#include "ui/settings/SwitchRow.h"

#include <QComboBox>
#include <QPushButton>

#include <algorithm>

namespace orbitledge::ui {

using namespace Qt::StringLiterals;

namespace {

template <typename Values> QStringList titlesOf(const Values &values)
{
    QStringList titles;
    for (const auto value : values)
        titles.append(titleOf(value));
    return titles;
}

template <typename Values> int indexIn(const Values &values, typename Values::value_type value)
{
    return int(std::ranges::find(values, value) - values.begin());
}

} // namespace

GeneralSettings::GeneralSettings(AppStore &store, QWidget *parent)
    : SettingsSection(u"General"_s, parent)
    , m_store(store)
    , m_refresh(makeChoice(titlesOf(refreshIntervals)))
    , m_badge(new SwitchRow(u"Show urgent-renewal badge"_s))
    , m_appearance(makeChoice(titlesOf(appearances)))
    , m_launchAtLogin(new SwitchRow(u"Launch at login"_s))
    , m_approval(new NoteLabel)
    , m_openLoginItems(new QPushButton(u"Open Login Items"_s))
    , m_launchFailure(new NoteLabel(Tone::Alert, NoteLabel::Selection::Selectable))
{
    addRow(new SettingsRow(u"Refresh"_s, m_refresh));
    addRow(new SettingsRow(m_badge));
    addRow(new SettingsRow(u"Appearance"_s, m_appearance));
    addLaunchAtLogin();
    connect(m_refresh, &QComboBox::activated, this, [this](int index) {
        m_store.settings().setRefreshInterval(refreshIntervals.at(std::size_t(index)));
    });
    connect(m_badge, &QAbstractButton::clicked, this,
        [this](bool isOn) { m_store.settings().setShowMenuBadge(isOn); });
    connect(m_appearance, &QComboBox::activated, this,
        [this](int index) { m_store.settings().setAppearance(appearances.at(std::size_t(index))); });
    GeneralSettings::measure();
}

void GeneralSettings::addLaunchAtLogin()
{
    auto *const row = new SettingsRow(m_launchAtLogin);
    addRow(row);
    row->add(m_approval);
    row->addButton(m_openLoginItems);
    row->add(m_launchFailure);
    connect(m_launchAtLogin, &QAbstractButton::clicked, this,
        [this](bool isOn) { turnLaunchAtLogin(this, isOn); });
    connect(m_openLoginItems, &QAbstractButton::clicked, this,
        [this] { m_store.launchAtLogin().openLoginItems(); });
}

QCoro::Task<void> GeneralSettings::turnLaunchAtLogin(QPointer<GeneralSettings> section, bool isOn)
{
    ++section->m_launchChanges;
    auto change = section->m_store.launchAtLogin().setEnabled(isOn);
    co_await change;
    if (!section)
        co_return;
    --section->m_launchChanges;
    section->follow();
}

void GeneralSettings::follow()
{
    const AppSettings &settings = m_store.settings();
    const LaunchAtLoginController &launchAtLogin = m_store.launchAtLogin();
    m_refresh->setCurrentIndex(indexIn(refreshIntervals, settings.refreshInterval()));
    m_badge->setChecked(settings.showMenuBadge());
    m_appearance->setCurrentIndex(indexIn(appearances, settings.appearance()));
    if (m_launchChanges == 0)
        m_launchAtLogin->setChecked(launchAtLogin.isEnabled());
    m_approval->setNote(launchAtLogin.requiresApproval()
            ? std::optional(u"macOS requires approval for this login item."_s)
            : std::nullopt);
    m_openLoginItems->setVisible(launchAtLogin.requiresApproval());
    m_launchFailure->setNote(launchAtLogin.errorMessage());
}

void GeneralSettings::measure()
{
    SettingsSection::measure();
    measureField(*m_refresh);
    measureField(*m_appearance);
}

} // namespace orbitledge::ui
