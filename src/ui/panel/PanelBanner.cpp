#include "ui/panel/PanelBanner.h"

#include "ui/kit/RoundedFrame.h"
#include "ui/kit/Typography.h"

#include <QHBoxLayout>

namespace orbitledge::ui {

using namespace Qt::StringLiterals;

namespace {

constexpr qreal textSize = 11;
/// A service may have a lot to say; the tooltip has all of it.
constexpr qsizetype longestMessage = 160;

struct BannerSymbol {
    Symbol symbol;
    Tone tone;
};

BannerSymbol symbolOf(BannerContent::Kind kind)
{
    switch (kind) {
    case BannerContent::Kind::Updating:
        return {Symbol::Refresh, Tone::Slate};
    case BannerContent::Kind::Offline:
        return {Symbol::Offline, Tone::Slate};
    case BannerContent::Kind::Error:
        break;
    }
    return {Symbol::Warning, Tone::Amber};
}

QString shortened(const QString &message)
{
    return message.size() <= longestMessage ? message : message.left(longestMessage).trimmed() + u'\u2026';
}

} // namespace

PanelBanner::PanelBanner(QWidget *parent)
    : Component(parent)
    , m_around(new QVBoxLayout(this))
    , m_symbol(new SymbolView(Symbol::Refresh, 14, Tone::Slate))
    , m_message(new ThemedLabel(
          QString(), {.designSize = textSize, .tone = Tone::Ink, .overflow = ThemedLabel::Overflow::Wrap}))
    , m_retry(new PlainButton(
          u"Retry"_s, {.designSize = textSize, .weight = QFont::DemiBold, .tone = Tone::Cyan}))
{
    auto *const frame = new RoundedFrame(this);
    m_row = new QHBoxLayout(frame);
    m_row->addWidget(m_symbol);
    m_row->addWidget(m_message, 1);
    m_row->addWidget(m_retry);
    m_around->addWidget(frame);
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Minimum); // a long message makes it higher
    connect(m_retry, &PlainButton::clicked, this, &PanelBanner::retryRequested);
    measure();
}

void PanelBanner::setContent(const BannerContent &content)
{
    const BannerSymbol symbol = symbolOf(content.kind);
    m_symbol->setSymbol(symbol.symbol, symbol.tone);
    m_message->setText(shortened(content.message));
    m_message->setAccessibleName(content.message);
    m_message->setToolTip(content.message.size() > longestMessage ? content.message : QString());
    m_retry->setVisible(content.canRetry());
}

void PanelBanner::focusRetry()
{
    m_retry->setFocus(Qt::OtherFocusReason);
}

void PanelBanner::measure()
{
    m_around->setContentsMargins(scaled(*this, 12), scaled(*this, 6), scaled(*this, 12), 0);
    m_row->setContentsMargins(scaled(*this, 10), scaled(*this, 4), scaled(*this, 4), scaled(*this, 4));
    m_row->setSpacing(scaled(*this, 8));
}

} // namespace orbitledge::ui
