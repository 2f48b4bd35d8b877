#include "ui/panel/TotalsHeader.h"

#include "ui/kit/Palette.h"
#include "ui/kit/Symbols.h"
#include "ui/kit/Typography.h"

#include <QFontMetricsF>
#include <QPainter>
#include <QStyle>

#include <algorithm>

namespace orbitledge::ui {

namespace {

constexpr qreal sideMargin = 16;
constexpr qreal topMargin = 14;
constexpr qreal bottomMargin = 12;
constexpr qreal lineGap = 2;
constexpr qreal captionSize = 11;
constexpr qreal largestTotal = 26;
constexpr qreal largestRemaining = 14;
constexpr qreal perMonthSize = 12;
/// In pixels, at any text scale.
constexpr qreal smallestText = 9;
/// Between what stands left and what stands right.
constexpr qreal columnGap = 16;
constexpr qreal warningSide = 12;
constexpr qreal warningGap = 4;

ThemedLabel::Look captionLook(qreal size, QFont::Weight weight = QFont::Normal)
{
    return {.designSize = size, .weight = weight, .tone = Tone::Slate};
}

ThemedLabel::Look totalLook(qreal size)
{
    return {.designSize = size,
        .weight = QFont::Bold,
        .tone = Tone::BlackAndWhite,
        .tracking = -0.4 * size / largestTotal,
        .digits = ThemedLabel::Digits::Tabular};
}

ThemedLabel::Look perMonthLook(qreal size)
{
    return {.designSize = size, .weight = QFont::Medium, .tone = Tone::Slate};
}

ThemedLabel::Look remainingLook(qreal size)
{
    return {.designSize = size,
        .weight = QFont::DemiBold,
        .tone = Tone::BlackAndWhite,
        .digits = ThemedLabel::Digits::Tabular};
}

qreal ascentOf(const ThemedLabel &label)
{
    return QFontMetricsF(fontOf(label, label.look().designSize, label.look().weight)).ascent();
}

} // namespace

TotalsHeader::TotalsHeader(QWidget *parent)
    : Component(parent)
    , m_month(new ThemedLabel(QString(), captionLook(captionSize), this))
    , m_total(new ThemedLabel(QString(), totalLook(largestTotal), this))
    , m_perMonth(
          new ThemedLabel(QString(), {.designSize = 12, .weight = QFont::Medium, .tone = Tone::Slate}, this))
    , m_active(new ThemedLabel(QString(), captionLook(captionSize), this))
    , m_remaining(new ThemedLabel(QString(), remainingLook(largestRemaining), this))
    , m_remainingCaption(new ThemedLabel(QString(), captionLook(captionSize, QFont::DemiBold), this))
    , m_partial(new ThemedLabel(QString(), captionLook(captionSize), this))
{
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
}

void TotalsHeader::setContent(const TotalsContent &content)
{
    m_month->setText(content.month);
    m_total->setText(content.monthlyTotal);
    m_perMonth->setText(content.perMonth.trimmed());
    m_active->setText(content.active);
    m_remaining->setText(content.remaining);
    m_remainingCaption->setText(content.remainingCaption);
    m_partial->setText(content.partialLabel);
    m_partial->setToolTip(content.partialHelp);
    m_partial->setAccessibleDescription(content.partialHelp);
    m_partial->setVisible(content.isPartial);
    arrange();
}

QSize TotalsHeader::sizeHint() const
{
    const qreal lines = QFontMetricsF(fontOf(*this, captionSize)).height() * 2
        + QFontMetricsF(fontOf(*this, largestTotal, QFont::Bold)).height();
    return {scaled(*this, 328),
        scaled(*this, topMargin + lineGap + bottomMargin) + static_cast<int>(std::ceil(lines))};
}

void TotalsHeader::measure()
{
    arrange();
}

void TotalsHeader::resizeEvent(QResizeEvent *event)
{
    Component::resizeEvent(event);
    arrange();
}

void TotalsHeader::chooseSizes(qreal room)
{
    const qreal smallest = smallestText / textScaleOf(*this);
    const qreal gaps = scaled(*this, columnGap) + scaled(*this, 4);
    for (int step = 0;; ++step) {
        const qreal total = std::max(smallest, largestTotal - step / 2.0);
        // The total stays the largest of them for as long as that is possible.
        m_total->setLook(totalLook(total));
        m_perMonth->setLook(perMonthLook(std::clamp(total * 0.7, smallest, perMonthSize)));
        m_remaining->setLook(remainingLook(std::clamp(total * 0.8, smallest, largestRemaining)));
        const qreal needed = m_total->sizeHint().width() + m_perMonth->sizeHint().width()
            + m_remaining->sizeHint().width() + gaps;
        if (needed <= room || total <= smallest)
            return;
    }
}

/// The captions are of one size, at which the longer of the two lines has room.
void TotalsHeader::chooseCaptionSize(qreal room)
{
    const qreal smallest = smallestText / textScaleOf(*this);
    const qreal gap = scaled(*this, columnGap);
    for (int step = 0;; ++step) {
        const qreal size = std::max(smallest, captionSize - step / 2.0);
        for (ThemedLabel *const caption : {m_month, m_partial, m_active})
            caption->setLook(captionLook(size));
        m_remainingCaption->setLook(captionLook(size, QFont::DemiBold));
        const qreal partial = m_partial->isHidden()
            ? 0
            : gap + scaled(*this, warningSide + warningGap) + m_partial->sizeHint().width();
        const qreal needed = std::max(m_month->sizeHint().width() + partial,
            m_active->sizeHint().width() + gap + m_remainingCaption->sizeHint().width());
        if (needed <= room || size <= smallest)
            return;
    }
}

void TotalsHeader::arrange()
{
    const int margin = scaled(*this, sideMargin);
    const QRect area = rect().adjusted(margin, scaled(*this, topMargin), -margin, 0);
    chooseSizes(area.width());
    chooseCaptionSize(area.width());
    const auto place = [this](QWidget &label, QPoint corner) {
        label.setGeometry(QStyle::visualRect(layoutDirection(), rect(), QRect(corner, label.sizeHint())));
    };
    const auto placeRight = [&](QWidget &label, int top) {
        place(label, {area.left() + area.width() - label.sizeHint().width(), top});
    };

    place(*m_month, area.topLeft());
    placeRight(*m_partial, area.top());
    const int side = scaled(*this, warningSide);
    QRect warning(0, 0, side, side);
    warning.moveCenter(QPoint(
        area.left() + area.width() - m_partial->sizeHint().width() - scaled(*this, warningGap) - side / 2,
        area.top() + m_partial->sizeHint().height() / 2));
    m_warning = QStyle::visualRect(layoutDirection(), rect(), warning);

    // Amounts and what belongs to them share one baseline.
    const QFontMetricsF largest(fontOf(*this, largestTotal, QFont::Bold));
    const int lineTop = area.top() + m_month->sizeHint().height();
    const qreal baseline = lineTop + largest.ascent();
    const auto topOf = [baseline](const ThemedLabel &label) { return qRound(baseline - ascentOf(label)); };
    place(*m_total, {area.left(), topOf(*m_total)});
    place(*m_perMonth, {area.left() + m_total->sizeHint().width() + scaled(*this, 5), topOf(*m_perMonth)});
    placeRight(*m_remaining, topOf(*m_remaining));
    const int lastTop = lineTop + static_cast<int>(std::ceil(largest.height())) + scaled(*this, lineGap);
    place(*m_active, {area.left(), lastTop});
    placeRight(*m_remainingCaption, lastTop);
    update();
}

void TotalsHeader::paintEvent(QPaintEvent * /*event*/)
{
    if (m_partial->isHidden())
        return;
    QPainter painter(this);
    paintSymbol(painter, Symbol::Warning, m_warning, colorOf(Tone::Amber, colorSchemeOf(palette())));
}

} // namespace orbitledge::ui
