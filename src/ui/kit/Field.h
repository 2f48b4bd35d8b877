#pragma once

#include <QLineEdit>

namespace orbitledge::ui {

/// A line to write in, as high as the kit's buttons. The frame and the ring that shows where one writes are
/// the style's; the size of the text is the window's.
class Field : public QLineEdit {
    Q_OBJECT

public:
    explicit Field(QWidget *parent = nullptr);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    void changeEvent(QEvent *event) override;

private:
    void setInsets();
};

} // namespace orbitledge::ui
