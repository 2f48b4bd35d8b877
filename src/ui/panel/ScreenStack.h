#pragma once

#include <QPointer>
#include <QVariantAnimation>
#include <QWidget>

namespace orbitledge::ui {

/// Screens of which one is there at a time. The old one fades away over the new one; a screen may also move
/// in and out.
class ScreenStack : public QWidget {
    Q_OBJECT

public:
    enum class Entrance { Fade, MoveAndFade };

    explicit ScreenStack(QWidget *parent = nullptr);

    /// The first one is shown at once. The stack owns it.
    void add(QWidget *screen, Entrance entrance = Entrance::Fade);
    enum class Change { Animated, Immediate };
    void show(QWidget *screen, Change change = Change::Animated);
    QWidget *current() const { return m_current; }
    bool isChanging() const { return m_motion.state() == QAbstractAnimation::Running; }

protected:
    void resizeEvent(QResizeEvent *event) override;
    void hideEvent(QHideEvent *event) override;

private:
    class Veil;
    /// Which of the two moves, if any.
    enum class Moving { None, New, Old };

    void setProgress(qreal progress);
    void finish();

    QPointer<QWidget> m_current;
    Moving m_moving = Moving::None;
    Veil *m_veil;
    QVariantAnimation m_motion;
};

} // namespace orbitledge::ui
