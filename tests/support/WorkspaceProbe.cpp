// Opens the address in the first argument and ends, so that tests see what is left of it then. Looks on for
// the milliseconds in the second argument; exits with 0 where it opened.

#include "platform/linux/DesktopWorkspace.h"

#include <QCoreApplication>
#include <QCoroTask>

using namespace orbitledge;

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    DesktopWorkspace workspace(std::nullopt, std::chrono::milliseconds(arguments.value(2).toInt()));
    return QCoro::waitFor(workspace.open(QUrl(arguments.value(1)), QString())) ? 0 : 1;
}
