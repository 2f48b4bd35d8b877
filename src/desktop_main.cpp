#include "BuildInfo.h"
#include "composition/ProgramInstance.h"
#include "composition/ProgramLocks.h"
#include "composition/SessionCommand.h"
#include "composition/SystemParts.h"
#include "composition/logos/SystemLogos.h"
#include "platform/Completion.h"
#include "platform/linux/StandardDescriptors.h"
#include "platform/linux/application/DesktopApplication.h"
#include "platform/linux/preferences/PortalPreferences.h"
#include "ui/OrbitledgeApp.h"
#include "ui/kit/FontConfiguration.h"
#include "ui/kit/Typography.h"
#include "ui/panel/LoadedLogoImages.h"

#include <QApplication>
#include <QDBusConnection>
#include <QIcon>
#include <QLoggingCategory>
#include <QSessionManager>
#include <QTimer>

#include <malloc.h>

#include <chrono>
#include <iostream>
#include <memory>
#include <optional>
#include <string_view>

using namespace orbitledge;
using namespace orbitledge::ui;
using namespace Qt::StringLiterals;

namespace {

int fail(const QString &reason)
{
    std::cerr << "orbitledge: " << qPrintable(reason) << '\n';
    return 1;
}

Locale locale()
{
    return Locale::fromEnvironment([](const char *name) { return qgetenv(name); });
}

/// The panel as it is once the data are fetched, for those who cannot look at it.
int drawPicture(const SystemParts &parts, const QString &file)
{
    AppStore store(parts.store, parts.identity);
    QCoro::waitFor(store.start());
    PanelWindow window(new PanelView(store, locale(), nullptr));
    applyColorScheme(
        window, colorSchemeFor(store.settings().appearance(), DesktopPreferences::Colors::Light, {}));
    applyTextScale(window, 1);
    window.show();
    QCoreApplication::processEvents();
    return window.grab().save(file) ? 0 : fail(file + u": the picture could not be written"_s);
}

/// Its threads work seldom and never much; a heap for each of them would be half a megabyte that nobody uses.
void keepOneHeap()
{
    // NOLINTNEXTLINE(concurrency-mt-unsafe): there is no other thread yet
    ::mallopt(M_ARENA_MAX, 1);
}

/// What a start or a refresh took and does not need any more is given back when nothing has changed for a
/// second.
void keepHeapSmall(const AppStore &store, QTimer &quiet)
{
    quiet.setSingleShot(true);
    quiet.setInterval(std::chrono::seconds(1));
    QObject::connect(&store, &AppStore::changed, &quiet, qOverload<>(&QTimer::start));
    QObject::connect(&quiet, &QTimer::timeout, [] { (void)::malloc_trim(0); });
}

/// What will not work without a session bus, where there is none.
std::optional<QString> noticeFor(const QDBusConnection &bus)
{
    if (bus.isConnected())
        return std::nullopt;
    return u"There is no session bus, so signing in and reminders will not work."_s;
}

/// For the command that tells what is missing, which loads nothing graphical itself.
int tellOfTray()
{
    const auto hasTray = TrayHost::hasEmbedderNow();
    std::cout << (!hasTray ? "unknown" : *hasTray ? "yes" : "no") << '\n';
    return 0;
}

/// What this start is for; absent where nothing is to be shown, as at login.
std::optional<ApplicationAction> actionOf(const QStringList &arguments)
{
    if (arguments.contains(u"--background"_s))
        return std::nullopt;
    for (const ApplicationAction action :
        {ApplicationAction::QuickAdd, ApplicationAction::Settings, ApplicationAction::Quit}) {
        if (arguments.contains(u"--"_s + nameOf(action)))
            return action;
    }
    return ApplicationAction::Open;
}

/// The desktop's word that a person asked for this start, before the toolkit takes it for its own windows.
QString ownActivationToken()
{
    const QString token = qEnvironmentVariable("XDG_ACTIVATION_TOKEN");
    return token.isEmpty() ? qEnvironmentVariable("DESKTOP_STARTUP_ID") : token;
}

/// What is being shown is written down first: otherwise the next start would show it again.
QCoro::Task<void> endInOrder(std::shared_ptr<DesktopNotificationCenter> notifications)
{
    constexpr auto patience = std::chrono::seconds(2);
    auto finishing = notifications->finish(patience);
    co_await finishing;
    QCoreApplication::quit();
}

/// A session manager of X11 would start what ran when the session ended, and with its window open: whether
/// the program starts at login is for its entry to say.
void leaveStartingToTheEntry(const QGuiApplication &application)
{
    const auto never
        = [](QSessionManager &manager) { manager.setRestartHint(QSessionManager::RestartNever); };
    QObject::connect(&application, &QGuiApplication::commitDataRequest, &application, never);
    QObject::connect(&application, &QGuiApplication::saveStateRequest, &application, never);
}

/// That the session is this program's, and from when on.
struct SessionTurn {
    std::optional<ProcessLock> lock;
    std::shared_ptr<Completion> begins = std::make_shared<Completion>();
};

/// The session is another process's as long as that is at work on it.
QCoro::Task<void> takeSession(SystemParts parts, std::shared_ptr<AppStore> store,
    std::shared_ptr<DesktopApplication> service, std::shared_ptr<SessionTurn> turn)
{
    auto waiting = ProgramLocks::awaitSession();
    ProgramLocks::Attempt attempt = co_await waiting;
    if (attempt)
        turn->lock = *std::move(attempt);
    parts.notifications->start();
    service->serve(parts.makeSession(store), sessionPlace(parts.api));
    turn->begins->complete();
}

/// For X11, where not every task bar looks for the desktop entry of a window. The files of whole icon themes
/// are read for it, so that the first frame would come an eighth later.
void setWindowIconLater()
{
    constexpr auto afterTheFirstFrame = std::chrono::milliseconds(500);
    QTimer::singleShot(afterTheFirstFrame, qApp,
        [] { QGuiApplication::setWindowIcon(QIcon::fromTheme(QString::fromLatin1(build::applicationId))); });
}

} // namespace

