#include "BuildInfo.h"
#include "composition/SystemParts.h"
#include "platform/linux/StandardDescriptors.h"
#include "platform/linux/preferences/PortalPreferences.h"
#include "ui/OrbitledgeApp.h"

#include <QApplication>
#include <QLoggingCategory>

#include <cstdio>

using namespace orbitledge;
using namespace orbitledge::ui;
using namespace Qt::StringLiterals;

namespace {

int fail(const QString &reason)
{
    // NOLINTNEXTLINE(cppcoreguidelines-pro-type-vararg): there is nothing else for one line
    std::fprintf(stderr, "orbitledge: %s\n", qPrintable(reason));
    return 1;
}

} // namespace

int main(int argc, char **argv)
{
    occupyStandardDescriptors();
    QLoggingCategory::setFilterRules(u"*.debug=false\nqt.*=false"_s);
    QApplication application(argc, argv);
    QGuiApplication::setApplicationDisplayName(u"Orbitledge"_s);
    QGuiApplication::setDesktopFileName(QString::fromLatin1(build::applicationId));
    QCoreApplication::setApplicationVersion(QString::fromLatin1(build::version));
    QGuiApplication::setQuitOnLastWindowClosed(false);
    auto *const style = new Style;
    QApplication::setStyle(style); // which owns it

    const auto parts = SystemParts::make(Presence::Resident);
    if (!parts)
        return fail(parts.error());
    parts->notifications->start();
    OrbitledgeApp app({
        .store = std::make_shared<AppStore>(parts->store, parts->identity),
        .settings = parts->store.settings,
        .notifications = parts->notifications,
        .workspace = parts->store.workspace,
        .preferences = std::make_shared<PortalPreferences>(),
        .locale = Locale::fromEnvironment([](const char *name) { return qgetenv(name); }),
        .logos = nullptr,
        .style = style,
    });
    QObject::connect(&app, &OrbitledgeApp::quitRequested, &application, &QCoreApplication::quit);
    const bool isInBackground = QCoreApplication::arguments().contains(u"--background"_s);
    app.launch(isInBackground ? OrbitledgeApp::Start::Background : OrbitledgeApp::Start::Open);
    return QCoreApplication::exec();
}
