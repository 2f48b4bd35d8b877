#include "ui/kit/CompactIconButton.h"
#include "ui/kit/Drawing.h"
#include "ui/kit/Palette.h"
#include "ui/kit/ProgressIndicator.h"
#include "ui/kit/TabularText.h"
#include "ui/kit/Typography.h"
#include "ui/panel/BrandLogo.h"
#include "ui/panel/RowMeasures.h"
#include "ui/panel/SubscriptionRow.h"

#include <QFontMetricsF>
#include <QPainter>
#include <QStyle>

#include <algorithm>
#include <cmath>

namespace orbitledge::ui {

qreal SubscriptionRow::trailingWidth() const
{
    const qreal cost
        = TabularText(m_content.cost, fontOf(*this, row::costSize, QFont::DemiBold)).size().width();
    return std::max<qreal>(scaled(*this, row::trailingWidth), std::ceil(cost));
}

void SubscriptionRow::arrange()
{
    const auto place = [this](QWidget &widget, const QRect &area) {
        widget.setGeometry(QStyle::visualRect(layoutDirection(), rect(), area));
    };
    const QSize logo = m_logo->sizeHint();
    place(*m_logo, QRect(QPoint(scaled(*this, row::logoLeft), (height() - logo.height()) / 2), logo));

    const QSize button = m_open->sizeHint();
    const int gap = scaled(*this, 2);
    const bool hasMutation = m_mutation->isVisibleTo(m_buttons) || m_progress->isVisibleTo(m_buttons);
    const int wide = hasMutation ? 2 * button.width() + gap : button.width();
    place(*m_buttons,
        QRect(width() - scaled(*this, row::trailingInset - 4) - wide, (height() - button.height()) / 2, wide,
            button.height()));
    const auto placeButton = [&](QWidget &widget, int left, const QSize &size) {
        const QRect area(
            QPoint(left + (button.width() - size.width()) / 2, (button.height() - size.height()) / 2), size);
        widget.setGeometry(QStyle::visualRect(layoutDirection(), QRect(QPoint(), m_buttons->size()), area));
    };
    placeButton(*m_open, 0, button);
    placeButton(*m_mutation, button.width() + gap, button);
    placeButton(*m_progress, button.width() + gap, m_progress->sizeHint());
}

void SubscriptionRow::resizeEvent(QResizeEvent *event)
{
    ButtonBase::resizeEvent(event);
    arrange();
}

void SubscriptionRow::changeEvent(QEvent *event)
{
    ButtonBase::changeEvent(event);
    if (event->type() == QEvent::FontChange)
        arrange();
}

void SubscriptionRow::paintEvent(QPaintEvent * /*event*/)
{
    const ColorScheme colorScheme = colorSchemeOf(palette());
    QPainter painter(this);
    painter.setOpacity(m_presence);
    painter.fillRect(rect(), colorOf(Tone::Veil, colorScheme));
    if (isDown())
        painter.fillRect(rect(), colorOf(Tone::Veil, colorScheme));
    painter.setOpacity(1);

    if (m_content.urgency != Urgency::None) {
        const int high = scaled(*this, row::barHeight);
        const QRect bar(0, (height() - high) / 2, scaled(*this, row::barWidth), high);
        // Round on the side of the text only: the other end is beyond the edge.
        const int radius = scaled(*this, 2);
        fillRounded(painter, QStyle::visualRect(layoutDirection(), rect(), bar.adjusted(-radius, 0, 0, 0)),
            radius, colorOf(m_content.urgency == Urgency::Urgent ? Tone::Red : Tone::Amber, colorScheme));
    }
    paintTexts(painter);
    if (showsFocusRing())
        paintFrame(painter, QRectF(rect()).adjusted(2, 1, -2, -1), scaled(*this, controlRadius),
            colorOf(Tone::Cyan, colorScheme), focusRingWidth);
}

void SubscriptionRow::paintTexts(QPainter &painter) const
{
    const ColorScheme colorScheme = colorSchemeOf(palette());
    const Qt::Alignment leading = QStyle::visualAlignment(layoutDirection(), Qt::AlignLeading);
    const auto visual = [this](const QRectF &area) {
        return layoutDirection() == Qt::LeftToRight
            ? area
            : QRectF(width() - area.right(), area.top(), area.width(), area.height());
    };

    const QFont costFont = fontOf(*this, row::costSize, QFont::DemiBold);
    const TabularText cost(m_content.cost, costFont);
    const qreal right = width() - scaled(*this, row::trailingInset);
    painter.setPen(colorOf(m_content.isActive ? Tone::InkAndWhite : Tone::Slate, colorScheme));
    painter.setOpacity(1 - m_presence);
    const QRectF costArea(right - cost.size().width(), (height() - cost.size().height()) / 2,
        cost.size().width(), cost.size().height());
    cost.draw(painter, visual(costArea).topLeft());
    painter.setOpacity(1);

    // The name gives way to whatever stands behind it, and does not move when that changes.
    const qreal buttons = m_buttons->width() - scaled(*this, 4);
    const qreal left = scaled(*this, row::textLeft);
    const qreal room
        = right - std::max(trailingWidth(), m_presence > 0 ? buttons : 0) - scaled(*this, row::gap) - left;
    const QFont nameFont = fontOf(*this, row::nameSize, QFont::DemiBold);
    const QFont subtitleFont = fontOf(*this, row::subtitleSize);
    const QFontMetricsF name(nameFont);
    const QFontMetricsF subtitle(subtitleFont);
    const qreal top = (height() - name.height() - subtitle.height()) / 2;
    const auto draw = [&](const QFont &font, const QFontMetricsF &metrics, qreal lineTop, const QString &text,
                          Tone tone) {
        painter.setFont(font);
        painter.setPen(colorOf(tone, colorScheme));
        painter.drawText(visual(QRectF(left, lineTop, room, metrics.height())),
            static_cast<int>(leading) | Qt::TextSingleLine | Qt::TextDontClip,
            metrics.elidedText(text, Qt::ElideRight, room));
    };
    draw(nameFont, name, top, m_content.name, m_content.isActive ? Tone::InkAndWhite : Tone::Slate);
    draw(subtitleFont, subtitle, top + name.height(), m_content.subtitle, Tone::Slate);
}

} // namespace orbitledge::ui
