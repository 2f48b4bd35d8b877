#include "ui/panel/PanelAccessibility.h"

#include "ui/panel/ErrorLine.h"
#include "ui/panel/LoadingPanel.h"
#include "ui/panel/SubscriptionList.h"
#include "ui/panel/SubscriptionRow.h"
#include "ui/panel/WeekDayColumn.h"

#include <QAccessibleWidget>

namespace orbitledge::ui {

namespace {

/// One thing to be read as a whole, whatever is in it.
class SingleInterface : public QAccessibleWidget {
public:
    explicit SingleInterface(QWidget *widget, QAccessible::Role role = QAccessible::StaticText)
        : QAccessibleWidget(widget, role)
    {
    }

    int childCount() const override { return 0; }
};

class RowInterface : public QAccessibleWidget {
public:
    explicit RowInterface(SubscriptionRow *row)
        : QAccessibleWidget(row, QAccessible::Button)
        , m_row(row)
    {
    }

    QString text(QAccessible::Text kind) const override
    {
        switch (kind) {
        case QAccessible::Value:
            return m_row->content().accessibleValue;
        case QAccessible::Help:
            return m_row->content().accessibleHint;
        default:
            return QAccessibleWidget::text(kind);
        }
    }

    QStringList actionNames() const override
    {
        QStringList names{pressAction(), showMenuAction(), setFocusAction()};
        if (!m_row->content().mutationLabel.isEmpty())
            names.append(m_row->content().mutationLabel);
        return names;
    }

    QString localizedActionName(const QString &name) const override
    {
        return name == m_row->content().mutationLabel ? name : QAccessibleWidget::localizedActionName(name);
    }

    void doAction(const QString &name) override
    {
        if (name == pressAction())
            m_row->click();
        else if (name == showMenuAction())
            m_row->openContextMenu(m_row->mapToGlobal(m_row->rect().center()));
        else if (name == m_row->content().mutationLabel)
            m_row->requestMutation();
        else
            QAccessibleWidget::doAction(name);
    }

private:
    SubscriptionRow *m_row;
};

QAccessibleInterface *interfaceOf(const QString & /*className*/, QObject *object)
{
    if (auto *const row = qobject_cast<SubscriptionRow *>(object))
        return new RowInterface(row);
    if (qobject_cast<WeekDayColumn *>(object) != nullptr || qobject_cast<LoadingPanel *>(object) != nullptr)
        return new SingleInterface(qobject_cast<QWidget *>(object));
    // Screen readers read one out when it appears.
    if (auto *const error = qobject_cast<ErrorLine *>(object))
        return new SingleInterface(error, QAccessible::AlertMessage);
    if (auto *const list = qobject_cast<SubscriptionList *>(object))
        return new QAccessibleWidget(list, QAccessible::List);
    return nullptr;
}

} // namespace

void installPanelAccessibility()
{
    static const bool isInstalled = [] {
        QAccessible::installFactory(interfaceOf);
        return true;
    }();
    Q_UNUSED(isInstalled)
}

} // namespace orbitledge::ui
