#pragma once

#include "ui/kit/Palette.h"

#include <QBasicTimer>
#include <QElapsedTimer>
#include <QWidget>

namespace orbitledge::ui {

/// A small arc that goes round while something takes a while. It rests where motion is to be reduced, and has
/// no timer then, nor while it is hidden.
class ProgressIndicator : public QWidget {
    Q_OBJECT

public:
    explicit ProgressIndicator(QWidget *parent = nullptr);

    void setTone(Tone tone);
    bool isTurning() const { return m_timer.isActive(); }

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

protected:
    void paintEvent(QPaintEvent *event) override;
    void timerEvent(QTimerEvent *event) override;
    void showEvent(QShowEvent *event) override;
    void hideEvent(QHideEvent *event) override;
    void changeEvent(QEvent *event) override;

private:
    void turnOrRest();

    Tone m_tone = Tone::Slate;
    QBasicTimer m_timer;
    QElapsedTimer m_sinceStart;
};

} // namespace orbitledge::ui
