#pragma once

#include "ui/panel/CenteredPanel.h"

namespace orbitledge::ui {

class PrimaryButton;
class ThemedLabel;

/// It could not be found out whether somebody is signed in.
class SessionRecoveryPanel : public CenteredPanel {
    Q_OBJECT

public:
    explicit SessionRecoveryPanel(QWidget *parent = nullptr);

    /// A message that is new is read out.
    void setContent(const QString &message, bool isRetrying);

Q_SIGNALS:
    void retryRequested();
    void signInRequested();

protected:
    void showEvent(QShowEvent *event) override;

private:
    void announce();

    ThemedLabel *m_message;
    PrimaryButton *m_retry;
};

} // namespace orbitledge::ui
