#pragma once

#include <QWidget>

namespace orbitledge::ui {

/// A window for the settings, which closing only hides.
class SettingsWindow : public QWidget {
    Q_OBJECT

public:
    explicit SettingsWindow(QWidget *content);

    /// As it was when this was its `placement`, as far as the screens of now have room for that; else as
    /// large as its content wants to be, in the middle of the screen where the pointer is.
    void place(const QString &remembered);
    /// "40 50 460 620": left, top, width and height.
    [[nodiscard]] QString placement() const;

Q_SIGNALS:
    /// Others may have changed what it shows meanwhile.
    void activated();
    void hidden();
    void quitRequested();

protected:
    void changeEvent(QEvent *event) override;
    void hideEvent(QHideEvent *event) override;

private:
    void limit();

    QWidget *m_content;
};

} // namespace orbitledge::ui
