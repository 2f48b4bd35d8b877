#include "ui/panel/ErrorLine.h"

#include "ui/kit/Accessibility.h"
#include "ui/kit/ThemedLabel.h"
#include "ui/kit/Typography.h"
#include "ui/panel/SymbolView.h"

#include <QHBoxLayout>

namespace orbitledge::ui {

ErrorLine::ErrorLine(QString introduction, const Look &look, QWidget *parent)
    : Component(parent)
    , m_introduction(std::move(introduction))
    , m_look(look)
    , m_row(new QHBoxLayout(this))
    , m_text(new ThemedLabel(QString(),
          {.designSize = look.designSize, .tone = Tone::Alert, .overflow = ThemedLabel::Overflow::Wrap}))
{
    if (look.hasSymbol)
        m_row->addWidget(new SymbolView(Symbol::Warning, look.designSize + 3, Tone::Alert), 0, Qt::AlignTop);
    m_row->addWidget(m_text, 1);
    hide();
    measure();
}

bool ErrorLine::setMessage(const std::optional<QString> &message)
{
    if (message == m_message)
        return false;
    m_message = message;
    m_text->setText(message.value_or(QString()));
    setAccessibleName(message ? m_introduction + *message : QString());
    setVisible(message.has_value());
    return message.has_value();
}

void ErrorLine::announce()
{
    if (!m_message)
        return;
    ui::announce(*this, accessibleName());
    Q_EMIT announced(accessibleName());
}

void ErrorLine::measure()
{
    m_row->setContentsMargins(0, scaled(*this, m_look.gap), 0, 0);
    m_row->setSpacing(scaled(*this, 6));
}

} // namespace orbitledge::ui
