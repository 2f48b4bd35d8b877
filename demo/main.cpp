#include "BuildInfo.h"
#include "demo/Options.h"
#include "demo/Service.h"
#include "platform/linux/PasswordInput.h"
#include "platform/linux/PosixFileStore.h"
#include "platform/linux/StandardDescriptors.h"
#include "platform/linux/XdgDirectories.h"

#include <QCoreApplication>
#include <QLoggingCategory>
#include <QSocketNotifier>

#include <sodium.h>
#include <sys/signalfd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <exception>

using namespace orbitledge;
using namespace orbitledge::demo;
using namespace Qt::StringLiterals;

namespace {

constexpr int failed = 1;
constexpr int wrongArguments = 2;

int complain(const QString &text, int exitCode)
{
    PosixFileStore::writeDescriptor(STDERR_FILENO, "orbitledge-demo-service: " + text.toUtf8() + '\n');
    return exitCode;
}

void say(const QByteArray &text)
{
    PosixFileStore::writeDescriptor(STDOUT_FILENO, text);
}

QString defaultFolder()
{
    const auto data = XdgDirectories([](const char *name) { return qgetenv(name); }).data();
    return data ? QString::fromStdString((*data / "orbitledge-demo-service").string()) : QString();
}

int addAccount(Service &service, const QString &email, const Options &options)
{
    const auto input = readPassword(STDIN_FILENO, "Password for " + email.toUtf8() + ": ");
    if (!input)
        return complain(input.error(), failed);
    QString password = QString::fromUtf8(*input);
    if (password.endsWith(u'\n'))
        password.chop(1);
    if (password.endsWith(u'\r'))
        password.chop(1);
    const auto added = service.accounts().add({.email = email.trimmed(),
        .password = password,
        .firstName = email.section(u'@', 0, 0),
        .lastName = {},
        .currency = options.currency,
        .isVerified = !options.isUnverified});
    if (!added)
        return complain(added.error(), failed);
    return 0;
}

/// A descriptor on which the signals that end a program arrive like data, from now on: before, while nothing
/// is served yet, they end it as they end any program. Only this thread takes them, the pools' do not.
int endingSignals()
{
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGTERM);
    sigaddset(&signals, SIGINT);
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    return ::signalfd(-1, &signals, SFD_CLOEXEC | SFD_NONBLOCK);
}

int serve(const Options &options)
{
    auto service = Service::open(options);
    if (!service)
        return complain(service.error(), failed);
    if (options.addAccount)
        return addAccount(**service, *options.addAccount, options);

    const int signalDescriptor = endingSignals();
    const auto port = (*service)->listen(options.port);
    if (!port)
        return complain(port.error(), failed);
    const QSocketNotifier ending(signalDescriptor, QSocketNotifier::Read);
    QObject::connect(&ending, &QSocketNotifier::activated, qApp, [&] {
        signalfd_siginfo information{};
        while (::read(signalDescriptor, &information, sizeof information) > 0) { }
        (*service)->stop([] { QCoreApplication::quit(); });
    });
    say("Listening on http://127.0.0.1:" + QByteArray::number(*port) + "/\n");
    return QCoreApplication::exec();
}

} // namespace

int main(int argc, char **argv)
{
    occupyStandardDescriptors();
    // Everything that this program writes is for its user alone.
    ::umask(S_IRWXG | S_IRWXO);
    // The toolkit complains on standard error about locales that are not UTF-8; this program has no texts
    // that depend on one.
    qputenv("LC_ALL", "C.UTF-8");
    // The toolkit's own HTTP server warns about upgrades that nobody offers.
    QLoggingCategory::setFilterRules(u"qt.httpserver.warning=false"_s);
    const QCoreApplication application(argc, argv);
    QCoreApplication::setApplicationName(u"orbitledge-demo-service"_s);

    const QString folder = defaultFolder();
    const auto options = parseOptions(QCoreApplication::arguments().sliced(1), folder);
    if (!options)
        return complain(options.error(), wrongArguments);
    if (options->help) {
        say(helpText(folder).toUtf8());
        return 0;
    }
    if (options->version) {
        say("orbitledge-demo-service " + QByteArray(build::version) + '\n');
        return 0;
    }
    if (sodium_init() < 0)
        return complain(u"The library that protects passwords cannot be used on this machine"_s, failed);
    try {
        return serve(*options);
    } catch (const std::exception &failure) {
        return complain(u"The data cannot be used: "_s + QString::fromUtf8(failure.what()), failed);
    }
}
