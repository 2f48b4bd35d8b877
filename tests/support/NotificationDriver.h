#pragma once

#include "support/DesktopLab.h"

#include <QProcess>

#include <sys/prctl.h>

#include <algorithm>
#include <csignal>

namespace orbitledge::testing {

/// Tells a notification-probe in a desktop session what to do, and waits until it has done it.
class NotificationDriver {
public:
    /// `step` and `number` are where it kills itself.
    NotificationDriver(const QProcessEnvironment &environment, const QString &file,
        const QString &step = QString(), int number = 0)
    {
        m_probe.setProcessEnvironment(environment);
        m_probe.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        m_probe.setChildProcessModifier([] { ::prctl(PR_SET_PDEATHSIG, SIGKILL); });
        m_probe.start(QStringLiteral(ORBITLEDGE_NOTIFICATION_PROBE), {file, step, QString::number(number)});
        if (!m_probe.waitForStarted())
            qFatal("cannot start the probe");
    }

    ~NotificationDriver()
    {
        if (m_probe.state() != QProcess::NotRunning) {
            m_probe.kill();
            m_probe.waitForFinished();
        }
    }
    Q_DISABLE_COPY_MOVE(NotificationDriver)

    /// What it says to the command, without the command's first word. Empty also where it died over it.
    QByteArray tell(const QByteArray &command)
    {
        m_probe.write(command + '\n');
        const QByteArray word = command.split(' ').first();
        const QByteArray answer = awaitLine(word);
        return answer.mid(word.size()).trimmed();
    }

    /// Waits until it says that, and takes it; what it said before stays. Empty where it died.
    QByteArray awaitLine(const QByteArray &beginning)
    {
        QByteArray line;
        DesktopLab::await(beginning.constData(), [&] {
            receive();
            const auto found = std::ranges::find_if(m_lines, [&](const QByteArray &said) {
                return said == beginning || said.startsWith(beginning + ' ');
            });
            if (found == m_lines.end())
                return !isAlive();
            line = *found;
            m_lines.erase(found);
            return true;
        });
        return line;
    }

    bool hasSaid(const QByteArray &beginning)
    {
        receive();
        return std::ranges::any_of(
            m_lines, [&](const QByteArray &said) { return said.startsWith(beginning); });
    }

    [[nodiscard]] bool isAlive() const { return m_probe.state() != QProcess::NotRunning; }
    void awaitDeath()
    {
        DesktopLab::await("the probe to die", [&] { return !isAlive(); });
    }
    [[nodiscard]] bool wasKilled() const
    {
        return !isAlive() && m_probe.exitStatus() == QProcess::CrashExit && m_probe.exitCode() == SIGKILL;
    }

    QByteArrayList pending() { return names(tell("pending")); }
    void awaitPending(const QByteArrayList &expected)
    {
        DesktopLab::await(("pending " + expected.join(' ')).constData(),
            [&] { return !isAlive() || pending() == expected; });
    }

    void quit()
    {
        tell("quit");
        awaitDeath();
    }

private:
    static QByteArrayList names(const QByteArray &words)
    {
        QByteArrayList names = words.isEmpty() ? QByteArrayList() : words.split(' ');
        std::ranges::sort(names);
        return names;
    }

    void receive()
    {
        m_unread += m_probe.readAllStandardOutput();
        for (qsizetype end = m_unread.indexOf('\n'); end >= 0; end = m_unread.indexOf('\n')) {
            m_lines.append(m_unread.left(end));
            m_unread.remove(0, end + 1);
        }
    }

    QProcess m_probe;
    QByteArray m_unread;
    QByteArrayList m_lines;
};

} // namespace orbitledge::testing
