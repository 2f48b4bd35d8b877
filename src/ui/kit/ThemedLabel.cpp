#include "ui/kit/ThemedLabel.h"

#include "ui/kit/TabularText.h"
#include "ui/kit/Typography.h"

#include <QAccessible>
#include <QAccessibleWidget>
#include <QEvent>
#include <QFontMetricsF>
#include <QPainter>
#include <QStyle>

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

namespace orbitledge::ui {

namespace {

constexpr qreal unlimited = std::numeric_limits<short>::max();
/// A wrapped text would rather be this many times as wide as its letters are high.
constexpr qreal comfortableWidth = 22;

class LabelInterface : public QAccessibleWidget {
public:
    explicit LabelInterface(ThemedLabel *label)
        : QAccessibleWidget(label, QAccessible::StaticText)
        , m_label(label)
    {
    }

    QAccessible::Role role() const override
    {
        return m_label->isHeading() ? QAccessible::Heading : QAccessible::StaticText;
    }

    QString text(QAccessible::Text kind) const override
    {
        if (kind == QAccessible::Name && m_label->accessibleName().isEmpty())
            return m_label->text();
        return QAccessibleWidget::text(kind);
    }

private:
    ThemedLabel *m_label;
};

QAccessibleInterface *labelInterface(const QString & /*className*/, QObject *object)
{
    auto *const label = qobject_cast<ThemedLabel *>(object);
    return label ? new LabelInterface(label) : nullptr;
}

void installInterface()
{
    static const bool isInstalled = [] {
        QAccessible::installFactory(labelInterface);
        return true;
    }();
    Q_UNUSED(isInstalled)
}

int ceiled(qreal measure)
{
    return static_cast<int>(std::ceil(measure));
}

} // namespace

ThemedLabel::ThemedLabel(QString text, QWidget *parent)
    : ThemedLabel(std::move(text), Look(), parent)
{
}

ThemedLabel::ThemedLabel(QString text, Look look, QWidget *parent)
    : QWidget(parent)
    , m_text(std::move(text))
{
    installInterface();
    setLook(look);
}

void ThemedLabel::setText(const QString &text)
{
    if (text == m_text)
        return;
    m_text = text;
    updateGeometry();
    update();
    QAccessibleEvent event(this, QAccessible::NameChanged);
    QAccessible::updateAccessibility(&event);
}

void ThemedLabel::setLook(const Look &look)
{
    m_look = look;
    QSizePolicy policy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    if (look.overflow != Overflow::Keep)
        policy.setHorizontalPolicy(QSizePolicy::Preferred);
    if (look.overflow == Overflow::Wrap) {
        policy.setVerticalPolicy(QSizePolicy::Minimum);
        policy.setHeightForWidth(true);
    }
    setSizePolicy(policy);
    updateGeometry();
    update();
}

QFont ThemedLabel::textFont() const
{
    return fontOf(*this, m_look.designSize, m_look.weight, m_look.tracking);
}

bool ThemedLabel::isTabular() const
{
    return m_look.digits == Digits::Tabular && m_look.overflow == Overflow::Keep;
}

// The last letter has its tracking too, behind which nothing comes.
qreal ThemedLabel::trailingTracking() const
{
    return m_text.isEmpty() ? 0 : textFont().letterSpacing();
}

qreal ThemedLabel::naturalWidth() const
{
    const QFont font = textFont();
    const qreal width = isTabular() ? TabularText(m_text, font).size().width()
                                    : QFontMetricsF(font).size(Qt::TextSingleLine, m_text).width();
    return width - trailingTracking();
}

QSize ThemedLabel::wrappedSize(qreal width) const
{
    const QRectF bounds
        = QFontMetricsF(textFont()).boundingRect(QRectF(0, 0, width, unlimited), Qt::TextWordWrap, m_text);
    return {ceiled(bounds.width()), ceiled(bounds.height())};
}

bool ThemedLabel::isElided() const
{
    return m_look.overflow == Overflow::Elide && ceiled(naturalWidth()) > width();
}

QSize ThemedLabel::sizeHint() const
{
    if (m_look.overflow != Overflow::Wrap)
        return {ceiled(naturalWidth()), ceiled(QFontMetricsF(textFont()).height())};
    return wrappedSize(std::min<qreal>(maximumWidth(), scaled(*this, m_look.designSize) * comfortableWidth));
}

QSize ThemedLabel::minimumSizeHint() const
{
    const QFontMetricsF metrics(textFont());
    switch (m_look.overflow) {
    case Overflow::Keep:
        return sizeHint();
    case Overflow::Elide:
        return {std::min(ceiled(metrics.horizontalAdvance(QChar(u'…'))), sizeHint().width()),
            sizeHint().height()};
    case Overflow::Wrap:
        // As wide as its longest word.
        return {wrappedSize(1).width(), ceiled(metrics.height())};
    }
    Q_UNREACHABLE();
}

int ThemedLabel::heightForWidth(int width) const
{
    return m_look.overflow == Overflow::Wrap ? wrappedSize(std::min(width, maximumWidth())).height() : -1;
}

void ThemedLabel::paintTabular(QPainter &painter) const
{
    const TabularText line(m_text, textFont());
    const QSize size(ceiled(line.size().width() - trailingTracking()), ceiled(line.size().height()));
    const QRect place = QStyle::alignedRect(layoutDirection(), m_look.alignment, size, rect());
    line.draw(painter, place.topLeft());
}

void ThemedLabel::paintEvent(QPaintEvent * /*event*/)
{
    const ColorScheme colorScheme = colorSchemeOf(palette());
    const QFont font = textFont();
    QPainter painter(this);
    painter.setFont(font);
    painter.setPen(colorOf(isEnabled() ? m_look.tone : Tone::Grey, colorScheme));
    if (isTabular()) {
        paintTabular(painter);
        return;
    }
    const bool wraps = m_look.overflow == Overflow::Wrap;
    const Qt::Alignment alignment = QStyle::visualAlignment(layoutDirection(), m_look.alignment);
    const int flags = static_cast<int>(alignment) | (wraps ? Qt::TextWordWrap : Qt::TextSingleLine);
    const QString shown
        = isElided() ? QFontMetricsF(font).elidedText(m_text, Qt::ElideRight, width()) : m_text;
    QRectF place = rect();
    if (!alignment.testFlag(Qt::AlignLeft))
        place.adjust(0, 0, trailingTracking() / (alignment.testFlag(Qt::AlignHCenter) ? 2 : 1), 0);
    painter.drawText(place, flags | Qt::TextDontClip, shown);
}

void ThemedLabel::changeEvent(QEvent *event)
{
    QWidget::changeEvent(event);
    if (event->type() == QEvent::FontChange)
        updateGeometry();
    update();
}

} // namespace orbitledge::ui
