#pragma once

#include <QAbstractButton>

namespace orbitledge::ui {

/// What the kit's buttons have in common: Return presses them too, they follow the pointer, and they have a
/// ring where they were reached by the keyboard.
class ButtonBase : public QAbstractButton {
    Q_OBJECT

public:
    QSize minimumSizeHint() const override { return sizeHint(); }

    /// It has the keyboard, and was given it by the keyboard.
    bool showsFocusRing() const;

protected:
    explicit ButtonBase(QWidget *parent);

    bool isHovered() const { return isEnabled() && underMouse(); }
    /// Draws the ring inside the button's edge, where it is to be seen.
    void paintFocusRing(QPainter &painter, qreal radius) const;

    void changeEvent(QEvent *event) override;
    void focusInEvent(QFocusEvent *event) override;
    void focusOutEvent(QFocusEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;

private:
    bool m_wasReachedByKeyboard = false;
};

} // namespace orbitledge::ui
