#include "cli/CommandLine.h"
#include "platform/linux/PosixFileStore.h"
#include "platform/linux/SystemClock.h"
#include "platform/linux/XdgDirectories.h"
#include "state/SnapshotCache.h"

#include <langinfo.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <clocale>
#include <vector>

using namespace orbitledge;

namespace {

int terminalColumns()
{
    winsize size{};
    return ::ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 ? size.ws_col : 0;
}

Environment systemEnvironment()
{
    // Only the encoding: numbers and dates are formatted by their own rules, not by the C library's.
    // NOLINTNEXTLINE(concurrency-mt-unsafe): there is no other thread yet
    (void)std::setlocale(LC_CTYPE, "");
    const auto variable = [](const char *name) { return qgetenv(name); };
    return {
        .clock = std::make_shared<SystemClock>(),
        .files = std::make_shared<PosixFileStore>(),
        .cacheFile = SnapshotCache::defaultLocation(XdgDirectories(variable)),
        .variable = variable,
        .readStandardInput = [] { return PosixFileStore::readDescriptor(STDIN_FILENO); },
        .writeOutput
        = [](const QByteArray &bytes) { return PosixFileStore::writeDescriptor(STDOUT_FILENO, bytes); },
        .writeError = [](const QByteArray &bytes) { PosixFileStore::writeDescriptor(STDERR_FILENO, bytes); },
        .outputIsTerminal = ::isatty(STDOUT_FILENO) == 1,
        .terminalColumns = terminalColumns(),
        // NOLINTNEXTLINE(concurrency-mt-unsafe): nor here
        .encoding = nl_langinfo(CODESET),
    };
}

} // namespace

int main(int argc, char **argv)
{
    const std::vector<QByteArray> words(argv + std::min(argc, 1), argv + argc);
    return static_cast<int>(runCommandLine(words, systemEnvironment()));
}
