#include "ui/panel/LoadingPanel.h"

#include "ui/kit/Drawing.h"
#include "ui/kit/Palette.h"
#include "ui/kit/Typography.h"
#include "ui/panel/RowMeasures.h"

#include <QPainter>
#include <QStyle>

#include <array>

namespace orbitledge::ui {

using namespace Qt::StringLiterals;

namespace {

/// Names, subtitles and amounts are of all lengths.
struct Widths {
    qreal name;
    qreal subtitle;
    qreal cost;
};
constexpr std::array<Widths, 4> widths{{{112, 84, 44}, {88, 96, 36}, {132, 72, 52}, {72, 88, 40}}};

} // namespace

LoadingPanel::LoadingPanel(QWidget *parent)
    : QWidget(parent)
{
    setAccessibleName(u"Loading subscriptions"_s);
}

void LoadingPanel::paintEvent(QPaintEvent * /*event*/)
{
    QPainter painter(this);
    const QColor color = colorOf(Tone::Fill, colorSchemeOf(palette()));
    const auto bar = [&](qreal left, qreal top, qreal wide, qreal high, qreal radius) {
        const QRect place(scaled(*this, left), scaled(*this, top), scaled(*this, wide), scaled(*this, high));
        fillRounded(
            painter, QStyle::visualRect(layoutDirection(), rect(), place), scaled(*this, radius), color);
    };
    const qreal wide = width() / textScaleOf(*this);
    bar(row::logoLeft, 14, 64, 7, 3.5);
    qreal top = row::headerHeight;
    for (std::size_t i = 0; scaled(*this, top) < height(); ++i) {
        const Widths &line = widths[i % widths.size()];
        bar(row::logoLeft, top + (row::height - row::logoSide) / 2, row::logoSide, row::logoSide, 7);
        bar(row::textLeft, top + 10, line.name, 9, 4.5);
        bar(row::textLeft, top + 25, line.subtitle, 7, 3.5);
        bar(wide - row::trailingInset - line.cost, top + 17, line.cost, 9, 4.5);
        top += row::height;
    }
}

} // namespace orbitledge::ui
