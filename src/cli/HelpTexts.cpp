#include "cli/HelpTexts.h"

namespace orbitledge {

QString generalHelp()
{
    return QStringLiteral(R"(Usage: orbitledge COMMAND [OPTION]...
Shows what your subscriptions are about to charge.

Commands:
  timeline     print the totals, this week, and the coming renewals

Options:
  -h, --help   print this help, or that of a command
  --version    print the version

"orbitledge COMMAND --help" tells more about a command; so does man orbitledge.
)");
}

QString timelineHelp()
{
    return QStringLiteral(R"(Usage: orbitledge timeline [OPTION]...
Prints the totals, this week, and the coming renewals of the data saved last.
Nothing is changed, and nothing is sent anywhere.

Options:
  --snapshot FILE   read FILE instead of the saved data; "-" is standard input
  --currency CODE   give the totals in this currency (default: your profile's)
  --now INSTANT     as if it were then, for instance 2026-03-18T09:30:00Z
  --time-zone ZONE  as if you were there, for instance Europe/Berlin
  --locale LOCALE   with that region's texts and weeks, for instance de_CH
  --json            print one JSON object, for programs
  -h, --help        print this help

Colours are used on a terminal only, and not where NO_COLOR is set or TERM is
dumb.
Exit status: 0 on success, 1 where the data cannot be read, 2 where an argument
is wrong.
)");
}

} // namespace orbitledge
