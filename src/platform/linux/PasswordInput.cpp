#include "platform/linux/PasswordInput.h"

#include "platform/linux/PosixFileStore.h"

#include <termios.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <system_error>

namespace orbitledge {

using namespace Qt::StringLiterals;

namespace {

/// No password is longer, and what is longer is no password.
constexpr qsizetype longestPassword = 4096;

// A signal handler can reach nothing else.
// NOLINTNEXTLINE(cppcoreguidelines-avoid-non-const-global-variables)
volatile std::sig_atomic_t caughtSignal = 0;

void noteSignal(int signal)
{
    caughtSignal = signal;
}

/// Signals that would end or stop the program are noted instead, and interrupt what waits. At the end they
/// are sent again, and do what they do.
class NotedSignals {
public:
    NotedSignals()
    {
        caughtSignal = 0;
        struct sigaction note{};
        note.sa_handler = noteSignal; // NOLINT(cppcoreguidelines-pro-type-union-access)
        for (std::size_t i = 0; i < signals.size(); ++i)
            ::sigaction(signals.at(i), &note, &m_before.at(i));
    }
    NotedSignals(const NotedSignals &) = delete;
    NotedSignals &operator=(const NotedSignals &) = delete;
    ~NotedSignals()
    {
        for (std::size_t i = 0; i < signals.size(); ++i)
            ::sigaction(signals.at(i), &m_before.at(i), nullptr);
        if (caughtSignal != 0)
            (void)::raise(caughtSignal);
    }

private:
    static constexpr std::array signals{SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGTSTP};
    std::array<struct sigaction, signals.size()> m_before{};
};

/// A terminal that does not show what is typed, until the end.
class SilentTerminal {
public:
    explicit SilentTerminal(int descriptor)
        : m_descriptor(descriptor)
    {
        if (::tcgetattr(descriptor, &m_before) != 0)
            return;
        termios silent = m_before;
        silent.c_lflag &= ~static_cast<tcflag_t>(ECHO);
        silent.c_lflag |= static_cast<tcflag_t>(ECHONL);
        // What was typed before the prompt is not the answer to it.
        m_isSilent = ::tcsetattr(descriptor, TCSAFLUSH, &silent) == 0;
    }
    SilentTerminal(const SilentTerminal &) = delete;
    SilentTerminal &operator=(const SilentTerminal &) = delete;
    ~SilentTerminal()
    {
        if (m_isSilent)
            ::tcsetattr(m_descriptor, TCSAFLUSH, &m_before);
    }

    [[nodiscard]] bool isSilent() const { return m_isSilent; }

private:
    int m_descriptor;
    termios m_before{};
    bool m_isSilent = false;
};

QString systemError()
{
    return QString::fromStdString(std::system_category().message(errno));
}

/// Up to the line's end on a terminal, up to the end of everything elsewhere.
tl::expected<QByteArray, QString> readAll(int descriptor, bool untilLineEnd)
{
    QByteArray text;
    text.reserve(longestPassword + 1);
    while (!untilLineEnd || !text.endsWith('\n')) {
        std::array<char, 256> piece{};
        const auto size = ::read(descriptor, piece.data(), piece.size());
        if (size < 0 && errno == EINTR && caughtSignal == 0)
            continue;
        if (size < 0)
            return tl::make_unexpected(errno == EINTR
                    ? u"No password was given"_s
                    : u"The password could not be read: "_s + systemError());
        if (size == 0)
            break;
        text.append(piece.data(), size);
        piece.fill('\0');
        if (text.size() > longestPassword)
            return tl::make_unexpected(
                u"A password of more than %1 bytes cannot be right"_s.arg(longestPassword));
    }
    return text;
}

} // namespace

tl::expected<QByteArray, QString> readPassword(int descriptor, const QByteArray &prompt)
{
    if (::isatty(descriptor) != 1)
        return readAll(descriptor, false);
    // In this order: the terminal is itself again before a noted signal ends the program.
    const NotedSignals signals;
    const SilentTerminal terminal(descriptor);
    if (!terminal.isSilent())
        return tl::make_unexpected(u"The terminal would show the password: "_s + systemError());
    // A terminal may have been opened for reading only.
    if (!PosixFileStore::writeDescriptor(descriptor, prompt))
        PosixFileStore::writeDescriptor(STDERR_FILENO, prompt);
    return readAll(descriptor, true);
}

} // namespace orbitledge
