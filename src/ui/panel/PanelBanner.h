#pragma once

#include "presentation/BannerContent.h"
#include "ui/kit/PlainButton.h"
#include "ui/kit/ThemedLabel.h"
#include "ui/panel/Component.h"
#include "ui/panel/SymbolView.h"

class QHBoxLayout;
class QVBoxLayout;

namespace orbitledge::ui {

/// How current the list is, in one row.
class PanelBanner : public Component {
    Q_OBJECT

public:
    explicit PanelBanner(QWidget *parent = nullptr);

    void setContent(const BannerContent &content);
    void focusRetry();

Q_SIGNALS:
    void retryRequested();

protected:
    void measure() final;

private:
    QVBoxLayout *m_around;
    QHBoxLayout *m_row;
    SymbolView *m_symbol;
    ThemedLabel *m_message;
    PlainButton *m_retry;
};

} // namespace orbitledge::ui
