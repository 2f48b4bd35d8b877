#pragma once

#include "ui/tray/PanelPlacement.h"

#include <QElapsedTimer>
#include <QTimer>
#include <QWidget>

#include <functional>

namespace orbitledge::ui {

/// The one window that the panel is in. It is hidden and shown again, never made anew.
class PanelWindow : public QWidget {
    Q_OBJECT

public:
    enum class Manner {
        /// Beside the icon, without a frame, and gone when somebody turns to something else.
        Popup,
        /// A window like others, where nobody knows the icon's place or there is no icon.
        Window,
    };

    static constexpr QSize panelSize{360, 480};
    static constexpr qreal cornerRadius = 12;

    /// Takes the content over.
    explicit PanelWindow(QWidget *content);

    /// What suits the system that shows the windows.
    static Manner mannerFor(bool isIconShown);
    /// Counts from the next time that it is shown.
    void setManner(Manner manner) { m_manner = manner; }
    [[nodiscard]] Manner manner() const { return m_manner; }

    /// Asked at each Escape; where it answers true it has closed something within the content.
    void setTakesEscape(std::function<bool()> takesEscape) { m_takesEscape = std::move(takesEscape); }

    /// Shows it, or brings it to the front. `activationToken` is the desktop's word that a person asked for
    /// it; empty where there is none.
    void showAt(const PanelAnchor &anchor, const QString &activationToken = {});
    /// For a click on the icon. The click has taken the focus away before it comes here: a panel that was
    /// closed by that stays closed.
    void toggle(const PanelAnchor &anchor);

Q_SIGNALS:
    void shown();
    void hidden();
    void quitRequested();

protected:
    void paintEvent(QPaintEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void enterEvent(QEnterEvent *event) override;
    void changeEvent(QEvent *event) override;
    void hideEvent(QHideEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;

private:
    class Edge;

    void takeManner();
    void followFocus();
    void closeIfLeft();
    [[nodiscard]] bool isLeft() const;

    QWidget *m_content;
    Edge *m_edge;
    Manner m_manner = Manner::Window;
    /// What the system's window was made for; none before it is shown for the first time.
    std::optional<Manner> m_takenManner;
    std::function<bool()> m_takesEscape;
    QTimer m_leaveGrace;
    /// Since it closed because somebody turned to something else.
    QElapsedTimer m_sinceLeft;
    bool m_hadFocus = false;
    bool m_hadPointer = false;
};

} // namespace orbitledge::ui