/// The program with windows, which orbitledge turns into. It takes one of --background, --quick-add,
/// --settings and --quit, or --picture FILE, and alone --tray-of-x11, which tells in a word whether the X
/// server has a tray.
int main(int argc, char **argv)
{
    occupyStandardDescriptors();
    if (argc == 2 && argv[1] == std::string_view("--tray-of-x11"))
        return tellOfTray();
    keepOneHeap();
    std::jthread readingFonts = readFontConfiguration();
    QLoggingCategory::setFilterRules(u"*.debug=false\nqt.*=false"_s);
    const QString token = ownActivationToken();
    QApplication application(argc, argv);
    QCoreApplication::setApplicationName(u"Orbitledge"_s);
    QGuiApplication::setDesktopFileName(QString::fromLatin1(build::applicationId));
    leaveStartingToTheEntry(application);
    setWindowIconLater();
    QCoreApplication::setApplicationVersion(QString::fromLatin1(build::version));
    QGuiApplication::setQuitOnLastWindowClosed(false);
    // NOLINTBEGIN(clang-analyzer-cplusplus.NewDeleteLeaks): the application owns the style
    QApplication::setStyle(new Style);
    const QStringList arguments = QCoreApplication::arguments();
    // NOLINTEND(clang-analyzer-cplusplus.NewDeleteLeaks)
    const qsizetype picture = arguments.indexOf(u"--picture"_s);
    if (picture >= 0) {
        const auto parts = SystemParts::make(Presence::Short);
        return parts ? drawPicture(*parts, arguments.value(picture + 1)) : fail(parts.error());
    }
    const std::optional<ApplicationAction> action = actionOf(arguments);
    const auto beginning = QCoro::waitFor(ProgramInstance::begin(action, token));
    if (!beginning)
        return fail(beginning.error());
    const std::optional<ProgramInstance> &instance = *beginning;
    if (!instance)
        return 0;
    const std::shared_ptr<DesktopApplication> service = instance->application();

    const auto parts = SystemParts::make(Presence::Resident);
    if (!parts)
        return fail(parts.error());
    readingFonts.join();
    const auto store = std::make_shared<AppStore>(parts->store, parts->identity);
    QTimer quiet;
    keepHeapSmall(*store, quiet);
    const auto turn = std::make_shared<SessionTurn>();
    OrbitledgeApp app({
        .store = store,
        .settings = parts->store.settings,
        .notifications = parts->notifications,
        .workspace = parts->store.workspace,
        .preferences = std::make_shared<PortalPreferences>(),
        .locale = locale(),
        .logos = std::make_shared<LoadedLogoImages>(makeLogos(
            SystemParts::makeHttp(Presence::Resident, LogoLoader::sessionConfiguration()))),
        .style = qobject_cast<Style *>(QApplication::style()),
        .defaults = parts->defaults,
        .about = {
            .version = QString::fromLatin1(build::version),
            .build = QString::fromLatin1(build::buildNumber),
            .api = parts->api,
        },
        .notice = noticeFor(QDBusConnection::sessionBus()),
        .desktop = qgetenv("XDG_CURRENT_DESKTOP"),
        .turn = turn->begins,
    });
    QObject::connect(&app, &OrbitledgeApp::quitRequested, &application,
        [notifications = parts->notifications] { endInOrder(notifications); });
    QObject::connect(service.get(), &ApplicationService::requested, &app, &OrbitledgeApp::perform);
    QObject::connect(service.get(), &ApplicationService::pageRequested, &app, &OrbitledgeApp::openPage);
    app.launch(OrbitledgeApp::Start::Background);
    takeSession(*parts, store, service, turn);
    // Of its own start the toolkit has the token.
    if (action)
        app.perform(*action, QString());
    service->begin();
    return QCoreApplication::exec();
}
