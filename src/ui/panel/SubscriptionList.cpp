#include "ui/panel/SubscriptionList.h"

#include "ui/kit/Palette.h"
#include "ui/kit/ThemedLabel.h"
#include "ui/kit/Typography.h"
#include "ui/panel/RowMeasures.h"

#include <QScrollBar>

#include <algorithm>

namespace orbitledge::ui {

namespace {

constexpr qreal titleSize = 10;
constexpr qreal titleTracking = 1.7;
constexpr qreal titleBottom = 4;
/// Under the last row.
constexpr qreal bottomMargin = 8;

} // namespace

SubscriptionList::SubscriptionList(RowActions actions, LogoImages *images, QWidget *parent)
    : QAbstractScrollArea(parent)
    , m_actions(std::move(actions))
    , m_images(images)
{
    setAccessibleName(QStringLiteral("Subscriptions"));
    setFrameShape(QFrame::NoFrame);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setFocusPolicy(Qt::TabFocus);
    viewport()->setAutoFillBackground(false);
    viewport()->setBackgroundRole(QPalette::NoRole);
}

QSize SubscriptionList::sizeHint() const
{
    constexpr qreal fewRows = 2.5;
    return {scaled(*this, 160), scaled(*this, row::headerHeight + fewRows * row::height)};
}

// ---- where things are ------------------------------------------------------------------------------------

int SubscriptionList::headerHeight() const
{
    return scaled(*this, row::headerHeight);
}

int SubscriptionList::rowHeight() const
{
    return scaled(*this, row::height);
}

int SubscriptionList::contentHeight() const
{
    return static_cast<int>(m_sections.size()) * headerHeight() + static_cast<int>(m_rowCount) * rowHeight()
        + scaled(*this, bottomMargin);
}

SubscriptionList::Place SubscriptionList::placeOf(qsizetype position) const
{
    const auto after = std::ranges::upper_bound(m_firstRows, position);
    const qsizetype section = std::distance(m_firstRows.begin(), after) - 1;
    return {.section = section, .index = position - m_firstRows[static_cast<std::size_t>(section)]};
}

const TimelineEntry &SubscriptionList::entryAt(qsizetype position) const
{
    const Place place = placeOf(position);
    return m_sections.at(place.section).entries.at(place.index);
}

int SubscriptionList::topOf(qsizetype position) const
{
    const qsizetype headers = placeOf(position).section + 1;
    return static_cast<int>(headers) * headerHeight() + static_cast<int>(position) * rowHeight();
}

/// The last row that begins at `y` or above; the first one where none does.
qsizetype SubscriptionList::positionAt(int y) const
{
    qsizetype low = 0;
    qsizetype high = m_rowCount - 1;
    while (low < high) {
        const qsizetype middle = (low + high + 1) / 2;
        if (topOf(middle) <= y)
            low = middle;
        else
            high = middle - 1;
    }
    return low;
}

// ---- what is there ---------------------------------------------------------------------------------------

void SubscriptionList::setSections(QList<TimelineSection> sections, RowMaker makeRow)
{
    const std::optional<Followed> followed = findFollowed();
    m_sections = std::move(sections);
    m_makeRow = std::move(makeRow);
    m_firstRows.clear();
    m_rowCount = 0;
    for (const TimelineSection &section : std::as_const(m_sections)) {
        m_firstRows.push_back(m_rowCount);
        m_rowCount += section.entries.size();
    }
    while (m_headers.size() > m_sections.size())
        delete m_headers.takeLast();
    while (m_headers.size() < m_sections.size()) {
        auto *const header = new ThemedLabel(QString(),
            {.designSize = titleSize,
                .weight = QFont::Medium,
                .tone = Tone::Slate,
                .tracking = titleTracking,
                .overflow = ThemedLabel::Overflow::Elide},
            viewport());
        header->setHeading(true);
        header->show();
        m_headers.append(header);
    }
    for (qsizetype i = 0; i < m_headers.size(); ++i)
        m_headers[i]->setText(m_sections[i].title.toUpper());
    relocate();
    // A row that keeps its place may have another text.
    for (const Realized &realized : m_realized)
        realized.row->setContent(m_makeRow(entryAt(realized.position)));
    verticalScrollBar()->setRange(0, std::max(0, contentHeight() - viewport()->height()));
    verticalScrollBar()->setPageStep(viewport()->height());
    verticalScrollBar()->setSingleStep(rowHeight() / 2);
    realize();
    if (hasFocus() && m_rowCount > 0)
        rowAt(m_current)->setFocus(Qt::OtherFocusReason);
    if (followed)
        follow(*followed);
}

/// Finds where the subscriptions of the rows that are there have gone; what has gone altogether leaves its
/// row to others.
void SubscriptionList::relocate()
{
    for (Realized &realized : m_realized)
        realized.position = -1;
    qsizetype current = -1;
    qsizetype position = 0;
    for (const TimelineSection &section : std::as_const(m_sections)) {
        for (const TimelineEntry &entry : section.entries) {
            const QUuid id = entry.subscription->id;
            const auto found = std::ranges::find_if(m_realized, [&](const Realized &realized) {
                return realized.position < 0 && realized.row->content().id == id;
            });
            if (found != m_realized.end())
                found->position = position;
            if (current < 0 && id == m_currentId)
                current = position;
            ++position;
        }
    }
    std::vector<SubscriptionRow *> gone;
    std::erase_if(m_realized, [&gone](const Realized &realized) {
        if (realized.position >= 0)
            return false;
        gone.push_back(realized.row);
        return true;
    });
    setCurrent(current >= 0 ? current : std::min(m_current, m_rowCount - 1));
    const bool hadFocus = std::ranges::any_of(gone, &SubscriptionRow::hasFocusWithin);
    if (hadFocus && m_rowCount > 0)
        keepFocus();
    // To hide what has the focus has the toolkit give it to somebody else at once, which may be this list: by
    // now what it knows of its rows is true again.
    for (SubscriptionRow *const row : gone) {
        row->withdrawQuestion();
        row->hide();
        m_spare.push_back(row);
    }
}

bool SubscriptionList::isHeld(const SubscriptionRow &row)
{
    return row.hasFocusWithin() || row.isWorking() || row.isAsking();
}

SubscriptionRow *SubscriptionList::makeRow()
{
    if (!m_spare.empty()) {
        SubscriptionRow *const spare = m_spare.back();
        m_spare.pop_back();
        return spare;
    }
    auto *const row = new SubscriptionRow(m_actions, m_images, viewport());
    connect(row, &SubscriptionRow::moveRequested, this, &SubscriptionList::moveCurrent);
    connect(row, &SubscriptionRow::entered, this, [this, row] {
        const auto found = std::ranges::find(m_realized, row, &Realized::row);
        if (found == m_realized.end())
            return;
        const qsizetype position = found->position;
        setCurrent(position);
        reveal(position);
    });
    return row;
}

SubscriptionRow *SubscriptionList::rowAt(qsizetype position)
{
    const auto found = std::ranges::find(m_realized, position, &Realized::position);
    return found == m_realized.end() ? nullptr : found->row;
}

void SubscriptionList::realize()
{
    if (m_rowCount > 0) {
        const int top = verticalScrollBar()->value();
        realizeRange(positionAt(top), positionAt(top + viewport()->height()));
    }
    placeHeaders();
}

void SubscriptionList::realizeRange(qsizetype first, qsizetype last)
{
    const auto isSeen = [&](qsizetype position) { return position >= first && position <= last; };
    // First those that are free, so that there are rows to spare.
    std::erase_if(m_realized, [&](const Realized &realized) {
        const bool stays
            = isSeen(realized.position) || realized.position == m_current || isHeld(*realized.row);
        if (!stays) {
            realized.row->hide();
            m_spare.push_back(realized.row);
        }
        return !stays;
    });
    const auto bring = [&](qsizetype position) {
        if (rowAt(position) != nullptr)
            return;
        SubscriptionRow *const row = makeRow();
        row->setContent(m_makeRow(entryAt(position)));
        m_realized.push_back({.row = row, .position = position});
    };
    for (qsizetype position = first; position <= last; ++position)
        bring(position);
    bring(m_current);

    const int scrolled = verticalScrollBar()->value();
    for (const Realized &realized : m_realized) {
        realized.row->setGeometry(0, topOf(realized.position) - scrolled, viewport()->width(), rowHeight());
        realized.row->show();
    }
}

void SubscriptionList::placeHeaders()
{
    const int scrolled = verticalScrollBar()->value();
    const int left = scaled(*this, row::logoLeft);
    for (qsizetype i = 0; i < m_headers.size(); ++i) {
        const int bottom
            = topOf(m_firstRows[static_cast<std::size_t>(i)]) - scrolled - scaled(*this, titleBottom);
        const int high = m_headers[i]->sizeHint().height();
        m_headers[i]->setGeometry(left, bottom - high, viewport()->width() - 2 * left, high);
    }
}

QList<SubscriptionRow *> SubscriptionList::rows() const
{
    std::vector<Realized> inOrder = m_realized;
    std::ranges::sort(inOrder, {}, &Realized::position);
    QList<SubscriptionRow *> rows;
    for (const Realized &realized : inOrder)
        rows.append(realized.row);
    return rows;
}

// ---- scrolling -------------------------------------------------------------------------------------------

void SubscriptionList::resizeEvent(QResizeEvent *event)
{
    QAbstractScrollArea::resizeEvent(event);
    verticalScrollBar()->setRange(0, std::max(0, contentHeight() - viewport()->height()));
    verticalScrollBar()->setPageStep(viewport()->height());
    realize();
}

void SubscriptionList::changeEvent(QEvent *event)
{
    QAbstractScrollArea::changeEvent(event);
    if (event->type() == QEvent::FontChange && m_makeRow) {
        verticalScrollBar()->setRange(0, std::max(0, contentHeight() - viewport()->height()));
        realize();
    }
}

void SubscriptionList::scrollContentsBy(int /*dx*/, int /*dy*/)
{
    realize();
}

bool SubscriptionList::viewportEvent(QEvent *event)
{
    // Nothing is drawn here, so that what is behind shows.
    if (event->type() == QEvent::Paint)
        return false;
    return QAbstractScrollArea::viewportEvent(event);
}

} // namespace orbitledge::ui
