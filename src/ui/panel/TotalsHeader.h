#pragma once

#include "presentation/TotalsContent.h"
#include "ui/kit/ThemedLabel.h"
#include "ui/panel/Component.h"

namespace orbitledge::ui {

/// What a month costs, and what of it is left. Where there is not room for a text, it gets smaller.
class TotalsHeader : public Component {
    Q_OBJECT

public:
    explicit TotalsHeader(QWidget *parent = nullptr);

    void setContent(const TotalsContent &content);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return {0, sizeHint().height()}; }

protected:
    void measure() override;
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;

private:
    void chooseSizes(qreal room);
    void chooseCaptionSize(qreal room);
    void arrange();

    ThemedLabel *m_month;
    ThemedLabel *m_total;
    ThemedLabel *m_perMonth;
    ThemedLabel *m_active;
    ThemedLabel *m_remaining;
    ThemedLabel *m_remainingCaption;
    ThemedLabel *m_partial;
    QRect m_warning;
};

} // namespace orbitledge::ui
