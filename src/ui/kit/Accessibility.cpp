#include "ui/kit/Accessibility.h"

#include <QAccessibleWidget>
#include <QTimer>

#include <chrono>

namespace orbitledge::ui {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

constexpr auto roleProperty = "accessibleRole";

/// For whoever is slow to ask what the notification says.
constexpr auto newsDuration = 5s;

QAccessibleInterface *interfaceOf(const QString & /*className*/, QObject *object)
{
    if (!object->isWidgetType())
        return nullptr;
    const QVariant role = object->property(roleProperty);
    return role.isValid()
        ? new QAccessibleWidget(qobject_cast<QWidget *>(object), static_cast<QAccessible::Role>(role.toInt()))
        : nullptr;
}

void installInterface()
{
    static const bool isInstalled = [] {
        QAccessible::installFactory(interfaceOf);
        return true;
    }();
    Q_UNUSED(isInstalled)
}

class News : public QWidget {
public:
    explicit News(QWidget *window)
        : QWidget(window)
    {
        setAttribute(Qt::WA_TransparentForMouseEvents);
        setFocusPolicy(Qt::NoFocus);
        setGeometry(0, 0, 1, 1);
        hide();
        setAccessibleRole(*this, QAccessible::Notification);
        m_end.setSingleShot(true);
        m_end.setInterval(newsDuration);
        connect(&m_end, &QTimer::timeout, this, &QWidget::hide);
    }

    void tell(const QString &text)
    {
        hide();
        setAccessibleName(text);
        show();
        m_end.start();
    }

private:
    QTimer m_end;
};

} // namespace

void setAccessibleRole(QWidget &widget, QAccessible::Role role)
{
    installInterface();
    widget.setProperty(roleProperty, static_cast<int>(role));
}

void announce(QWidget &from, const QString &text)
{
    if (!from.isVisible() || text.isEmpty())
        return;
    const QString name = u"news"_s;
    auto *news = dynamic_cast<News *>(from.window()->findChild<QWidget *>(name, Qt::FindDirectChildrenOnly));
    if (news == nullptr) {
        news = new News(from.window());
        news->setObjectName(name);
    }
    news->tell(text);
}

} // namespace orbitledge::ui
