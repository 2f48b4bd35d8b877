#include "cli/PanelCommand.h"

#include <algorithm>
#include <array>

namespace orbitledge {

using namespace Qt::StringLiterals;

bool isPanelOption(const QByteArray &word)
{
    constexpr std::array options{"--background", "--quick-add", "--settings", "--quit"};
    return std::ranges::any_of(options, [&word](const char *option) { return word == option; });
}

ExitCode runPanel(std::span<const QByteArray> words, const Environment &environment)
{
    if (words.size() > 1) {
        reportError(environment, u"\"%1\" was not expected"_s.arg(QString::fromUtf8(words[1])));
        return ExitCode::Usage;
    }
    const auto isSet = [&](const char *name) { return !environment.variable(name).isEmpty(); };
    if (!isSet("DISPLAY") && !isSet("WAYLAND_DISPLAY") && !isSet("QT_QPA_PLATFORM"))
        return failure(environment,
            u"there is no desktop here to open a window on; \"orbitledge --help\" lists what works without"_s);
    return failure(environment, environment.becomeDesktop({words.begin(), words.end()}));
}

} // namespace orbitledge
