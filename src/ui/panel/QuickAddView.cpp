#include "ui/panel/QuickAddView.h"

#include "ui/kit/CompactIconButton.h"
#include "ui/kit/DateField.h"
#include "ui/kit/Field.h"
#include "ui/kit/PlainButton.h"
#include "ui/kit/PrimaryButton.h"
#include "ui/kit/ThemedLabel.h"
#include "ui/kit/Typography.h"
#include "ui/panel/Divider.h"
#include "ui/panel/ErrorLine.h"
#include "ui/panel/FormButtons.h"
#include "ui/panel/FormField.h"
#include "ui/panel/ScrollArea.h"
#include "ui/panel/TemplateSuggestions.h"

#include <QComboBox>
#include <QKeyEvent>
#include <QScrollArea>
#include <QVBoxLayout>

namespace orbitledge::ui {

using namespace Qt::StringLiterals;

namespace {

constexpr qreal currencyWidth = 76;

Field *fieldWith(const QString &placeholder)
{
    auto *const field = new Field;
    field->setPlaceholderText(placeholder);
    return field;
}

QComboBox *makeCyclePicker()
{
    auto *const picker = new QComboBox;
    picker->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    for (const BillingCycleChoice &choice : billingCycleChoices)
        picker->addItem(choice.label, QString(choice.key));
    return picker;
}

QWidget *makeHeader(CompactIconButton *closing)
{
    auto *const header = new QWidget;
    auto *const row = new QHBoxLayout(header);
    row->setContentsMargins({});
    auto *const titles = new QVBoxLayout;
    titles->setSpacing(2);
    titles->addWidget(new ThemedLabel(u"QUICK ADD"_s,
        {.designSize = 10,
            .weight = QFont::DemiBold,
            .tone = Tone::Slate,
            .tracking = 1.8,
            .overflow = ThemedLabel::Overflow::Elide}));
    auto *const title = new ThemedLabel(u"New subscription"_s,
        {.designSize = 15,
            .weight = QFont::DemiBold,
            .tone = Tone::Ink,
            .overflow = ThemedLabel::Overflow::Wrap});
    title->setHeading(true);
    titles->addWidget(title);
    row->addLayout(titles, 1);
    row->addWidget(closing, 0, Qt::AlignTop);
    return header;
}

QDate dateOf(const LocalDate &day)
{
    return {static_cast<int>(day.year), static_cast<int>(day.month), static_cast<int>(day.day)};
}

LocalDate dayOf(const QDate &date)
{
    return {date.year(), date.month(), date.day()};
}

} // namespace

QuickAddView::QuickAddView(
    AppStore &store, LogoImages *logos, std::shared_ptr<IntervalTimer> searchTimer, QWidget *parent)
    : Component(parent)
    , m_store(store)
    , m_searchTimer(std::move(searchTimer))
    , m_column(new QVBoxLayout)
    , m_amount(new QHBoxLayout)
    , m_name(fieldWith(u"Netflix, Spotify, iCloud\u2026"_s))
    , m_suggestions(new TemplateSuggestions(logos))
    , m_price(fieldWith(u"0.00"_s))
    , m_currency(fieldWith(u"EUR"_s))
    , m_cycle(makeCyclePicker())
    , m_renewal(new DateField(dateOf(store.today())))
    , m_error(new ErrorLine(
          u"Could not add subscription. "_s, {.designSize = 10.5, .hasSymbol = true, .gap = 12}))
    , m_button(new PrimaryButton(u"Add subscription"_s))
{
    auto *const cancel
        = new PlainButton(u"Cancel"_s, {.designSize = 13, .weight = QFont::Medium, .tone = Tone::Ink});
    auto *const around = new QVBoxLayout(this);
    around->setContentsMargins({});
    around->setSpacing(0);
    auto *const content = new QWidget;
    content->setLayout(m_column);
    around->addWidget(makeScrollArea(content), 1);
    around->addWidget(new Divider);
    around->addWidget(new FormButtons(cancel, m_button));
    fillContent(m_column);
    m_renewal->setLocale(QLocale(QString::fromLatin1(store.calendar().locale().dates)));
    fill(emptyDraft(store.state(), store.today()));

    connect(cancel, &PlainButton::clicked, this, &QuickAddView::close);
    connect(m_button, &PrimaryButton::clicked, this, &QuickAddView::submit);
    for (Field *const field : {m_name, m_price, m_currency})
        connect(field, &Field::textChanged, this, &QuickAddView::updateButton);
    connect(m_name, &Field::textChanged, this, &QuickAddView::searchSoon);
    connect(m_searchTimer.get(), &IntervalTimer::elapsed, this, &QuickAddView::search);
    connect(m_suggestions, &TemplateSuggestions::chosen, this, &QuickAddView::take);
    connect(&store, &AppStore::changed, this, &QuickAddView::follow);
    measure();
    follow();
    updateButton();
}

QuickAddView::~QuickAddView()
{
    m_searchTimer->stop();
}

void QuickAddView::fillContent(QVBoxLayout *column)
{
    column->setSpacing(0);
    auto *const closing = new CompactIconButton(Symbol::Close, u"Close Quick Add"_s, u"Close"_s);
    connect(closing, &CompactIconButton::clicked, this, &QuickAddView::close);
    column->addWidget(makeHeader(closing));
    column->addWidget(new FormField(u"Service"_s, m_name));
    column->addWidget(m_suggestions);
    m_amount->addWidget(new FormField(u"Price"_s, m_price), 1);
    m_amount->addWidget(new FormField(u"Currency"_s, m_currency));
    column->addLayout(m_amount);
    column->addWidget(new FormField(u"Billing cycle"_s, m_cycle));
    column->addWidget(new FormField(u"Next renewal"_s, m_renewal));
    column->addWidget(m_error);
    column->addStretch();
    // Who scrolls over them means the form.
    for (QWidget *const control : std::initializer_list<QWidget *>{m_cycle, m_renewal}) {
        control->setFocusPolicy(Qt::StrongFocus);
        control->installEventFilter(this);
    }
}

QuickAddDraft QuickAddView::draft() const
{
    return {
        .name = m_name->text(),
        .price = m_price->text(),
        .currency = m_currency->text(),
        .billingCycle = m_cycle->currentData().toString(),
        .renewalDate = dayOf(m_renewal->date()),
    };
}

void QuickAddView::fill(const QuickAddDraft &draft)
{
    m_name->setText(draft.name);
    m_price->setText(draft.price);
    m_currency->setText(draft.currency);
    m_cycle->setCurrentIndex(m_cycle->findData(draft.billingCycle));
    m_renewal->setDate(dateOf(draft.renewalDate));
}

void QuickAddView::searchSoon()
{
    if (catalogueQuery(draft()))
        m_searchTimer->start(searchDelay);
    else
        m_searchTimer->stop();
}

void QuickAddView::search()
{
    const auto query = catalogueQuery(draft());
    if (query && !m_isLeft)
        m_store.searchTemplates(*query);
}

void QuickAddView::take(const SubscriptionTemplate &suggestion)
{
    fill(applied(suggestion, draft()));
    m_price->setFocus(Qt::TabFocusReason);
    reveal(m_price);
}

bool QuickAddView::canSubmit() const
{
    return !m_isCreating && requestOf(draft()).has_value();
}

void QuickAddView::submit()
{
    auto request = m_isCreating || m_isLeft ? std::nullopt : requestOf(draft());
    if (!request)
        return;
    m_isCreating = true;
    updateButton();
    create(this, *std::move(request));
}

QCoro::Task<void> QuickAddView::create(QPointer<QuickAddView> view, CreateSubscriptionRequest request)
{
    auto creating = view->m_store.createSubscription(std::move(request));
    const auto created = co_await creating;
    if (view)
        view->endCreating(created.has_value());
}

void QuickAddView::endCreating(bool succeeded)
{
    m_isCreating = false;
    updateButton();
    // Where somebody closed it meanwhile, another one may be there now.
    if (succeeded && !m_isLeft)
        close();
}

void QuickAddView::close()
{
    m_isLeft = true;
    m_searchTimer->stop();
    m_store.setQuickAddPresented(false);
}

void QuickAddView::follow()
{
    const AppState &state = m_store.state();
    if (!state.isQuickAddPresented || state.authState != AuthState::SignedIn) {
        m_isLeft = true;
        m_searchTimer->stop();
    }
    // What is on its way out stays as it is.
    if (m_isLeft)
        return;
    m_suggestions->setSuggestions(suggestionsOf(state));
    if (m_error->setMessage(state.errorMessage) && isVisible()) {
        m_error->announce();
        reveal(m_error);
    }
}

void QuickAddView::updateButton()
{
    if (m_isCreating) {
        m_button->setBusy(u"Adding\u2026"_s);
        return;
    }
    if (m_button->isBusy())
        m_button->setIdle();
    m_button->setEnabled(canSubmit());
}

void QuickAddView::showEvent(QShowEvent *event)
{
    Component::showEvent(event);
    if (event->spontaneous())
        return; // the window was only out of sight for a while
    // Who comes back goes on where they were.
    QWidget *const before = focusWidget();
    (before != nullptr ? before : m_name)->setFocus(Qt::OtherFocusReason);
    m_error->announce();
}

void QuickAddView::keyPressEvent(QKeyEvent *event)
{
    const bool isReturn = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
    if (event->key() == Qt::Key_Escape)
        close();
    else if (isReturn && !event->isAutoRepeat())
        submit();
    else
        Component::keyPressEvent(event);
}

bool QuickAddView::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::Wheel) {
        event->ignore();
        return true;
    }
    return Component::eventFilter(watched, event);
}

void QuickAddView::measure()
{
    const int side = scaled(*this, 16);
    const int end = scaled(*this, 12);
    m_column->setContentsMargins(side, end, side, end);
    m_amount->setSpacing(end);
    m_currency->setFixedWidth(scaled(*this, currencyWidth));
}

} // namespace orbitledge::ui
