#pragma once

#include "support/DesktopLab.h"
#include "support/ProgramEnd.h"

#include <QProcess>

#include <sys/prctl.h>

#include <algorithm>
#include <csignal>

namespace orbitledge::testing {

/// Tells a program in a desktop session what to do, one command a line, and waits for the lines that it says
/// to that. It ends with the object, and with the test.
class ProbeDriver {
public:
    ProbeDriver(
        const QProcessEnvironment &environment, const QString &program, const QStringList &arguments = {})
    {
        m_probe.setProcessEnvironment(environment);
        m_probe.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        m_probe.setChildProcessModifier([] { ::prctl(PR_SET_PDEATHSIG, SIGKILL); });
        m_probe.start(program, arguments);
        if (!m_probe.waitForStarted())
            qFatal("cannot start the probe");
    }

    ~ProbeDriver() { endAtOnce(m_probe); }
    Q_DISABLE_COPY_MOVE(ProbeDriver)

    /// Waits for nothing.
    void begin(const QByteArray &command) { m_probe.write(command + '\n'); }

    /// What it says to the command, without the command's first word. Empty also where it died over it.
    QByteArray tell(const QByteArray &command)
    {
        begin(command);
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

    /// Waits until it says one of these lines, and takes the one that it said first. Empty where it died.
    QByteArray awaitNextOf(const QByteArrayList &lines)
    {
        QByteArray next;
        DesktopLab::await("one of some lines", [&] {
            receive();
            const auto found
                = std::ranges::find_if(m_lines, [&](const QByteArray &said) { return lines.contains(said); });
            if (found == m_lines.end())
                return !isAlive();
            next = *found;
            m_lines.erase(found);
            return true;
        });
        return next;
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

    void quit()
    {
        tell("quit");
        awaitDeath();
    }

private:
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
