#pragma once

#include "ui/panel/Component.h"

class QBoxLayout;

namespace orbitledge::ui {

class PlainButton;
class PrimaryButton;

/// What can be done with a form: at its end beside each other, and above each other where there is not room
/// for that.
class FormButtons : public Component {
    Q_OBJECT

public:
    /// Takes both.
    FormButtons(PlainButton *cancel, PrimaryButton *confirm, QWidget *parent = nullptr);

    /// For both above each other.
    QSize minimumSizeHint() const override;

protected:
    void measure() final;
    void resizeEvent(QResizeEvent *event) override;

private:
    void chooseDirection();

    QBoxLayout *m_row;
    PlainButton *m_cancel;
    PrimaryButton *m_confirm;
};

} // namespace orbitledge::ui
