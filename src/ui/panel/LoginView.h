#pragma once

#include "state/AppStore.h"
#include "ui/panel/CenteredPanel.h"

#include <QPointer>

namespace orbitledge::ui {

class ErrorLine;
class Field;
class PrimaryButton;

/// Asks who is there. What was typed stays when signing in fails.
class LoginView : public CenteredPanel {
    Q_OBJECT

public:
    /// The store outlives it.
    explicit LoginView(AppStore &store, QWidget *parent = nullptr);

    bool canSubmit() const;
    void submit();

protected:
    void showEvent(QShowEvent *event) override;

private:
    /// The view may be gone before it ends.
    static QCoro::Task<void> signIn(QPointer<LoginView> view, QString email, QString password);
    void endSubmission(const std::optional<QString> &messageBefore);
    void addHeader();
    void follow();
    void updateButton();

    AppStore &m_store;
    Field *m_email;
    Field *m_password;
    ErrorLine *m_error;
    PrimaryButton *m_button;
    bool m_isSubmitting = false;
};

} // namespace orbitledge::ui
