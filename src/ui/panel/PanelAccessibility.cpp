#include "ui/panel/PanelAccessibility.h"

#include "ui/panel/ErrorLine.h"
#include "ui/panel/LoadingPanel.h"
#include "ui/panel/SubscriptionList.h"
#include "ui/panel/SubscriptionRow.h"
#include "ui/panel/WeekDayColumn.h"

#include <QAccessibleWidget>

#include <algorithm>

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

    QString text(QAccessible::Text kind) const override
    {
        // Where there is no description the toolkit takes the tooltip, which may be the name once more.
        const QString text = QAccessibleWidget::text(kind);
        const bool isRepeated
            = kind == QAccessible::Description && text == QAccessibleWidget::text(QAccessible::Name);
        return isRepeated ? QString() : text;
    }
};

/// What is in a list, from top to bottom. As parts of the widget the rows lie in the order in which they were
/// needed, which changes while one scrolls.
class ListContentInterface : public QAccessibleWidget {
public:
    explicit ListContentInterface(QWidget *viewport)
        : QAccessibleWidget(viewport, QAccessible::Client)
    {
    }

    int childCount() const override { return static_cast<int>(content().size()); }
    QAccessibleInterface *child(int index) const override
    {
        return QAccessible::queryAccessibleInterface(content().value(index));
    }
    int indexOfChild(const QAccessibleInterface *child) const override
    {
        return child == nullptr ? -1 : static_cast<int>(content().indexOf(child->object()));
    }

private:
    [[nodiscard]] QList<QWidget *> content() const
    {
        QList<QWidget *> parts = widget()->findChildren<QWidget *>(QString(), Qt::FindDirectChildrenOnly);
        parts.removeIf([](const QWidget *part) { return part->isHidden(); });
        std::ranges::stable_sort(parts, {}, &QWidget::y);
        return parts;
    }
};

bool isContentOfList(QObject *object)
{
    const auto *const list = qobject_cast<SubscriptionList *>(object->parent());
    return list != nullptr && list->viewport() == object;
}

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
    if (isContentOfList(object))
        return new ListContentInterface(qobject_cast<QWidget *>(object));
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
