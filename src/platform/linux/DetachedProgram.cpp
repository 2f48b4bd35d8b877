#include "platform/linux/DetachedProgram.h"

#include "platform/OneShot.h"

#include <QCoreApplication>
#include <QFile>
#include <QSocketNotifier>
#include <QStandardPaths>

#include <fcntl.h>
#include <signal.h> // NOLINT(modernize-deprecated-headers): sigfillset is not of C++
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <memory>
#include <vector>

extern "C" {
#include <sys/pidfd.h> // glibc 2.36 forgets that its names are those of C
}

namespace orbitledge {

namespace {

using End = OneShot<bool>;

/// Waits for a child without blocking, and takes its exit status, without which it would stay as a zombie.
///
/// The toolkit's own process object is no help: it kills its process when it goes, and left alone it is
/// neither freed nor silent. Starting by two forks leaves nobody to tell the exit status.
class ChildWatch final : public QObject {
public:
    /// Belongs to the application object, with which it goes, and the child does not.
    ChildWatch(pid_t child, int descriptor, std::shared_ptr<End> end)
        : QObject(QCoreApplication::instance())
        , m_child(child)
        , m_descriptor(descriptor)
        , m_end(std::move(end))
        , m_notifier(descriptor, QSocketNotifier::Read)
    {
        connect(&m_notifier, &QSocketNotifier::activated, this, &ChildWatch::collect);
    }
    ~ChildWatch() override { ::close(m_descriptor); }

private:
    void collect()
    {
        m_notifier.setEnabled(false);
        int status = 0;
        const bool isCollected = ::waitpid(m_child, &status, WNOHANG) == m_child;
        m_end->settle(isCollected && WIFEXITED(status) && WEXITSTATUS(status) == 0);
        deleteLater();
    }

    pid_t m_child;
    int m_descriptor;
    std::shared_ptr<End> m_end;
    QSocketNotifier m_notifier;
};

QByteArrayList environmentWith(const EnvironmentChanges &changes)
{
    QByteArrayList result;
    for (char **variable = environ; *variable != nullptr; ++variable) {
        const QByteArray text(*variable);
        const auto isThis = [&text](const auto &change) { return text.startsWith(change.first + '='); };
        if (std::ranges::none_of(changes, isThis))
            result.append(text);
    }
    for (const auto &[name, value] : changes) {
        if (value)
            result.append(name + '=' + *value);
    }
    return result;
}

/// As the system calls take them, good for as long as the texts.
std::vector<char *> pointersTo(QByteArrayList &texts)
{
    std::vector<char *> pointers;
    for (QByteArray &text : texts)
        pointers.push_back(text.data());
    pointers.push_back(nullptr);
    return pointers;
}

/// How the child differs from us.
class SpawnSettings {
public:
    SpawnSettings()
    {
        ::posix_spawn_file_actions_init(&m_actions);
        // A pipe of ours would end the program when it writes after we are gone.
        ::posix_spawn_file_actions_addopen(&m_actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
        ::posix_spawn_file_actions_addopen(&m_actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
        ::posix_spawn_file_actions_addopen(&m_actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
        ::posix_spawn_file_actions_addclosefrom_np(&m_actions, STDERR_FILENO + 1);

        ::posix_spawnattr_init(&m_attributes);
        // Libraries of ours ignore or hold back signals, which would be inherited.
        sigset_t signals;
        ::sigemptyset(&signals);
        ::posix_spawnattr_setsigmask(&m_attributes, &signals);
        ::sigfillset(&signals);
        ::posix_spawnattr_setsigdefault(&m_attributes, &signals);
        // Away from our terminal, whose end ends those who belong to it.
        ::posix_spawnattr_setflags(
            &m_attributes, POSIX_SPAWN_SETSID | POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
    }
    SpawnSettings(const SpawnSettings &) = delete;
    SpawnSettings &operator=(const SpawnSettings &) = delete;
    ~SpawnSettings()
    {
        ::posix_spawn_file_actions_destroy(&m_actions);
        ::posix_spawnattr_destroy(&m_attributes);
    }

    [[nodiscard]] const posix_spawn_file_actions_t *actions() const { return &m_actions; }
    [[nodiscard]] const posix_spawnattr_t *attributes() const { return &m_attributes; }

private:
    posix_spawn_file_actions_t m_actions{};
    posix_spawnattr_t m_attributes{};
};

/// Absent where it cannot be started.
std::optional<pid_t> spawn(const ProgramCall &call, const EnvironmentChanges &changes)
{
    QByteArrayList words{QFile::encodeName(call.program)};
    for (const QString &argument : call.arguments)
        words.append(QFile::encodeName(argument));
    QByteArrayList variables = environmentWith(changes);
    const SpawnSettings settings;
    pid_t child = -1;
    const int failure = ::posix_spawn(&child, words.constFirst().constData(), settings.actions(),
        settings.attributes(), pointersTo(words).data(), pointersTo(variables).data());
    if (failure != 0)
        return std::nullopt;
    return child;
}

} // namespace

std::optional<ProgramCall> firstAvailable(const QList<ProgramCall> &calls)
{
    for (const ProgramCall &call : calls) {
        const QString path = QStandardPaths::findExecutable(call.program);
        if (!path.isEmpty())
            return ProgramCall{path, call.arguments};
    }
    return std::nullopt;
}

QCoro::Task<bool> startDetached(
    ProgramCall call, EnvironmentChanges environment, std::chrono::milliseconds patience)
{
    const auto child = spawn(call, environment);
    if (!child)
        co_return false;
    const int descriptor = ::pidfd_open(*child, 0);
    if (descriptor < 0) // too many files are open: it runs, but nobody can look on
        co_return true;
    const auto end = std::make_shared<End>();
    new ChildWatch(*child, descriptor, end); // deletes itself
    const std::optional<bool> succeeded = co_await end->settledWithin(patience);
    co_return succeeded.value_or(true);
}

} // namespace orbitledge
