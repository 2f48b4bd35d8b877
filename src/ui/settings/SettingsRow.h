#pragma once

#include "ui/kit/ThemedLabel.h"
#include "ui/panel/Component.h"

class QHBoxLayout;
class QLabel;
class QVBoxLayout;

namespace orbitledge::ui {

class SwitchRow;

/// How a form shows what cannot be set.
ThemedLabel::Look valueLook();

/// What is set, and under it what belongs to that: notes, and buttons.
class SettingsRow : public Component {
    Q_OBJECT

public:
    /// At both ends; there is room for the ring of a switch.
    static constexpr qreal edge = 4;

    explicit SettingsRow(QWidget *parent = nullptr);
    explicit SettingsRow(SwitchRow *toggle, QWidget *parent = nullptr);
    /// Words at one end, a control of that name at the other.
    SettingsRow(const QString &label, QWidget *control, QWidget *parent = nullptr);

    /// The words; absent where there are none.
    QLabel *label() const { return m_label; }

    void add(QWidget *widget);
    /// Buttons keep their width.
    void addButton(QWidget *button);

protected:
    void measure() override;
    void changeEvent(QEvent *event) override;

private:
    QVBoxLayout *m_all;
    QVBoxLayout *m_lines;
    QHBoxLayout *m_line = nullptr;
    QLabel *m_label = nullptr;
};

/// Buttons beside each other, and under each other where there is not room. It does without a layout: of a
/// widget that has one, its height for a width is not asked for.
class ButtonLine : public Component {
    Q_OBJECT

public:
    explicit ButtonLine(const QList<QWidget *> &buttons, QWidget *parent = nullptr);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;
    bool hasHeightForWidth() const override { return true; }
    int heightForWidth(int width) const override;

protected:
    void measure() override;
    void resizeEvent(QResizeEvent *event) override;
    bool event(QEvent *event) override;

private:
    int gap() const;
    QList<QWidget *> shown() const;
    bool fitsInto(int width) const;
    void arrange();

    QList<QWidget *> m_buttons;
};

} // namespace orbitledge::ui
