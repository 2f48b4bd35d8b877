#include "ui/panel/SessionRecoveryPanel.h"

#include "ui/kit/Accessibility.h"
#include "ui/kit/PlainButton.h"
#include "ui/kit/PrimaryButton.h"
#include "ui/kit/ThemedLabel.h"
#include "ui/panel/SymbolView.h"

#include <QShowEvent>

namespace orbitledge::ui {

using namespace Qt::StringLiterals;

SessionRecoveryPanel::SessionRecoveryPanel(QWidget *parent)
    : CenteredPanel(parent)
    , m_message(new ThemedLabel(QString(),
          {.designSize = 12,
              .tone = Tone::Slate,
              .overflow = ThemedLabel::Overflow::Wrap,
              .alignment = Qt::AlignHCenter | Qt::AlignVCenter}))
    , m_retry(new PrimaryButton(u"Retry"_s))
{
    auto *const heading = new ThemedLabel(u"Can\u2019t reach Orbitledge"_s,
        {.designSize = 15,
            .weight = QFont::DemiBold,
            .tone = Tone::Ink,
            .overflow = ThemedLabel::Overflow::Wrap,
            .alignment = Qt::AlignHCenter | Qt::AlignVCenter});
    heading->setHeading(true);
    auto *const signIn = new PlainButton(
        u"Sign in instead"_s, {.designSize = 12, .weight = QFont::Medium, .tone = Tone::Slate});
    add(new SymbolView(Symbol::Unreachable, 32, Tone::Slate), 0);
    add(heading, 10);
    add(m_message, 4, 270);
    add(m_retry, 14);
    add(signIn, 6);
    connect(m_retry, &PrimaryButton::clicked, this, &SessionRecoveryPanel::retryRequested);
    connect(signIn, &PlainButton::clicked, this, &SessionRecoveryPanel::signInRequested);
}

void SessionRecoveryPanel::setContent(const QString &message, bool isRetrying)
{
    const bool isNew = message != m_message->text();
    m_message->setText(message);
    if (isRetrying)
        m_retry->setBusy(u"Retrying"_s);
    else
        m_retry->setIdle();
    if (isNew && isVisible())
        announce();
}

void SessionRecoveryPanel::showEvent(QShowEvent *event)
{
    CenteredPanel::showEvent(event);
    if (event->spontaneous())
        return; // the window was only out of sight for a while
    m_retry->setFocus(Qt::OtherFocusReason);
    announce();
}

void SessionRecoveryPanel::announce()
{
    ui::announce(*m_message, m_message->text());
}

} // namespace orbitledge::ui
