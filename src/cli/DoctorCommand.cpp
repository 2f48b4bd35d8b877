#include "cli/DoctorCommand.h"

#include "BuildInfo.h"
#include "cli/DoctorReport.h"
#include "cli/HelpTexts.h"
#include "cli/Operands.h"
#include "locale/IcuVersion.h"
#include "locale/Locale.h"
#include "locale/TimeZone.h"
#include "service/ServiceAddresses.h"

namespace orbitledge {

using namespace Qt::StringLiterals;

namespace {

ServiceAddress serviceAddress(const Environment &environment)
{
    if (!ServiceAddresses::fromEnvironment(environment.variable))
        return ServiceAddress::Refused;
    const bool isSet = !environment.variable("ORBITLEDGE_API_URL").isEmpty()
        || !environment.variable("ORBITLEDGE_WEB_URL").isEmpty();
    return isSet ? ServiceAddress::Environment : ServiceAddress::BuiltIn;
}

OwnFacts ownFacts(const Environment &environment)
{
    const Locale locale = Locale::fromEnvironment(environment.variable);
    return {
        .version = QString::fromLatin1(build::version),
        .build = QString::fromLatin1(build::buildNumber),
        .icuVersion = icuVersion(),
        .dates = QString::fromLatin1(locale.dates),
        .money = QString::fromLatin1(locale.money),
        .collation = QString::fromLatin1(locale.collation),
        .encoding = QString::fromLatin1(environment.encoding),
        .timeZone = QString::fromLatin1(TimeZone::system().id()),
        .service = serviceAddress(environment),
        .now = environment.clock->now(),
    };
}

} // namespace

ExitCode runDoctor(std::span<const QByteArray> words, const Environment &environment)
{
    std::vector<QByteArray> others(words.begin(), words.end());
    const bool isForPrograms = std::erase(others, "--json") > 0;
    ExitCode end{};
    if (!operandsOf(others, 0, "doctor"_L1, doctorHelp, environment, end))
        return end;
    const OwnFacts own = ownFacts(environment);
    const QList<Check> checks = checksOf(environment.lookAround(), own);
    const bool isWritten = isForPrograms ? environment.writeOutput(doctorJson(own, checks))
                                         : writeText(environment, doctorText(own, checks));
    const ExitCode written = finish(environment, isWritten);
    return written == ExitCode::Success && !isHealthy(checks) ? ExitCode::Failure : written;
}

} // namespace orbitledge
