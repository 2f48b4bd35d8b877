#include "cli/PanelCommand.h"

#include <algorithm>

namespace orbitledge {

using namespace Qt::StringLiterals;

ExitCode runPanel(std::span<const QByteArray> words, const Environment &environment)
{
    const auto unknown
        = std::ranges::find_if(words, [](const QByteArray &word) { return word != "--background"; });
    if (unknown != words.end()) {
        reportError(environment, u"\"%1\" was not expected"_s.arg(QString::fromUtf8(*unknown)));
        return ExitCode::Usage;
    }
    const auto isSet = [&](const char *name) { return !environment.variable(name).isEmpty(); };
    if (!isSet("DISPLAY") && !isSet("WAYLAND_DISPLAY") && !isSet("QT_QPA_PLATFORM"))
        return failure(environment,
            u"there is no desktop here to open a window on; \"orbitledge --help\" lists what works without"_s);
    return failure(environment, environment.becomeDesktop({words.begin(), words.end()}));
}

} // namespace orbitledge
