# Completion of orbitledge(1) for fish.

function __orbitledge_zones
    awk '$1 == "Z" { print $2 } $1 == "L" { print $3 }' /usr/share/zoneinfo/tzdata.zi 2>/dev/null
end

# Whether nothing was written yet; what stands alone leaves no room for another word.
function __orbitledge_begins
    test (count (commandline -opc)) -eq 1
end

complete -c orbitledge -f
complete -c orbitledge -n __orbitledge_begins -a sign-in -d 'Sign in, and fetch the subscriptions'
complete -c orbitledge -n __orbitledge_begins -a refresh -d 'Fetch the subscriptions anew'
complete -c orbitledge -n __orbitledge_begins -a timeline -d 'Print the totals, this week, and the coming renewals'
complete -c orbitledge -n __orbitledge_begins -a status -d 'Print one line, for status bars'
complete -c orbitledge -n __orbitledge_begins -a reminders -d 'Print which reminders are planned'
complete -c orbitledge -n __orbitledge_begins -a deliver-reminders -d 'Show the reminders that are due'
complete -c orbitledge -n __orbitledge_begins -a sign-out -d 'Sign out, and remove what was fetched'
complete -c orbitledge -n __orbitledge_begins -a doctor -d 'Tell what works here and what is missing'
complete -c orbitledge -n __orbitledge_begins -l version -d 'Print the version'
complete -c orbitledge -n __orbitledge_begins -l background -d 'Start with the icon only'
complete -c orbitledge -n __orbitledge_begins -l quick-add -d 'Open the form for adding a subscription'
complete -c orbitledge -n __orbitledge_begins -l settings -d 'Open the settings'
complete -c orbitledge -n __orbitledge_begins -l quit -d 'End the program that runs'
complete -c orbitledge -n '__orbitledge_begins; or __fish_seen_subcommand_from sign-in refresh timeline status reminders deliver-reminders sign-out doctor' -s h -l help -d 'Print help'
complete -c orbitledge -n '__fish_seen_subcommand_from timeline status reminders' -l snapshot -r -F -d 'Read this file instead of the saved data'
complete -c orbitledge -n '__fish_seen_subcommand_from timeline status reminders' -l currency -x -a 'AUD BRL CAD CHF CNY CZK DKK EUR GBP HUF INR JPY MXN NOK NZD PLN SEK TRY USD ZAR' -d 'Give the totals in this currency'
complete -c orbitledge -n '__fish_seen_subcommand_from timeline status reminders' -l now -x -d 'As if it were then'
complete -c orbitledge -n '__fish_seen_subcommand_from timeline status reminders' -l time-zone -x -a '(__orbitledge_zones)' -d 'As if you were there'
complete -c orbitledge -n '__fish_seen_subcommand_from timeline status reminders' -l locale -x -a "(locale -a 2>/dev/null | string replace -r '\..*' '' | sort -u)" -d 'With the texts and weeks of that region'
complete -c orbitledge -n '__fish_seen_subcommand_from timeline status reminders doctor' -l json -d 'Print one JSON object, for programs'
complete -c orbitledge -n '__fish_seen_subcommand_from status' -l waybar -d 'Print one JSON object, for the status bar Waybar'
complete -c orbitledge -n '__fish_seen_subcommand_from reminders' -l lead-days -x -a '0 1 2 3 5 7 14' -d 'Remind so many days before'
complete -c orbitledge -n '__fish_seen_subcommand_from reminders' -l ledger -r -F -d 'Keys of reminders that were shown'
