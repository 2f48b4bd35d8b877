#pragma once

#include <QDBusConnection>
#include <QObject>
#include <QString>

#include <utility>

namespace orbitledge::testing {

/// Tells the programs of a session where its accessibility bus is, for as long as it lives.
class AccessibilityBusAddress : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.a11y.Bus")

public:
    AccessibilityBusAddress(QDBusConnection session, QString address)
        : m_session(std::move(session))
        , m_address(std::move(address))
    {
        if (!m_session.registerObject(path(), this, QDBusConnection::ExportScriptableSlots)
            || !m_session.registerService(name()))
            qFatal("cannot answer for %s", qPrintable(name()));
    }
    ~AccessibilityBusAddress() override
    {
        m_session.unregisterService(name());
        m_session.unregisterObject(path());
    }
    Q_DISABLE_COPY_MOVE(AccessibilityBusAddress)

public Q_SLOTS:
    // NOLINTNEXTLINE(readability-identifier-naming)
    Q_SCRIPTABLE [[nodiscard]] QString GetAddress() const { return m_address; }

private:
    static QString name() { return QStringLiteral("org.a11y.Bus"); }
    static QString path() { return QStringLiteral("/org/a11y/bus"); }

    QDBusConnection m_session;
    QString m_address;
};

} // namespace orbitledge::testing
