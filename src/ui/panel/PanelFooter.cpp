#include "ui/panel/PanelFooter.h"

#include "ui/kit/FooterButton.h"
#include "ui/kit/Palette.h"
#include "ui/kit/Typography.h"

#include <QHBoxLayout>
#include <QPainter>

namespace orbitledge::ui {

using namespace Qt::StringLiterals;

PanelFooter::PanelFooter(QWidget *parent)
    : Component(parent)
    , m_row(new QHBoxLayout(this))
    , m_add(new FooterButton(Symbol::Plus, u"Add"_s))
{
    auto *const calendar = new FooterButton(Symbol::Calendar, u"Full calendar"_s);
    auto *const settings = new FooterButton(Symbol::Gear, QString());
    settings->setAccessibleName(u"Settings"_s);
    settings->setToolTip(u"Settings"_s);
    settings->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_Comma));
    m_row->addWidget(m_add);
    m_row->addWidget(calendar);
    m_row->addStretch();
    m_row->addWidget(settings);
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
    connect(m_add, &FooterButton::clicked, this, &PanelFooter::addRequested);
    connect(calendar, &FooterButton::clicked, this, &PanelFooter::calendarRequested);
    connect(settings, &FooterButton::clicked, this, &PanelFooter::settingsRequested);
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
}

void PanelFooter::paintEvent(QPaintEvent * /*event*/)
{
    QPainter painter(this);
    painter.fillRect(0, 0, width(), 1, colorOf(Tone::Stroke, appearanceOf(palette())));
}

} // namespace orbitledge::ui
