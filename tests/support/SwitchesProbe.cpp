/// A program that says how the desktop's switches for its notifications stand: "allows", "popsUp", both or
/// neither, and for how many milliseconds at most it was kept from its event loop meanwhile, on a line each.
///
/// Argument: for how long the answer may be awaited, in milliseconds.

#include "platform/linux/notifications/DesktopNotificationSwitches.h"
#include "support/StretchWatch.h"

#include <QCoreApplication>

#include <iostream>

using namespace orbitledge;
using namespace Qt::StringLiterals;

namespace {

QCoro::Task<> tell(DesktopNotificationSwitches::Settings settings)
{
    // It need not live until the answer comes.
    auto switches = std::make_unique<DesktopNotificationSwitches>(std::move(settings));
    auto reading = switches->read();
    switches.reset();
    const NotificationSwitchPositions positions = co_await reading;
    std::cout << (positions.allows ? "allows " : "") << (positions.popsUp ? "popsUp" : "") << std::endl;
    // The event loop may not have begun yet.
    QMetaObject::invokeMethod(qApp, &QCoreApplication::quit, Qt::QueuedConnection);
}

} // namespace

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    const testing::StretchWatch watch;
    tell({.variable = [](const char *name) { return qgetenv(name); },
        .desktopId = u"app.example.My_Reminders--2"_s,
        .applicationName = u"Reminders"_s,
        .patience = std::chrono::milliseconds(QCoreApplication::arguments().value(1).toInt())});
    const int status = QCoreApplication::exec();
    std::cout << watch.longestMilliseconds() << std::endl;
    return status;
}
