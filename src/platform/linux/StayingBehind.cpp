#include "platform/linux/StayingBehind.h"

#include "platform/linux/SealedMessage.h"

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>

namespace orbitledge {

namespace {

/// What the child's end means for the parent.
void endWithParent(int signal)
{
    // NOLINTNEXTLINE(cppcoreguidelines-pro-type-vararg,hicpp-vararg): Linux has it so
    (void)::prctl(PR_SET_PDEATHSIG, signal);
}

void letGoOfEverything()
{
    (void)::setsid();
    [[maybe_unused]] const int moved = ::chdir("/"); // whatever it was, it can be unmounted
    // NOLINTNEXTLINE(cppcoreguidelines-pro-type-vararg,hicpp-vararg): POSIX has it so
    const OwnedDescriptor nothing(::open("/dev/null", O_RDWR | O_CLOEXEC));
    if (nothing.get() < 0)
        return;
    for (const int standard : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
        (void)::dup2(nothing.get(), standard);
}

[[noreturn]] void runChild(
    const std::function<void(const std::function<void(int)> &tell)> &work, pid_t parent, int answers)
{
    endWithParent(SIGKILL);
    if (::getppid() != parent)
        ::_exit(EXIT_FAILURE);
    work([answers](int answer) {
        endWithParent(0);
        letGoOfEverything();
        [[maybe_unused]] const ssize_t written = ::write(answers, &answer, sizeof answer);
        ::close(answers);
    });
    std::exit(EXIT_SUCCESS); // NOLINT(concurrency-mt-unsafe): what ran on other threads has ended
}

std::optional<int> readAnswer(int answers)
{
    int answer = 0;
    ssize_t size = ::read(answers, &answer, sizeof answer);
    while (size < 0 && errno == EINTR)
        size = ::read(answers, &answer, sizeof answer);
    return size == static_cast<ssize_t>(sizeof answer) ? std::optional(answer) : std::nullopt;
}

} // namespace

std::optional<int> runAndLeaveBehind(const std::function<void(const std::function<void(int)> &tell)> &work)
{
    std::array<int, 2> ends{-1, -1};
    if (::pipe2(ends.data(), O_CLOEXEC) != 0)
        return std::nullopt;
    const OwnedDescriptor reading(ends[0]);
    OwnedDescriptor writing(ends[1]);
    const pid_t parent = ::getpid();
    const pid_t child = ::fork();
    if (child == 0)
        runChild(work, parent, ends[1]);
    writing = OwnedDescriptor(-1); // so that the child's end is the end of the pipe
    if (child < 0)
        return std::nullopt;
    const auto answer = readAnswer(reading.get());
    int status = 0;
    if (!answer && ::waitpid(child, &status, 0) == child && WIFSIGNALED(status))
        (void)::raise(WTERMSIG(status));
    return answer;
}

} // namespace orbitledge
