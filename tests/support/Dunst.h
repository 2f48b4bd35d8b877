#pragma once

#include "support/DesktopLab.h"

#include <QFile>
#include <QTest>

namespace orbitledge::testing {

/// A real notification daemon on the screen of a desktop lab, and a person before it.
class Dunst {
public:
    static QString name() { return QStringLiteral("org.freedesktop.Notifications"); }

    explicit Dunst(DesktopLab &lab)
        : m_lab(lab)
    {
        QFile file(configuration());
        // Nothing goes away by itself.
        if (!file.open(QIODevice::WriteOnly)
            || file.write(
                   "[global]\nhistory_length = 1000\nnotification_limit = 0\nsort = no\nmarkup = full\n"
                   "[urgency_normal]\ntimeout = 0\n")
                < 0)
            qFatal("cannot write the daemon's configuration");
    }

    void start() { m_lab.startService(name(), QStringLiteral("dunst"), arguments()); }
    [[nodiscard]] QStringList arguments() const { return {QStringLiteral("-conf"), configuration()}; }
    void kill() { m_lab.killService(name()); }
    void pause() { m_lab.pauseService(name()); }
    void resume() { m_lab.resumeService(name()); }

    [[nodiscard]] int displayedCount()
    {
        return control({QStringLiteral("count"), QStringLiteral("displayed")}).trimmed().toInt();
    }
    void awaitDisplayed(int count)
    {
        DesktopLab::await("notifications on the screen", [&] { return displayedCount() == count; });
    }
    /// Clicks the one at this place, the newest is at 0.
    void click(int place = 0) { control({QStringLiteral("action"), QString::number(place)}); }
    void closeAll() { control({QStringLiteral("close-all")}); }

private:
    [[nodiscard]] QString configuration() const { return m_lab.path(QStringLiteral("dunstrc")); }
    QByteArray control(const QStringList &arguments)
    {
        return m_lab.run(QStringLiteral("dunstctl"), arguments);
    }

    DesktopLab &m_lab;
};

} // namespace orbitledge::testing
