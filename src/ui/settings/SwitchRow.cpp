#include "ui/settings/SwitchRow.h"

#include "ui/kit/ControlPainting.h"
#include "ui/kit/Drawing.h"
#include "ui/kit/Palette.h"
#include "ui/kit/Typography.h"

#include <QPainter>
#include <QStyleOption>

#include <algorithm>

namespace orbitledge::ui {

namespace {

constexpr qreal trackWidth = 34;
constexpr qreal trackHeight = 20;
constexpr qreal knobInset = 2;
constexpr qreal gap = 12;
/// At both ends, for the ring.
constexpr qreal edge = 4;

void paintTrack(QPainter &painter, const QRectF &track, bool isOn, bool isHovered, ColorScheme colorScheme)
{
    const qreal radius = track.height() / 2;
    if (isOn) {
        fillRounded(painter, track, radius, colorOf(Tone::Cyan, colorScheme));
    } else {
        fillRounded(painter, track, radius, colorOf(isHovered ? Tone::Fill : Tone::Veil, colorScheme));
        paintFrame(painter, track, radius, colorOf(Tone::Grey, colorScheme), 1);
    }
}

QRectF knobIn(const QRectF &track, bool isAtRight, qreal inset)
{
    const qreal side = track.height() - 2 * inset;
    const qreal left = isAtRight ? track.right() - inset - side : track.left() + inset;
    return {left, track.top() + inset, side, side};
}

} // namespace

SwitchRow::SwitchRow(const QString &text, QWidget *parent)
    : QCheckBox(text, parent)
{
    QSizePolicy policy(QSizePolicy::Preferred, QSizePolicy::Minimum);
    policy.setHeightForWidth(true);
    setSizePolicy(policy);
}

int SwitchRow::textRoom() const
{
    return scaled(*this, trackWidth + gap + 2 * edge);
}

QSize SwitchRow::textSize(int width) const
{
    constexpr int unlimited = 1 << 20;
    return fontMetrics().boundingRect(QRect(0, 0, width, unlimited), Qt::TextWordWrap, text()).size();
}

QSize SwitchRow::sizeHint() const
{
    constexpr int unlimited = 1 << 20;
    const QSize size = textSize(unlimited);
    return {size.width() + textRoom(), std::max(size.height(), scaled(*this, trackHeight + 2 * edge))};
}

QSize SwitchRow::minimumSizeHint() const
{
    return {textSize(1).width() + textRoom(), sizeHint().height()};
}

int SwitchRow::heightForWidth(int width) const
{
    return std::max(textSize(width - textRoom()).height(), sizeHint().height());
}

void SwitchRow::paintEvent(QPaintEvent * /*event*/)
{
    QStyleOptionButton option;
    initStyleOption(&option);
    const ColorScheme colorScheme = ui::colorSchemeOf(palette());
    const QSize size(scaled(*this, trackWidth), scaled(*this, trackHeight));
    const int side = scaled(*this, edge);
    const QRect free = rect().adjusted(side, 0, -side, 0);
    const QRectF track
        = QStyle::alignedRect(layoutDirection(), Qt::AlignTrailing | Qt::AlignVCenter, size, free);
    QPainter painter(this);
    painter.setPen(colorOf(isEnabled() ? Tone::Ink : Tone::Grey, colorScheme));
    const QRect words
        = QStyle::visualRect(layoutDirection(), rect(), rect().adjusted(side, 0, side - textRoom(), 0));
    const auto alignment = QStyle::visualAlignment(layoutDirection(), Qt::AlignLeading | Qt::AlignVCenter);
    painter.drawText(words, int(alignment) | Qt::TextWordWrap, text());

    paintTrack(painter, track, isChecked(), underMouse() && isEnabled(), colorScheme);
    const bool isAtRight = isChecked() == isLeftToRight();
    const qreal inset = scaled(*this, isChecked() ? knobInset : knobInset + 1);
    const QRectF knob = knobIn(track, isAtRight, inset);
    fillRounded(
        painter, knob, knob.height() / 2, colorOf(isChecked() ? Tone::OnCyan : Tone::Slate, colorScheme));
    if (wasReachedByKeyboard(option)) {
        const QRectF ring = track.adjusted(-side, -side, side, side);
        paintFrame(painter, ring, ring.height() / 2, colorOf(Tone::Cyan, colorScheme), focusRingWidth);
    }
}

} // namespace orbitledge::ui
