#pragma once

#include "ui/kit/ButtonBase.h"

namespace orbitledge::ui {

class ProgressIndicator;

/// The one thing to do on a screen: a semibold label on the accent.
class PrimaryButton : public ButtonBase {
    Q_OBJECT

public:
    explicit PrimaryButton(const QString &text, QWidget *parent = nullptr);

    /// While it is busy it shows that it is, with another text, keeps the focus, and takes neither clicks nor
    /// keys.
    void setBusy(const QString &busyText);
    void setIdle();
    bool isBusy() const { return m_isBusy; }

    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void changeEvent(QEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;

private:
    QFont labelFont() const;
    QRectF labelRect() const;
    void placeIndicator();

    QString m_idleText;
    bool m_isBusy = false;
    ProgressIndicator *m_indicator;
};

} // namespace orbitledge::ui
