#include "ui/settings/SettingsGroup.h"

#include "ui/kit/Palette.h"
#include "ui/kit/Typography.h"
#include "ui/settings/SettingsRow.h"

#include <QEvent>
#include <QPainter>
#include <QVBoxLayout>

namespace orbitledge::ui {

namespace {

constexpr qreal inset = 8;

} // namespace

SettingsGroup::SettingsGroup(QWidget *parent)
    : RoundedFrame(parent)
    , m_rows(new QVBoxLayout(this))
{
    m_rows->setSpacing(0);
    measure();
}

void SettingsGroup::addRow(QWidget *row)
{
    m_rows->addWidget(row);
}

void SettingsGroup::measure()
{
    m_rows->setContentsMargins(scaled(*this, inset), 0, scaled(*this, inset), 0);
}

void SettingsGroup::changeEvent(QEvent *event)
{
    RoundedFrame::changeEvent(event);
    if (event->type() == QEvent::FontChange)
        measure();
}

void SettingsGroup::paintEvent(QPaintEvent *event)
{
    RoundedFrame::paintEvent(event);
    QPainter painter(this);
    const QColor line = colorOf(Tone::Stroke, colorSchemeOf(palette()));
    bool isFirst = true;
    for (int i = 0; i < m_rows->count(); ++i) {
        const QWidget *const row = m_rows->itemAt(i)->widget();
        if (row->isHidden())
            continue;
        const int edge = scaled(*this, SettingsRow::edge);
        if (!isFirst)
            painter.fillRect(row->x() + edge, row->y(), row->width() - 2 * edge, 1, line);
        isFirst = false;
    }
}

} // namespace orbitledge::ui
