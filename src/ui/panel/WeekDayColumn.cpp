#include "ui/panel/WeekDayColumn.h"

#include "ui/kit/Drawing.h"
#include "ui/kit/Palette.h"
#include "ui/kit/Typography.h"

#include <QFontMetricsF>
#include <QPainter>

#include <algorithm>

namespace orbitledge::ui {

namespace {

constexpr qreal radius = 8;
constexpr qreal weekdayTop = 4;
constexpr qreal weekdayHeight = 11;
constexpr qreal dayHeight = 16;
constexpr qreal dotSide = 5;
constexpr qreal dotGap = 2;
constexpr qreal dotsTop = 33;

/// One line in the middle of its room, narrower where there is not enough of it.
void drawFitting(QPainter &painter, const QRectF &room, QFont font, const QString &text)
{
    const qreal width = QFontMetricsF(font).horizontalAdvance(text);
    if (width > room.width())
        font.setPointSizeF(font.pointSizeF() * room.width() / width);
    painter.setFont(font);
    painter.drawText(room, Qt::AlignCenter | Qt::TextSingleLine | Qt::TextDontClip, text);
}

} // namespace

WeekDayColumn::WeekDayColumn(QWidget *parent)
    : QWidget(parent)
{
}

void WeekDayColumn::setContent(const WeekDayContent &content)
{
    if (content == m_content)
        return;
    m_content = content;
    setAccessibleName(content.label);
    setToolTip(content.label);
    update();
}

void WeekDayColumn::paintEvent(QPaintEvent * /*event*/)
{
    const ColorScheme colorScheme = colorSchemeOf(palette());
    QPainter painter(this);
    if (m_content.isToday)
        fillRounded(painter, rect(), scaled(*this, radius), colorOf(Tone::Emphasis, colorScheme));
    const qreal wide = width();
    painter.setPen(colorOf(Tone::Slate, colorScheme));
    drawFitting(painter, QRectF(0, scaled(*this, weekdayTop), wide, scaled(*this, weekdayHeight)),
        fontOf(*this, 9), m_content.weekday);
    painter.setPen(colorOf(m_content.isToday ? Tone::BlackAndWhite : Tone::Ink, colorScheme));
    drawFitting(painter, QRectF(0, scaled(*this, weekdayTop + weekdayHeight), wide, scaled(*this, dayHeight)),
        fontOf(*this, 12, m_content.isToday ? QFont::Bold : QFont::Medium), m_content.day);
    paintDots(painter);
}

void WeekDayColumn::paintDots(QPainter &painter) const
{
    const ColorScheme colorScheme = colorSchemeOf(palette());
    const qreal side = scaled(*this, dotSide);
    const qreal gap = scaled(*this, dotGap);
    const auto count = static_cast<qreal>(m_content.dots.size());
    qreal left = (width() - count * side - (count - 1) * gap) / 2;
    QStringList dots = m_content.dots;
    if (layoutDirection() == Qt::RightToLeft)
        std::ranges::reverse(dots);
    for (const QString &dot : std::as_const(dots)) {
        const QRectF place(left, scaled(*this, dotsTop), side, side);
        fillRounded(painter, place, side / 2, colorOfText(dot, colorScheme));
        left += side + gap;
    }
}

void WeekDayColumn::changeEvent(QEvent *event)
{
    QWidget::changeEvent(event);
    update();
}

} // namespace orbitledge::ui
