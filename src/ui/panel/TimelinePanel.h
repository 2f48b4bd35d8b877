#pragma once

#include "state/AppStore.h"
#include "ui/panel/LogoImages.h"
#include "ui/panel/PanelTexts.h"

#include <QWidget>

class QStackedLayout;

namespace orbitledge::ui {

class EmptyPanel;
class LoadingPanel;
class PanelBanner;
class PanelFooter;
class PanelUpdateRow;
class SubscriptionList;
class TotalsHeader;
class WeekStrip;

/// The screen of somebody who is signed in: totals, week, list, and what can be done.
class TimelinePanel : public QWidget {
    Q_OBJECT

public:
    TimelinePanel(
        AppStore &store, std::shared_ptr<PanelTexts> texts, LogoImages *logos, QWidget *parent = nullptr);

    /// Shows the store as it is now.
    void update();
    /// As when the form that adds was closed.
    void focusAdd();

Q_SIGNALS:
    void settingsRequested();

protected:
    void showEvent(QShowEvent *event) override;

private:
    static void orderForKeyboard(const QList<QWidget *> &components);
    void updateBanner();
    void updateContent();

    AppStore &m_store;
    std::shared_ptr<PanelTexts> m_texts;
    TotalsHeader *m_totals;
    WeekStrip *m_week;
    PanelBanner *m_banner;
    QStackedLayout *m_content;
    LoadingPanel *m_loading;
    SubscriptionList *m_list;
    EmptyPanel *m_empty;
    PanelUpdateRow *m_updateRow;
    PanelFooter *m_footer;
    /// Somebody was at its button when that went away.
    bool m_isAwaitingRetry = false;
};

} // namespace orbitledge::ui
