#pragma once

#include "platform/IntervalTimer.h"
#include "presentation/QuickAddDraft.h"
#include "state/AppStore.h"
#include "ui/panel/Component.h"
#include "ui/panel/LogoImages.h"

#include <QPointer>

class QComboBox;
class QHBoxLayout;
class QVBoxLayout;

namespace orbitledge::ui {

class DateField;
class ErrorLine;
class Field;
class PrimaryButton;
class TemplateSuggestions;

/// Adds a subscription. It suggests what the catalogue has as one types, and closes itself when the service
/// has created what it was asked for; where that failed, what was typed stays.
class QuickAddView : public Component {
    Q_OBJECT

public:
    /// Between the last letter of a name and the search for it.
    static constexpr std::chrono::milliseconds searchDelay{300};

    /// `logos` may be absent; the store and they outlive it.
    QuickAddView(AppStore &store, LogoImages *logos, std::shared_ptr<IntervalTimer> searchTimer,
        QWidget *parent = nullptr);
    ~QuickAddView() override;

    QuickAddDraft draft() const;
    void fill(const QuickAddDraft &draft);
    bool canSubmit() const;
    void submit();

protected:
    void measure() final;
    void showEvent(QShowEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    /// The view may be gone before it ends.
    static QCoro::Task<void> create(QPointer<QuickAddView> view, CreateSubscriptionRequest request);
    void endCreating(bool succeeded);
    void close();
    void fillContent(QVBoxLayout *column);
    void searchSoon();
    void search();
    void take(const SubscriptionTemplate &suggestion);
    void follow();
    void updateButton();

    AppStore &m_store;
    std::shared_ptr<IntervalTimer> m_searchTimer;
    QVBoxLayout *m_column;
    QHBoxLayout *m_amount;
    Field *m_name;
    TemplateSuggestions *m_suggestions;
    Field *m_price;
    Field *m_currency;
    QComboBox *m_cycle;
    DateField *m_renewal;
    ErrorLine *m_error;
    PrimaryButton *m_button;
    bool m_isCreating = false;
    /// It is not presented any more.
    bool m_isLeft = false;
};

} // namespace orbitledge::ui
