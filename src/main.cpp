#include "cli/CommandLine.h"
#include "composition/OwnFiles.h"
#include "composition/ReminderDelivery.h"
#include "composition/SessionCommand.h"
#include "composition/SystemDiagnosis.h"
#include "platform/linux/InstalledPrograms.h"
#include "platform/linux/PasswordInput.h"
#include "platform/linux/PosixFileStore.h"
#include "platform/linux/SettingsFile.h"
#include "platform/linux/StandardDescriptors.h"
#include "platform/linux/StayingBehind.h"
#include "platform/linux/SystemClock.h"
#include "platform/linux/XdgDirectories.h"
#include "state/SnapshotCache.h"

#include <QCoreApplication>
#include <QLoggingCategory>

#include <langinfo.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <clocale>
#include <filesystem>
#include <functional>
#include <string>
#include <system_error>
#include <vector>

using namespace orbitledge;
using namespace Qt::StringLiterals;

namespace {

int terminalColumns()
{
    winsize size{};
    return ::ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 ? size.ws_col : 0;
}

/// Scripts expect one line on standard error and no remarks of the libraries. QT_LOGGING_RULES brings them
/// back.
void silenceLibraries()
{
    QLoggingCategory::setFilterRules(u"*=false"_s);
}

/// Long enough for a notification daemon that is only just starting.
constexpr std::chrono::seconds deliveryLimit(60);

NotificationDelivery deliverReminders(int argc, char **argv)
{
    const auto end = runAndLeaveBehind([argc, argv](const std::function<void(int)> &tell) {
        silenceLibraries();
        int count = argc; // which the application object may change
        const QCoreApplication application(count, argv);
        ReminderDelivery delivery;
        tell(static_cast<int>(QCoro::waitFor(delivery.deliver(deliveryLimit))));
        QCoro::waitFor(delivery.followClicks());
    });
    return end ? static_cast<NotificationDelivery>(*end) : NotificationDelivery::Unreadable;
}

tl::expected<SessionOutcome, QString> performWithEvents(int argc, char **argv, SessionRequest request)
{
    silenceLibraries();
    const QCoreApplication application(argc, argv);
    return QCoro::waitFor(performSession(std::move(request)));
}

Findings lookAround(int argc, char **argv)
{
    silenceLibraries();
    const QCoreApplication application(argc, argv);
    return QCoro::waitFor(makeDiagnosis()->findings());
}

QString becomeDesktop(const std::vector<QByteArray> &arguments)
{
    std::error_code error;
    const std::filesystem::path self = std::filesystem::read_symlink("/proc/self/exe", error);
    const std::filesystem::path program = InstalledPrograms::besides(self).desktop;
    std::vector<std::string> words{program.string()};
    for (const QByteArray &argument : arguments)
        words.push_back(argument.toStdString());
    std::vector<char *> pointers;
    pointers.reserve(words.size() + 1);
    for (std::string &word : words)
        pointers.push_back(word.data());
    pointers.push_back(nullptr);
    ::execv(program.c_str(), pointers.data());
    const std::string reason = std::system_category().message(errno);
    return QString::fromStdString(program.string() + ": " + reason);
}

Environment systemEnvironment(int argc, char **argv)
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
        .userDefaults =
            [variable] {
                const XdgDirectories directories(variable);
                return std::make_shared<const SettingsFile>(own::settingsFile(directories));
            },
        .readStandardInput = [] { return PosixFileStore::readDescriptor(STDIN_FILENO); },
        .readPassword
        = [](const QString &prompt) { return readPassword(STDIN_FILENO, prompt.toLocal8Bit()); },
        .performSession
        = [argc, argv](SessionRequest request) { return performWithEvents(argc, argv, std::move(request)); },
        .deliverReminders = [argc, argv] { return deliverReminders(argc, argv); },
        .lookAround = [argc, argv] { return lookAround(argc, argv); },
        .becomeDesktop = becomeDesktop,
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
    occupyStandardDescriptors();
    const std::vector<QByteArray> words(argv + std::min(argc, 1), argv + argc);
    return static_cast<int>(runCommandLine(words, systemEnvironment(argc, argv)));
}
