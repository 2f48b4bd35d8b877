#pragma once

#include "support/ScreenReader.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QObject>

namespace orbitledge::testing {

/// Keeps what programs tell on the accessibility bus.
class AccessibilityEvents : public QObject {
    Q_OBJECT

public:
    void listenTo(QDBusConnection &connection)
    {
        for (const char *const family : {"Object", "Focus", "Window"}) {
            const QString interface = QStringLiteral("org.a11y.atspi.Event.") + QLatin1StringView(family);
            if (!connection.connect(
                    QString(), QString(), interface, QString(), this, SLOT(keep(QDBusMessage))))
                qFatal("cannot listen to %s", qPrintable(interface));
        }
    }

    [[nodiscard]] QList<AccessibleEvent> of(const QString &service) const
    {
        QList<AccessibleEvent> list;
        for (const auto &[sender, event] : m_events) {
            if (sender == service)
                list.append(event);
        }
        return list;
    }
    void forget() { m_events.clear(); }

private Q_SLOTS:
    void keep(const QDBusMessage &message)
    {
        const QVariantList arguments = message.arguments();
        m_events.append({message.service(),
            {.kind = dashed(message.member()),
                .detail = arguments.value(0).toString(),
                .number = arguments.value(1).toInt(),
                .path = message.path(),
                .name = {},
                .role = {}}});
    }

private:
    /// "StateChanged" is known as "state-changed".
    static QString dashed(const QString &member)
    {
        QString text;
        for (const QChar letter : member) {
            if (letter.isUpper() && !text.isEmpty())
                text += QLatin1Char('-');
            text += letter.toLower();
        }
        return text;
    }

    QList<std::pair<QString, AccessibleEvent>> m_events;
};

} // namespace orbitledge::testing
