#include "cli/HelpTexts.h"

namespace orbitledge {

QString generalHelp()
{
    return QStringLiteral(R"(Usage: orbitledge [--background | --quick-add | --settings | --quit]
       orbitledge COMMAND [OPTION]...
Shows what your subscriptions are about to charge: without a command in the
panel, with an icon in the tray.

Commands:
  sign-in      sign in to your account, and fetch its subscriptions
  refresh      fetch your subscriptions anew
  timeline     print the totals, this week, and the coming renewals
  status       print one line, for status bars
  reminders    print which reminders are planned
  sign-out     sign out, and remove what was fetched
  deliver-reminders
               show the reminders that are due; a timer does that for you
  doctor       tell what works here and what is missing

Options:
  --background  start with the icon only, as at login
  --quick-add   open the panel with the form for adding a subscription
  --settings    open the settings
  --quit        end the program that runs
  -h, --help    print this help, or that of a command
  --version     print the version

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

QString statusHelp()
{
    return QStringLiteral(R"(Usage: orbitledge status [OPTION]...
Prints one line, for status bars, of the data saved last: how many renewals are
due within three days, which is next, and what is left to charge this month.
Nothing is changed, and nothing is sent anywhere.

Options:
  --json            print one JSON object, for programs
  --waybar          print one JSON object, for the status bar Waybar
  --snapshot FILE   read FILE instead of the saved data; "-" is standard input
  --currency CODE   give the totals in this currency (default: your profile's)
  --now INSTANT     as if it were then, for instance 2026-03-18T09:30:00Z
  --time-zone ZONE  as if you were there, for instance Europe/Berlin
  --locale LOCALE   with that region's texts, for instance de_CH
  -h, --help        print this help

Where nothing is saved, or nothing that can be used, it says so and succeeds. A
FILE that is named must be there and whole.
Exit status: 0 on success, 1 where the data cannot be read, 2 where an argument
is wrong.
)");
}

QString remindersHelp()
{
    return QStringLiteral(R"(Usage: orbitledge reminders [OPTION]...
Prints which reminders are planned for the data saved last, and when.
Nothing is changed, and nothing is sent anywhere.

Options:
  --snapshot FILE   read FILE instead of the saved data; "-" is standard input
  --lead-days N     remind N days before a renewal, 0 to 14 (default: your
                    setting)
  --ledger FILE     a JSON array of the keys of reminders that were shown
                    already (default: your own)
  --currency CODE   tell amounts in this currency (default: your profile's)
  --now INSTANT     as if it were then, for instance 2026-03-18T09:30:00Z
  --time-zone ZONE  as if you were there, for instance Europe/Berlin
  --locale LOCALE   with that region's texts, for instance de_CH
  --json            print one JSON object, for programs
  -h, --help        print this help

Environment:
  ORBITLEDGE_WEB_URL  the web application, whose pages reminders open

Exit status: 0 on success, 1 where something cannot be read, 2 where an argument
is wrong.
)");
}

QString deliverRemindersHelp()
{
    return QStringLiteral(R"(Usage: orbitledge deliver-reminders
Shows the reminders that are due on your desktop, and ends; a part of it stays
in the background for a day, or as long as they are shown, and starts Orbitledge
when you click on one. Where systemd runs for you, a timer of its calls this
while Orbitledge is not running. Each reminder is shown once, whoever shows it;
where Orbitledge is running, this does nothing.

Options:
  -h, --help        print this help

Exit status: 0 on success, 1 where a reminder is due that cannot be shown, 2
where an argument is wrong.
)");
}

QString doctorHelp()
{
    return QStringLiteral(R"(Usage: orbitledge doctor [OPTION]...
Tells what Orbitledge finds here of what it works with, and what to do about
what is missing. Nothing is changed, nothing of the desktop's is started, and
nothing is sent anywhere.

There is no password, name, e-mail address or amount in it, so that it can be
part of a report of a fault.

Options:
  --json            print one JSON object, for programs
  -h, --help        print this help

Exit status: 0 where nothing that is needed is missing, 1 where something is, 2
where an argument is wrong.
)");
}

QString signInHelp()
{
    return QStringLiteral(R"(Usage: orbitledge sign-in EMAIL
Signs in to your account, and fetches its subscriptions.

The password is asked for without being shown. Where standard input is no
terminal, all of it is the password, but for one line break at its end.
The session is kept in your desktop's keyring, the password nowhere.

Options:
  -h, --help        print this help

Environment:
  ORBITLEDGE_API_URL  the service, instead of the one that was built in

Exit status: 0 on success, 1 where it failed, 2 where an argument is wrong.
)");
}

QString refreshHelp()
{
    return QStringLiteral(R"(Usage: orbitledge refresh
Fetches your profile and your subscriptions, and saves them for the other
commands; plans the reminders of them where those are on. What was saved before
stays where this fails.

Options:
  -h, --help        print this help

Environment:
  ORBITLEDGE_API_URL  the service, instead of the one that was built in

Exit status: 0 on success, 1 where it failed or you are not signed in, 2 where
an argument is wrong.
)");
}

QString signOutHelp()
{
    return QStringLiteral(R"(Usage: orbitledge sign-out
Ends your session at the service, where that can be reached, and removes it from
your desktop's keyring, along with the subscriptions that were fetched, their
logos, and the reminders of them.

Options:
  -h, --help        print this help

Environment:
  ORBITLEDGE_API_URL  the service, instead of the one that was built in

Exit status: 0 on success, 1 where something cannot be removed, 2 where an
argument is wrong.
)");
}

} // namespace orbitledge
