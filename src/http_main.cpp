// The program that sends the requests of the one with windows, which starts it and talks to it through pipes.

#include "platform/curl/CurlHttpSession.h"
#include "platform/httpprocess/HttpWorker.h"
#include "platform/linux/RouteConnectivity.h"
#include "platform/linux/StandardDescriptors.h"

#include <QCoreApplication>
#include <QLoggingCategory>

#include <sys/prctl.h>

#include <cstdlib>

using namespace orbitledge;
using namespace Qt::StringLiterals;

namespace {

std::shared_ptr<HttpSession> makeSession(HttpSetup setup)
{
    const auto connectivity
        = setup.configuration.waitsForConnectivity ? std::make_shared<RouteConnectivity>() : nullptr;
    return std::make_shared<CurlHttpSession>(
        std::move(setup.userAgent), std::move(setup.configuration), connectivity);
}

} // namespace

int main(int argc, char **argv)
{
    occupyStandardDescriptors();
    // It is started by a descriptor, whose number would be its name in lists of processes.
    // NOLINTNEXTLINE(cppcoreguidelines-pro-type-vararg,hicpp-vararg): Linux has it so
    ::prctl(PR_SET_NAME, "orbitledge-http");
    QLoggingCategory::setFilterRules(u"*.debug=false\nqt.*=false"_s);
    QCoreApplication application(argc, argv);
    const HttpWorker worker(makeSession);
    QObject::connect(&worker, &HttpWorker::done, &application, &QCoreApplication::quit);
    QObject::connect(
        &worker, &HttpWorker::failed, &application, [] { QCoreApplication::exit(EXIT_FAILURE); });
    return QCoreApplication::exec();
}
