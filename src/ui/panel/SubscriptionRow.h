#pragma once

#include "presentation/RowContent.h"
#include "ui/kit/ButtonBase.h"
#include "ui/panel/LogoImages.h"

#include <QCoroTask>
#include <QPointer>
#include <QUuid>
#include <QVariantAnimation>

#include <functional>

class QGraphicsOpacityEffect;
class QMenu;

namespace orbitledge::ui {

class BrandLogo;
class CompactIconButton;
class ProgressIndicator;

/// What a row has done about its subscription.
struct RowActions {
    std::function<void(QUuid)> openInWeb;
    /// Done when the service has answered; failures are told elsewhere.
    std::function<QCoro::Task<void>(QUuid)> cancel;
    std::function<QCoro::Task<void>(QUuid)> uncancel;
};

/// One subscription, in one line: a button that opens its page, with two more that appear when the pointer or
/// the keyboard is there. It shows another subscription only after `setContent` with another id, which
/// begins with a fresh state.
class SubscriptionRow : public ButtonBase {
    Q_OBJECT

public:
    SubscriptionRow(RowActions actions, LogoImages *images, QWidget *parent);
    ~SubscriptionRow() override;

    void setContent(const RowContent &content);
    const RowContent &content() const { return m_content; }

    /// A change at the service is under way.
    bool isWorking() const { return m_isWorking; }
    /// The person is asked something about this row.
    bool isAsking() const { return !m_question.isNull() || !m_menu.isNull(); }
    bool hasFocusWithin() const;
    /// It, or one of its controls, is marked as the one that has the keyboard.
    bool showsFocusWithin() const;
    bool showsActions() const;
    /// Gives the keyboard to the control after, or before, the one that has it; false where there is none.
    bool focusNextControl(bool next);

    /// What the mutation button does.
    void requestMutation();
    /// What is asked about the row is not asked any more.
    void withdrawQuestion();
    void openContextMenu(QPoint globalPosition);

    QSize sizeHint() const override;

Q_SIGNALS:
    /// The keyboard came to one of its controls.
    void entered();
    /// Somebody wants to go to another row: Key_Up, Key_Down, Key_Home, Key_End, Key_PageUp or Key_PageDown.
    void moveRequested(int key);

protected:
    bool event(QEvent *event) override;
    bool eventFilter(QObject *watched, QEvent *event) override;
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void changeEvent(QEvent *event) override;
    void hideEvent(QHideEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void contextMenuEvent(QContextMenuEvent *event) override;

private:
    bool takeKey(QKeyEvent &event);
    void askBeforeCancelling();
    void run(const std::function<QCoro::Task<void>(QUuid)> &action);
    static QCoro::Task<void> awaitEnd(QPointer<SubscriptionRow> row, QCoro::Task<void> task);
    void setWorking(bool isWorking);
    void showMutation();
    Q_SLOT void followAttention();
    void setPresence(qreal presence);
    void arrange();
    qreal trailingWidth() const;
    void paintTexts(QPainter &painter) const;

    RowActions m_actions;
    RowContent m_content;
    BrandLogo *m_logo;
    QWidget *m_buttons;
    CompactIconButton *m_open;
    CompactIconButton *m_mutation;
    ProgressIndicator *m_progress;
    QGraphicsOpacityEffect *m_fade;
    QVariantAnimation m_motion;
    /// How far the buttons, and the tint behind the row, are there: 0 to 1.
    qreal m_presence = 0;
    bool m_isWorking = false;
    QPointer<QWidget> m_question;
    QPointer<QMenu> m_menu;
};

} // namespace orbitledge::ui
