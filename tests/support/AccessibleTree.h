#pragma once

#include <QAccessible>
#include <QMetaEnum>
#include <QStringList>
#include <QWidget>

namespace orbitledge::testing {

/// What assistive technology finds in a widget: "role: name", of itself and of all that is in it and seen.
inline QStringList accessibleTreeOf(QAccessibleInterface *item)
{
    QStringList list;
    if (item == nullptr || item->state().invisible)
        return list;
    const QString name = item->text(QAccessible::Name);
    if (!name.isEmpty()) {
        const QString role
            = QString::fromLatin1(QMetaEnum::fromType<QAccessible::Role>().valueToKey(item->role()));
        list.append(role + QStringLiteral(": ") + name);
    }
    for (int i = 0; i < item->childCount(); ++i)
        list += accessibleTreeOf(item->child(i));
    return list;
}
inline QStringList accessibleTreeOf(QWidget &widget)
{
    return accessibleTreeOf(QAccessible::queryAccessibleInterface(&widget));
}

} // namespace orbitledge::testing
