#include "ui/panel/PanelUpdateRow.h"

#include "ui/kit/CompactIconButton.h"
#include "ui/kit/PlainButton.h"
#include "ui/kit/RoundedFrame.h"
#include "ui/kit/ThemedLabel.h"
#include "ui/kit/Typography.h"
#include "ui/panel/SymbolView.h"

#include <QHBoxLayout>

namespace orbitledge::ui {

using namespace Qt::StringLiterals;

PanelUpdateRow::PanelUpdateRow(QWidget *parent)
    : Component(parent)
    , m_around(new QVBoxLayout(this))
    , m_text(new ThemedLabel(
          QString(), {.designSize = 12, .tone = Tone::Ink, .overflow = ThemedLabel::Overflow::Elide}))
    , m_open(new PlainButton(u"Get it"_s, {.designSize = 12, .weight = QFont::DemiBold, .tone = Tone::Cyan}))
    , m_dismiss(new CompactIconButton(Symbol::Close, QString(), QString()))
{
    auto *const frame = new RoundedFrame(this);
    m_row = new QHBoxLayout(frame);
    m_row->addWidget(new SymbolView(Symbol::Download, 16, Tone::Cyan));
    m_row->addWidget(m_text, 1);
    m_row->addWidget(m_open);
    m_row->addWidget(m_dismiss);
    m_around->addWidget(frame);
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
    connect(m_open, &PlainButton::clicked, this, &PanelUpdateRow::openRequested);
    connect(m_dismiss, &CompactIconButton::clicked, this, &PanelUpdateRow::dismissRequested);
    measure();
}

void PanelUpdateRow::setVersion(const QString &version)
{
    m_text->setText(u"Version "_s + version + u" is available"_s);
    m_open->setAccessibleName(u"Open the download page for version "_s + version);
    m_dismiss->setAccessibleName(u"Dismiss the version "_s + version + u" update notice"_s);
}

void PanelUpdateRow::measure()
{
    m_around->setContentsMargins(scaled(*this, 12), scaled(*this, 6), scaled(*this, 12), scaled(*this, 6));
    m_row->setContentsMargins(scaled(*this, 10), scaled(*this, 2), scaled(*this, 4), scaled(*this, 2));
    m_row->setSpacing(scaled(*this, 8));
}

} // namespace orbitledge::ui
