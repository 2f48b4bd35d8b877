#include "ui/panel/PanelFooter.h"

#include "ui/kit/FooterButton.h"
#include "ui/kit/Palette.h"
#include "ui/kit/Typography.h"

#include <QHBoxLayout>
#include <QPainter>

namespace orbitledge::ui {

using namespace Qt::StringLiterals;

namespace {

const QString calendarLabel = u"Full calendar"_s;

} // namespace

PanelFooter::PanelFooter(QWidget *parent)
    : Component(parent)
    , m_row(new QHBoxLayout(this))
    , m_add(new FooterButton(Symbol::Plus, u"Add"_s))
    , m_calendar(new FooterButton(Symbol::Calendar, calendarLabel))
    , m_settings(new FooterButton(Symbol::Gear, QString()))
{
    m_calendar->setAccessibleName(calendarLabel);
    m_settings->setAccessibleName(u"Settings"_s);
    m_settings->setToolTip(u"Settings"_s);
    m_settings->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_Comma));
    m_row->addWidget(m_add);
    m_row->addWidget(m_calendar);
    m_row->addStretch();
    m_row->addWidget(m_settings);
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
    connect(m_add, &FooterButton::clicked, this, &PanelFooter::addRequested);
    connect(m_calendar, &FooterButton::clicked, this, &PanelFooter::calendarRequested);
    connect(m_settings, &FooterButton::clicked, this, &PanelFooter::settingsRequested);
    measure();
}

void PanelFooter::focusAdd()
{
    m_add->setFocus(Qt::OtherFocusReason);
}

void PanelFooter::measure()
{
    m_row->setContentsMargins(scaled(*this, 8), 1, scaled(*this, 8), 0);
    m_row->setSpacing(scaled(*this, 4));
    setFixedHeight(scaled(*this, 44));
    chooseLabels();
}

/// In large letters there is not room for both labels.
void PanelFooter::chooseLabels()
{
    m_calendar->setText(calendarLabel);
    const int needed = m_row->contentsMargins().left() * 2 + m_row->spacing() * 2 + m_add->sizeHint().width()
        + m_calendar->sizeHint().width() + m_settings->sizeHint().width();
    if (needed > width())
        m_calendar->setText(QString());
    m_calendar->setToolTip(m_calendar->text().isEmpty() ? calendarLabel : QString());
    m_calendar->updateGeometry();
}

void PanelFooter::resizeEvent(QResizeEvent *event)
{
    Component::resizeEvent(event);
    chooseLabels();
}

void PanelFooter::paintEvent(QPaintEvent * /*event*/)
{
    QPainter painter(this);
    painter.fillRect(0, 0, width(), 1, colorOf(Tone::Stroke, colorSchemeOf(palette())));
}

} // namespace orbitledge::ui
