#include "ui/panel/SuggestionButton.h"

#include "ui/kit/Drawing.h"
#include "ui/kit/Palette.h"
#include "ui/kit/Typography.h"
#include "ui/panel/TemplateLogo.h"

#include <QFontMetricsF>
#include <QPainter>
#include <QStyle>

#include <cmath>

namespace orbitledge::ui {

using namespace Qt::StringLiterals;

namespace {

constexpr qreal inset = 4;
constexpr qreal gap = 6;
constexpr qreal endInset = 8;
constexpr qreal radius = 8;

} // namespace

SuggestionButton::SuggestionButton(LogoImages *logos, QWidget *parent)
    : ButtonBase(parent)
    , m_logo(new TemplateLogo(logos, this))
{
    // A long name gives way.
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
    placeLogo();
}

void SuggestionButton::setSuggestion(const SubscriptionTemplate &suggestion)
{
    m_suggestion = suggestion;
    m_logo->setContent(logoOf(suggestion.name, suggestion.logoURL));
    // An ampersand of a name marks no key.
    setAccessibleName(u"Use "_s + suggestion.name + u" template"_s);
    setToolTip(suggestion.name);
    updateGeometry();
    update();
}

QFont SuggestionButton::labelFont() const
{
    return fontOf(*this, 10);
}

int SuggestionButton::labelStart() const
{
    return scaled(*this, inset) + m_logo->sizeHint().width() + scaled(*this, gap);
}

QSize SuggestionButton::sizeHint() const
{
    const qreal label = QFontMetricsF(labelFont()).horizontalAdvance(m_suggestion.name);
    return {labelStart() + static_cast<int>(std::ceil(label)) + scaled(*this, endInset),
        m_logo->sizeHint().height() + 2 * scaled(*this, inset)};
}

QSize SuggestionButton::minimumSizeHint() const
{
    return {labelStart() + scaled(*this, endInset), sizeHint().height()};
}

void SuggestionButton::placeLogo()
{
    const QRect place(QPoint(scaled(*this, inset), scaled(*this, inset)), m_logo->sizeHint());
    m_logo->setGeometry(QStyle::visualRect(layoutDirection(), rect(), place));
}

void SuggestionButton::paintEvent(QPaintEvent * /*event*/)
{
    const ColorScheme colorScheme = colorSchemeOf(palette());
    const qreal corner = scaled(*this, radius);
    QPainter painter(this);
    fillRounded(painter, rect(), corner, colorOf(Tone::Veil, colorScheme));
    if (isHovered())
        fillRounded(painter, rect(), corner, colorOf(Tone::Fill, colorScheme));
    if (isDown())
        fillRounded(painter, rect(), corner, colorOf(Tone::Fill, colorScheme));
    paintFrame(painter, rect(), corner, colorOf(Tone::Stroke, colorScheme), 1);
    const QRect room = QStyle::visualRect(
        layoutDirection(), rect(), rect().adjusted(labelStart(), 0, -scaled(*this, endInset), 0));
    painter.setFont(labelFont());
    painter.setPen(colorOf(Tone::Ink, colorScheme));
    painter.drawText(room,
        static_cast<int>(QStyle::visualAlignment(layoutDirection(), Qt::AlignLeft | Qt::AlignVCenter))
            | Qt::TextSingleLine,
        QFontMetricsF(labelFont()).elidedText(m_suggestion.name, Qt::ElideRight, room.width()));
    paintFocusRing(painter, corner);
}

void SuggestionButton::resizeEvent(QResizeEvent *event)
{
    ButtonBase::resizeEvent(event);
    placeLogo();
}

void SuggestionButton::changeEvent(QEvent *event)
{
    ButtonBase::changeEvent(event);
    placeLogo();
}

} // namespace orbitledge::ui
