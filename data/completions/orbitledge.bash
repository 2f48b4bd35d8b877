# Completion of orbitledge(1) for bash.

_orbitledge() {
    local word=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]}
    COMPREPLY=()
    # The "=" between an option and its value is a word of its own.
    if [[ $word == = ]]; then
        word=
    elif [[ $previous == = ]]; then
        previous=${COMP_WORDS[COMP_CWORD - 2]}
    fi
    if ((COMP_CWORD == 1)); then
        local first='sign-in refresh timeline status reminders deliver-reminders sign-out doctor'
        [[ $word == -* ]] && first='--background --quick-add --settings --quit --help --version'
        mapfile -t COMPREPLY < <(compgen -W "$first" -- "$word")
        return
    fi
    if [[ ${COMP_WORDS[1]} =~ ^(sign-in|refresh|deliver-reminders|sign-out)$ ]]; then
        mapfile -t COMPREPLY < <(compgen -W '--help' -- "$word")
        return
    fi
    if [[ ${COMP_WORDS[1]} == doctor ]]; then
        mapfile -t COMPREPLY < <(compgen -W '--json --help' -- "$word")
        return
    fi
    [[ ${COMP_WORDS[1]} =~ ^(timeline|status|reminders)$ ]] || return

    case $previous in
    --snapshot | --ledger)
        compopt -o filenames
        mapfile -t COMPREPLY < <(compgen -f -- "$word")
        ;;
    --time-zone)
        mapfile -t COMPREPLY < <(compgen -W "$(_orbitledge_zones)" -- "$word")
        ;;
    --locale)
        mapfile -t COMPREPLY < <(compgen -W "$(locale -a 2>/dev/null | sed 's/\..*//' | sort -u)" -- "$word")
        ;;
    --currency)
        mapfile -t COMPREPLY < <(compgen -W 'AUD BRL CAD CHF CNY CZK DKK EUR GBP HUF INR JPY MXN NOK NZD PLN SEK TRY USD ZAR' -- "${word^^}")
        ;;
    --now)
        ;;
    --lead-days)
        mapfile -t COMPREPLY < <(compgen -W '0 1 2 3 5 7 14' -- "$word")
        ;;
    *)
        local options='--snapshot --currency --now --time-zone --locale --json --help'
        [[ ${COMP_WORDS[1]} == reminders ]] && options+=' --lead-days --ledger'
        [[ ${COMP_WORDS[1]} == status ]] && options+=' --waybar'
        mapfile -t COMPREPLY < <(compgen -W "$options" -- "$word")
        ;;
    esac
}

_orbitledge_zones() {
    # The names and aliases of the tz database's compact form: "Z name …" and "L target alias".
    awk '$1 == "Z" { print $2 } $1 == "L" { print $3 }' /usr/share/zoneinfo/tzdata.zi 2>/dev/null
}

complete -F _orbitledge orbitledge
