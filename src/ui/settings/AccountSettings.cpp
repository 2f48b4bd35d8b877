#include "ui/settings/AccountSettings.h"

#include "presentation/SettingsContent.h"
#include "ui/kit/ThemedLabel.h"
#include "ui/kit/Typography.h"
#include "ui/settings/SettingsFields.h"
#include "ui/settings/SettingsRow.h"

#include <QPushButton>

namespace orbitledge::ui {

using namespace Qt::StringLiterals;

AccountSettings::AccountSettings(AppStore &store, QWidget *parent)
    : SettingsSection(u"Account"_s, parent)
    , m_store(store)
    , m_email(new ThemedLabel(QString(), valueLook()))
    , m_emailRow(new SettingsRow(u"Signed in as"_s, m_email))
    , m_open(new QPushButton(u"Open Orbitledge"_s))
    , m_signOut(makeDestructiveButton(u"Sign Out"_s))
    , m_quit(new QPushButton(u"Quit Orbitledge"_s))
{
    addRow(m_emailRow);
    addRow()->add(new ButtonLine({m_open, m_signOut, m_quit}));
    m_quit->setToolTip(u"Ctrl+Q"_s);
    connect(m_open, &QAbstractButton::clicked, this, [this] { m_store.openWebPage(u"/"_s); });
    connect(m_signOut, &QAbstractButton::clicked, this, [this] { m_store.signOut(); });
    connect(m_quit, &QAbstractButton::clicked, this, &AccountSettings::quitRequested);
}

void AccountSettings::follow()
{
    const AccountContent account = accountOf(m_store.state());
    m_emailRow->setVisible(account.email.has_value());
    m_email->setText(account.email.value_or(QString()));
    m_email->setToolTip(m_email->text());
    // The keyboard stays where it was as good as it can.
    if (!account.canSignOut && m_signOut->hasFocus())
        m_open->setFocus(Qt::OtherFocusReason);
    m_signOut->setVisible(account.canSignOut);
}

} // namespace orbitledge::ui
