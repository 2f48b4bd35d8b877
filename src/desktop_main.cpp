#include "BuildInfo.h"
#include "composition/SystemParts.h"
#include "composition/logos/SystemLogos.h"
#include "platform/linux/StandardDescriptors.h"
#include "platform/linux/preferences/PortalPreferences.h"
#include "ui/OrbitledgeApp.h"
#include "ui/kit/FontConfiguration.h"
#include "ui/kit/Typography.h"
#include "ui/panel/LoadedLogoImages.h"

#include <QApplication>
#include <QDBusConnection>
#include <QIcon>
#include <QLoggingCategory>

#include <iostream>
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

/// What will not work without a session bus, where there is none.
QString noticeFor(const QDBusConnection &bus)
{
    return bus.isConnected() ? QString()
                             : u"There is no session bus, so signing in and reminders will not work."_s;
}

/// For the command that tells what is missing, which loads nothing graphical itself.
int tellOfTray()
{
    const auto hasTray = TrayHost::hasEmbedderNow();
    std::cout << (!hasTray ? "unknown" : *hasTray ? "yes" : "no") << '\n';
    return 0;
}

} // namespace

/// The program with windows, which orbitledge turns into. Besides --background it takes --picture FILE, and
/// alone --tray-of-x11, which tells in a word whether the X server has a tray.
int main(int argc, char **argv)
{
    occupyStandardDescriptors();
    if (argc == 2 && argv[1] == std::string_view("--tray-of-x11"))
        return tellOfTray();
    std::jthread readingFonts = readFontConfiguration();
    QLoggingCategory::setFilterRules(u"*.debug=false\nqt.*=false"_s);
    QApplication application(argc, argv);
    QCoreApplication::setApplicationName(u"Orbitledge"_s);
    QGuiApplication::setDesktopFileName(QString::fromLatin1(build::applicationId));
    // On X11, where not every task bar looks for the desktop entry of a window.
    QGuiApplication::setWindowIcon(QIcon::fromTheme(QString::fromLatin1(build::applicationId)));
    QCoreApplication::setApplicationVersion(QString::fromLatin1(build::version));
    QGuiApplication::setQuitOnLastWindowClosed(false);
    // NOLINTBEGIN(clang-analyzer-cplusplus.NewDeleteLeaks): the application owns the style
    QApplication::setStyle(new Style);
    const QStringList arguments = QCoreApplication::arguments();
    // NOLINTEND(clang-analyzer-cplusplus.NewDeleteLeaks)
    const qsizetype picture = arguments.indexOf(u"--picture"_s);
    const auto parts = SystemParts::make(picture < 0 ? Presence::Resident : Presence::Short);
    if (!parts)
        return fail(parts.error());
    readingFonts.join();
    if (picture >= 0)
        return drawPicture(*parts, arguments.value(picture + 1));
    parts->notifications->start();
    OrbitledgeApp app({
        .store = std::make_shared<AppStore>(parts->store, parts->identity),
        .settings = parts->store.settings,
        .notifications = parts->notifications,
        .workspace = parts->store.workspace,
        .preferences = std::make_shared<PortalPreferences>(),
        .locale = locale(),
        .logos = std::make_shared<LoadedLogoImages>(makeLogos()),
        .style = qobject_cast<Style *>(QApplication::style()),
        .defaults = parts->defaults,
        .about = {
            .version = QString::fromLatin1(build::version),
            .build = QString::fromLatin1(build::buildNumber),
            .api = parts->api,
        },
        .notice = noticeFor(QDBusConnection::sessionBus()),
        .desktop = qgetenv("XDG_CURRENT_DESKTOP"),
    });
    QObject::connect(&app, &OrbitledgeApp::quitRequested, &application, &QCoreApplication::quit);
    const bool isInBackground = arguments.contains(u"--background"_s);
    app.launch(isInBackground ? OrbitledgeApp::Start::Background : OrbitledgeApp::Start::Open);
    return QCoreApplication::exec();
}
