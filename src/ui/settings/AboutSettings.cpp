#include "ui/settings/AboutSettings.h"

#include "ui/kit/ThemedLabel.h"
#include "ui/kit/Typography.h"
#include "ui/settings/NoteLabel.h"
#include "ui/settings/SettingsFields.h"
#include "ui/settings/SettingsRow.h"

#include <QLabel>
#include <QPushButton>

namespace orbitledge::ui {

using namespace Qt::StringLiterals;

AboutSettings::AboutSettings(
    AppStore &store, const Locale &locale, const AboutProgram &about, QWidget *parent)
    : SettingsSection(u"About"_s, parent)
    , m_store(store)
    , m_dates(locale)
    , m_get(new QPushButton)
    , m_offerRow(new SettingsRow(QString(), m_get))
    , m_check(new QPushButton(u"Check for Updates"_s))
    , m_lastCheck(new NoteLabel)
{
    addRow(new SettingsRow(u"Version"_s, new ThemedLabel(versionText(about), valueLook())));
    addRow(new SettingsRow(u"API"_s, new ThemedLabel(apiText(about), valueLook())));
    addUpdates();
}

void AboutSettings::addUpdates()
{
    addRow(m_offerRow);
    connect(m_get, &QAbstractButton::clicked, this, [this] { m_store.openWebPage(u"/download"_s); });

    SettingsRow *const row = addRow();
    auto *const manner = new NoteLabel;
    row->add(manner);
    manner->setNote(u"Orbitledge checks for a new version on launch and roughly every six hours."_s);
    row->addButton(m_check);
    row->add(m_lastCheck);
    connect(m_check, &QAbstractButton::clicked, this, [this] {
        if (!m_isChecking)
            check(this);
    });
}

QCoro::Task<void> AboutSettings::check(QPointer<AboutSettings> section)
{
    section->m_isChecking = true;
    auto checking = section->m_store.checkForUpdates(AppStore::UpdateCheck::Now);
    section->follow();
    co_await checking;
    if (!section)
        co_return;
    section->m_isChecking = false;
    section->follow();
}

void AboutSettings::follow()
{
    const auto offer = updateOfferOf(m_store.state());
    m_offerRow->setVisible(offer.has_value());
    if (offer) {
        m_offerRow->label()->setText(offer->text);
        m_get->setText(offer->buttonLabel);
    }
    m_lastCheck->setNote(m_isChecking
            ? std::optional(u"Checking…"_s)
            : lastCheckText(m_store.settings().lastUpdateCheck(), m_dates, m_store.calendar()));
}

} // namespace orbitledge::ui
