#pragma once

#include <QByteArray>
#include <QList>
#include <QSocketNotifier>

#include <unistd.h>

#include <array>
#include <functional>

namespace orbitledge::testing {

/// What a program is told on its standard input, one command a line, the fields separated by spaces.
class CommandInput {
public:
    using Command = std::function<void(const QList<QByteArray> &words)>;

    /// `atEnd` is called once, when nothing more comes.
    CommandInput(Command command, std::function<void()> atEnd)
        : m_command(std::move(command))
        , m_atEnd(std::move(atEnd))
    {
        QObject::connect(&m_notifier, &QSocketNotifier::activated, &m_notifier, [this] { read(); });
    }

private:
    void read()
    {
        std::array<char, 4096> buffer{};
        const ssize_t count = ::read(STDIN_FILENO, buffer.data(), buffer.size());
        if (count <= 0) {
            m_notifier.setEnabled(false);
            m_atEnd();
            return;
        }
        m_unread.append(buffer.data(), count);
        for (qsizetype end = m_unread.indexOf('\n'); end >= 0; end = m_unread.indexOf('\n')) {
            const QByteArray line = m_unread.left(end);
            m_unread.remove(0, end + 1);
            m_command(line.split(' '));
        }
    }

    Command m_command;
    std::function<void()> m_atEnd;
    QSocketNotifier m_notifier{STDIN_FILENO, QSocketNotifier::Read};
    QByteArray m_unread;
};

} // namespace orbitledge::testing
