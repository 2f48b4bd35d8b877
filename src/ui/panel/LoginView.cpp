#include "ui/panel/LoginView.h"

#include "ui/kit/Field.h"
#include "ui/kit/PlainButton.h"
#include "ui/kit/PrimaryButton.h"
#include "ui/kit/ThemedLabel.h"
#include "ui/panel/ErrorLine.h"
#include "ui/panel/ScrollArea.h"
#include "ui/panel/SymbolView.h"

#include <QShowEvent>

namespace orbitledge::ui {

using namespace Qt::StringLiterals;

namespace {

constexpr qreal groupGap = 18;
constexpr qreal gap = 10;

Field *fieldNamed(const QString &name)
{
    auto *const field = new Field;
    field->setPlaceholderText(name);
    field->setAccessibleName(name);
    return field;
}

} // namespace

LoginView::LoginView(AppStore &store, QWidget *parent)
    : CenteredPanel(parent)
    , m_store(store)
    , m_email(fieldNamed(u"Email"_s))
    , m_password(fieldNamed(u"Password"_s))
    , m_error(new ErrorLine(u"Sign-in failed. "_s, {.designSize = 11, .hasSymbol = false, .gap = gap}))
    , m_button(new PrimaryButton(u"Sign in"_s))
{
    m_email->setInputMethodHints(
        Qt::ImhEmailCharactersOnly | Qt::ImhNoAutoUppercase | Qt::ImhNoPredictiveText);
    m_password->setEchoMode(QLineEdit::Password);
    auto *const web = new PlainButton(u"Open Orbitledge on the web"_s,
        {.designSize = 11, .weight = QFont::Medium, .tone = Tone::Slate, .wraps = true});
    addHeader();
    addWide(m_email, groupGap);
    addWide(m_password, gap);
    addWide(m_error, 0);
    addWide(m_button, gap);
    add(web, gap - 4);

    connect(m_email, &Field::textChanged, this, &LoginView::updateButton);
    connect(m_password, &Field::textChanged, this, &LoginView::updateButton);
    connect(m_email, &Field::returnPressed, this, [this] {
        m_password->setFocus(Qt::TabFocusReason);
        reveal(m_password);
    });
    connect(m_password, &Field::returnPressed, this, &LoginView::submit);
    connect(m_button, &PrimaryButton::clicked, this, &LoginView::submit);
    connect(web, &PlainButton::clicked, this, [this] { m_store.openWebPage(u"/login"_s); });
    connect(&store, &AppStore::changed, this, &LoginView::follow);
    m_error->setMessage(store.state().errorMessage);
    updateButton();
}

void LoginView::addHeader()
{
    auto *const wordMark = new ThemedLabel(u"ORBITLEDGE"_s,
        {.designSize = 11,
            .weight = QFont::DemiBold,
            .tone = Tone::BlackAndWhite,
            .tracking = 2.2,
            .alignment = Qt::AlignHCenter | Qt::AlignVCenter});
    wordMark->setHeading(true);
    auto *const tagLine = new ThemedLabel(u"See what\u2019s about to charge."_s,
        {.designSize = 12,
            .tone = Tone::Slate,
            .overflow = ThemedLabel::Overflow::Wrap,
            .alignment = Qt::AlignHCenter | Qt::AlignVCenter});
    add(new SymbolView(Symbol::Mark, 34, Tone::Cyan), 0);
    add(wordMark, 8);
    add(tagLine, 4);
}

bool LoginView::canSubmit() const
{
    return !m_email->text().trimmed().isEmpty() && !m_password->text().isEmpty() && !m_isSubmitting;
}

void LoginView::submit()
{
    if (!canSubmit())
        return;
    m_isSubmitting = true;
    updateButton();
    signIn(this, m_email->text().trimmed(), m_password->text());
}

QCoro::Task<void> LoginView::signIn(QPointer<LoginView> view, QString email, QString password)
{
    const std::optional<QString> before = view->m_store.state().errorMessage;
    auto signing = view->m_store.signIn(std::move(email), std::move(password));
    (void)co_await signing;
    if (view)
        view->endSubmission(before);
}

void LoginView::endSubmission(const std::optional<QString> &messageBefore)
{
    m_isSubmitting = false;
    updateButton();
    // The same failure once more is no change, but it is news.
    if (isVisible() && messageBefore == m_store.state().errorMessage)
        m_error->announce();
}

void LoginView::follow()
{
    if (!m_error->setMessage(m_store.state().errorMessage) || !isVisible())
        return;
    m_error->announce();
    reveal(m_error);
}

void LoginView::updateButton()
{
    if (m_isSubmitting) {
        m_button->setBusy(u"Signing in\u2026"_s);
        return;
    }
    if (m_button->isBusy())
        m_button->setIdle();
    m_button->setEnabled(canSubmit());
}

void LoginView::showEvent(QShowEvent *event)
{
    CenteredPanel::showEvent(event);
    if (event->spontaneous())
        return; // the window was only out of sight for a while
    // Who comes back goes on where they were.
    QWidget *const before = focusWidget();
    (before != nullptr ? before : m_email)->setFocus(Qt::OtherFocusReason);
    m_error->announce();
}

} // namespace orbitledge::ui
