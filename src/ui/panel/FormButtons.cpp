#include "ui/panel/FormButtons.h"

#include "ui/kit/PlainButton.h"
#include "ui/kit/PrimaryButton.h"
#include "ui/kit/Typography.h"

#include <QBoxLayout>

#include <algorithm>

namespace orbitledge::ui {

FormButtons::FormButtons(PlainButton *cancel, PrimaryButton *confirm, QWidget *parent)
    : Component(parent)
    , m_row(new QBoxLayout(QBoxLayout::LeftToRight, this))
    , m_cancel(cancel)
    , m_confirm(confirm)
{
    m_row->addStretch();
    m_row->addWidget(cancel);
    m_row->addWidget(confirm);
    m_row->setAlignment(cancel, Qt::AlignCenter);
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
    measure();
}

void FormButtons::measure()
{
    m_row->setContentsMargins(scaled(*this, 16), scaled(*this, 10), scaled(*this, 16), scaled(*this, 10));
    m_row->setSpacing(scaled(*this, 8));
    chooseDirection();
}

QSize FormButtons::minimumSizeHint() const
{
    const int widest = std::max(m_cancel->sizeHint().width(), m_confirm->sizeHint().width());
    return {widest + 2 * m_row->contentsMargins().left(), m_row->minimumSize().height()};
}

void FormButtons::resizeEvent(QResizeEvent *event)
{
    Component::resizeEvent(event);
    chooseDirection();
}

void FormButtons::chooseDirection()
{
    const int needed = m_cancel->sizeHint().width() + m_confirm->sizeHint().width()
        + m_row->contentsMargins().left() * 2 + m_row->spacing();
    // The one that is wanted most is above then.
    m_row->setDirection(needed > width() ? QBoxLayout::BottomToTop : QBoxLayout::LeftToRight);
}

} // namespace orbitledge::ui
