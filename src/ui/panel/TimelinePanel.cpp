#include "ui/panel/TimelinePanel.h"

#include "model/UuidText.h"
#include "presentation/PanelScreen.h"
#include "ui/kit/Accessibility.h"
#include "ui/panel/Divider.h"
#include "ui/panel/EmptyPanel.h"
#include "ui/panel/LoadingPanel.h"
#include "ui/panel/PanelBanner.h"
#include "ui/panel/PanelFooter.h"
#include "ui/panel/PanelUpdateRow.h"
#include "ui/panel/ScrollArea.h"
#include "ui/panel/SubscriptionList.h"
#include "ui/panel/TotalsHeader.h"
#include "ui/panel/WeekStrip.h"

#include <QScrollArea>
#include <QShowEvent>
#include <QStackedLayout>
#include <QVBoxLayout>

#include <utility>

namespace orbitledge::ui {

using namespace Qt::StringLiterals;

namespace {

RowActions actionsOf(AppStore &store)
{
    return {
        .openInWeb
        = [&store](QUuid id) { store.openWebPage(u"/subscriptions/"_s + uuidText(id) + u"/edit"_s); },
        .cancel = [&store](QUuid id) { return store.cancelSubscription(id); },
        .uncancel = [&store](QUuid id) { return store.uncancelSubscription(id); },
    };
}

QVBoxLayout *columnOf(QWidget *widget)
{
    auto *const column = new QVBoxLayout(widget);
    column->setContentsMargins({});
    column->setSpacing(0);
    return column;
}

} // namespace

TimelinePanel::TimelinePanel(
    AppStore &store, std::shared_ptr<PanelTexts> texts, LogoImages *logos, QWidget *parent)
    : QWidget(parent)
    , m_store(store)
    , m_texts(std::move(texts))
    , m_totals(new TotalsHeader)
    , m_week(new WeekStrip)
    , m_banner(new PanelBanner)
    , m_content(new QStackedLayout)
    , m_loading(new LoadingPanel)
    , m_list(new SubscriptionList(actionsOf(store), logos))
    , m_empty(new EmptyPanel)
    , m_updateRow(new PanelUpdateRow)
    , m_footer(new PanelFooter)
{
    // It has the keyboard before anybody presses a key.
    setAccessibleRole(*this, QAccessible::Grouping);
    setAccessibleName(u"Upcoming renewals"_s);
    // In large letters there may be room for no list between what stands above and below it.
    auto *const upper = new QWidget;
    auto *const upperColumn = columnOf(upper);
    upperColumn->addWidget(m_totals);
    upperColumn->addWidget(m_week);
    upperColumn->addWidget(new Divider);
    upperColumn->addWidget(m_banner);
    upperColumn->addLayout(m_content, 1);
    auto *const column = columnOf(this);
    column->addWidget(makeScrollArea(upper), 1);
    column->addWidget(m_updateRow);
    column->addWidget(m_footer);
    m_content->addWidget(m_loading);
    m_content->addWidget(m_list);
    m_content->addWidget(m_empty);

    orderForKeyboard({m_banner, m_list, m_empty, m_updateRow, m_footer});

    connect(m_banner, &PanelBanner::retryRequested, this, [this] { m_store.refresh(); });
    connect(m_empty, &EmptyPanel::addRequested, this, [this] { m_store.setQuickAddPresented(true); });
    connect(m_footer, &PanelFooter::addRequested, this, [this] { m_store.setQuickAddPresented(true); });
    connect(m_footer, &PanelFooter::calendarRequested, this, [this] { m_store.openWebPage(u"/calendar"_s); });
    connect(m_footer, &PanelFooter::settingsRequested, this, &TimelinePanel::settingsRequested);
    connect(m_updateRow, &PanelUpdateRow::openRequested, this, [this] { m_store.openUpdate(); });
    connect(m_updateRow, &PanelUpdateRow::dismissRequested, this, [this] { m_store.dismissUpdate(); });
}

/// From top to bottom; layouts take things over in an order of their own.
void TimelinePanel::orderForKeyboard(const QList<QWidget *> &components)
{
    QWidget *previous = nullptr;
    const auto append = [&previous](QWidget *widget) {
        if (!(widget->focusPolicy() & Qt::TabFocus))
            return;
        if (previous != nullptr)
            setTabOrder(previous, widget);
        previous = widget;
    };
    for (QWidget *const component : components) {
        append(component);
        for (QWidget *const part : component->findChildren<QWidget *>())
            append(part);
    }
}

void TimelinePanel::showEvent(QShowEvent *event)
{
    QWidget::showEvent(event);
    if (event->spontaneous())
        return; // the window was only out of sight for a while
    // The keyboard begins above everything. The toolkit would begin with the first row where the window is
    // given the keyboard after this is shown, and nowhere where it was given it before.
    setFocus(Qt::OtherFocusReason);
    m_isAwaitingRetry = false;
}

void TimelinePanel::focusAdd()
{
    m_footer->focusAdd();
}

void TimelinePanel::update()
{
    const TimelineSnapshot &snapshot = m_store.timeline();
    m_totals->setContent(totalsOf(snapshot, panelCurrency(m_store.state()), m_store.today(), m_texts->dates,
        m_texts->money, m_texts->numbers));
    m_week->setContent(weekOf(snapshot, m_texts->dates));
    updateBanner();
    updateContent();
    const auto &available = m_store.state().availableUpdate;
    m_updateRow->setVisible(available.has_value());
    if (available)
        m_updateRow->setVersion(available->version);
}

void TimelinePanel::updateBanner()
{
    const auto banner = bannerOf(m_store.state(), m_texts->dates, m_store.calendar().timeZone());
    // Whose Retry goes away for a while presses nothing else with the next Return, and has it back.
    const bool canRetry = banner && banner->canRetry();
    if (!canRetry && m_banner->isAncestorOf(window()->focusWidget())) {
        setFocus(Qt::OtherFocusReason);
        m_isAwaitingRetry = true;
    }
    m_banner->setVisible(banner.has_value());
    if (banner)
        m_banner->setContent(*banner);
    else
        m_isAwaitingRetry = false;
    if (canRetry && std::exchange(m_isAwaitingRetry, false) && window()->focusWidget() == this)
        m_banner->focusRetry();
}

void TimelinePanel::updateContent()
{
    const TimelineSnapshot &snapshot = m_store.timeline();
    const QString currency = panelCurrency(m_store.state());
    m_list->setSections(snapshot.sections, [texts = m_texts, currency](const TimelineEntry &entry) {
        return rowOf(entry, currency, texts->dates, texts->money);
    });
    switch (timelineContentOf(m_store.state(), snapshot)) {
    case TimelineContent::Loading:
        m_content->setCurrentWidget(m_loading);
        break;
    case TimelineContent::Sections:
        m_content->setCurrentWidget(m_list);
        break;
    case TimelineContent::Empty:
        m_content->setCurrentWidget(m_empty);
        break;
    }
}

} // namespace orbitledge::ui
