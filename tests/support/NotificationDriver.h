#pragma once

#include "support/ProbeDriver.h"

namespace orbitledge::testing {

/// Tells a notification-probe what to do.
class NotificationDriver : public ProbeDriver {
public:
    /// `step` and `number` are where it kills itself.
    NotificationDriver(const QProcessEnvironment &environment, const QString &file,
        const QString &step = QString(), int number = 0)
        : ProbeDriver(environment, QStringLiteral(ORBITLEDGE_NOTIFICATION_PROBE),
              {file, step, QString::number(number)})
    {
    }

    QByteArrayList pending() { return names(tell("pending")); }
    void awaitPending(const QByteArrayList &expected)
    {
        DesktopLab::await(("pending " + expected.join(' ')).constData(),
            [&] { return !isAlive() || pending() == expected; });
    }

private:
    static QByteArrayList names(const QByteArray &words)
    {
        QByteArrayList names = words.isEmpty() ? QByteArrayList() : words.split(' ');
        std::ranges::sort(names);
        return names;
    }
};

} // namespace orbitledge::testing
