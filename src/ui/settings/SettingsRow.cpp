#include "ui/settings/SettingsRow.h"

#include "ui/kit/Typography.h"
#include "ui/settings/NoteLabel.h"
#include "ui/settings/SwitchRow.h"

#include <QAbstractButton>
#include <QEvent>
#include <QLabel>
#include <QStyle>
#include <QVBoxLayout>

#include <algorithm>
#include <iterator>

namespace orbitledge::ui {

namespace {

constexpr qreal padding = 8;
constexpr qreal lineGap = 8;
constexpr qreal lineHeight = 28;

} // namespace

ThemedLabel::Look valueLook()
{
    return {.designSize = baseTextSize,
        .tone = Tone::Slate,
        .overflow = ThemedLabel::Overflow::Elide,
        .alignment = Qt::AlignTrailing | Qt::AlignVCenter};
}

SettingsRow::SettingsRow(QWidget *parent)
    : Component(parent)
    , m_all(new QVBoxLayout(this))
    , m_lines(new QVBoxLayout)
{
    m_all->addLayout(m_lines);
    SettingsRow::measure();
}

SettingsRow::SettingsRow(SwitchRow *toggle, QWidget *parent)
    : SettingsRow(parent)
{
    m_all->insertWidget(0, toggle);
}

SettingsRow::SettingsRow(const QString &label, QWidget *control, QWidget *parent)
    : SettingsRow(parent)
{
    m_line = new QHBoxLayout;
    m_label = new QLabel(label);
    m_label->setTextFormat(Qt::PlainText);
    m_label->setWordWrap(true);
    m_lines->addLayout(m_line);
    m_line->addWidget(m_label, 1);
    m_line->addWidget(control);
    SettingsRow::measure();
    // What shows a value, and buttons, are read as what they say.
    if (control->focusPolicy() == Qt::NoFocus || qobject_cast<QAbstractButton *>(control) != nullptr)
        return;
    control->setAccessibleName(label);
    // Of what one chooses from, the name that is told is what is chosen; the label is told as a relation.
    m_label->setBuddy(control);
}

void SettingsRow::add(QWidget *widget)
{
    m_lines->addWidget(widget);
}

void SettingsRow::addButton(QWidget *button)
{
    m_lines->addWidget(button, 0, Qt::AlignLeading);
}

void SettingsRow::measure()
{
    m_all->setContentsMargins(0, scaled(*this, padding), 0, scaled(*this, padding));
    m_all->setSpacing(scaled(*this, lineGap / 2));
    m_lines->setContentsMargins(scaled(*this, edge), 0, scaled(*this, edge), 0);
    m_lines->setSpacing(scaled(*this, lineGap));
    for (NoteLabel *note : findChildren<NoteLabel *>())
        note->dress();
    if (m_line == nullptr)
        return;
    m_line->setSpacing(scaled(*this, 12));
    m_label->setMinimumHeight(scaled(*this, lineHeight));
    m_label->setAlignment(leadingIn(*this));
}

void SettingsRow::changeEvent(QEvent *event)
{
    Component::changeEvent(event);
    if (event->type() == QEvent::LayoutDirectionChange)
        measure();
}

ButtonLine::ButtonLine(const QList<QWidget *> &buttons, QWidget *parent)
    : Component(parent)
    , m_buttons(buttons)
{
    for (QWidget *button : buttons)
        button->setParent(this);
    QSizePolicy policy(QSizePolicy::Preferred, QSizePolicy::Minimum);
    policy.setHeightForWidth(true);
    setSizePolicy(policy);
}

int ButtonLine::gap() const
{
    return scaled(*this, lineGap);
}

QList<QWidget *> ButtonLine::shown() const
{
    QList<QWidget *> shown;
    std::ranges::copy_if(
        m_buttons, std::back_inserter(shown), [](const QWidget *button) { return !button->isHidden(); });
    return shown;
}

QSize ButtonLine::sizeHint() const
{
    QSize result(-gap(), 0);
    for (const QWidget *button : shown()) {
        const QSize size = button->sizeHint();
        result = QSize(result.width() + gap() + size.width(), std::max(result.height(), size.height()));
    }
    return result;
}

QSize ButtonLine::minimumSizeHint() const
{
    QSize result(0, 0);
    for (const QWidget *button : shown())
        result = result.expandedTo(button->sizeHint());
    return result;
}

bool ButtonLine::fitsInto(int width) const
{
    return sizeHint().width() <= width;
}

int ButtonLine::heightForWidth(int width) const
{
    if (fitsInto(width))
        return sizeHint().height();
    int height = -gap();
    for (const QWidget *button : shown())
        height += gap() + button->sizeHint().height();
    return height;
}

void ButtonLine::arrange()
{
    const bool isInLine = fitsInto(width());
    QPoint corner;
    for (QWidget *button : shown()) {
        const QSize size = button->sizeHint();
        const QRect place(corner, isInLine ? size : QSize(width(), size.height()));
        button->setGeometry(QStyle::visualRect(layoutDirection(), rect(), place));
        corner += isInLine ? QPoint(size.width() + gap(), 0) : QPoint(0, size.height() + gap());
    }
}

void ButtonLine::measure()
{
    arrange();
}

bool ButtonLine::event(QEvent *event)
{
    if (event->type() == QEvent::LayoutRequest) {
        updateGeometry();
        arrange();
    } else if (event->type() == QEvent::LayoutDirectionChange) {
        arrange();
    }
    return Component::event(event);
}

void ButtonLine::resizeEvent(QResizeEvent *event)
{
    Component::resizeEvent(event);
    arrange();
}

} // namespace orbitledge::ui
