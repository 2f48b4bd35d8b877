/// A program that follows the desktop's preferences, as it is told on its standard input, one command a line:
///
///     look      says "look" and dark, light or none, still or moves, the text scale, and
///               "clear" where there is to be more contrast
///     quit
///
/// It says by itself "changed" each time that something changed, and at the end for how many milliseconds at
/// most it was kept from its event loop.

#include "platform/linux/preferences/PortalPreferences.h"
#include "support/CommandInput.h"
#include "support/StretchWatch.h"

#include <QCoreApplication>

#include <iostream>

using namespace orbitledge;
using namespace orbitledge::testing;

namespace {

void say(const QByteArray &line)
{
    std::cout << line.constData() << std::endl; // flushed, as somebody waits for it
}

QByteArray lookOf(const DesktopPreferences &preferences)
{
    const auto colors = preferences.colors();
    QByteArray text = colors == DesktopPreferences::Colors::Dark ? "dark"
        : colors == DesktopPreferences::Colors::Light            ? "light"
                                                                 : "none";
    text += preferences.reducesMotion() ? " still " : " moves ";
    text += QByteArray::number(preferences.textScale());
    return preferences.increasesContrast() ? text + " clear" : text;
}

} // namespace

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    const StretchWatch watch;
    const PortalPreferences preferences;
    QObject::connect(&preferences, &DesktopPreferences::changed, &preferences, [] { say("changed"); });
    const CommandInput input(
        [&](const auto &words) {
            if (words[0] == "look")
                say("look " + lookOf(preferences));
            else
                QCoreApplication::quit();
        },
        [] { QCoreApplication::quit(); });
    const int status = QCoreApplication::exec();
    say("kept " + QByteArray::number(watch.longestMilliseconds()));
    return status;
}
