#pragma once

#include <QCheckBox>

namespace orbitledge::ui {

/// A check box that looks like a row of a form: its words at one end, a switch at the other, and all of it
/// to be pressed.
class SwitchRow : public QCheckBox {
    Q_OBJECT

public:
    explicit SwitchRow(const QString &text, QWidget *parent = nullptr);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;
    bool hasHeightForWidth() const override { return true; }
    int heightForWidth(int width) const override;

protected:
    bool hitButton(const QPoint &position) const override { return rect().contains(position); }
    void paintEvent(QPaintEvent *event) override;

private:
    int textRoom() const;
    QSize textSize(int width) const;
};

} // namespace orbitledge::ui
