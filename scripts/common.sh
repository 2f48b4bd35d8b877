# Shared by the scripts of this repository, which source it from the repository's root.
# shellcheck shell=bash

say() {
    printf '==> %s\n' "$*" >&2
}

fail() {
    printf 'error: %s\n' "$*" >&2
    exit 1
}

# packages_for PURPOSE...: the names that packaging/debian-packages.txt lists for these purposes.
packages_for() {
    local purpose
    for purpose in "$@"; do
        sed -n "s/^${purpose}[[:space:]]\{1,\}\([^[:space:]]\{1,\}\)\$/\1/p" packaging/debian-packages.txt
    done | sort -u
}

# install_packages PURPOSE...: installs what is missing, after saying what that is.
install_packages() {
    command -v dpkg-query >/dev/null || fail "this script installs Debian packages, but dpkg is not here; install these by hand and build with CMake: $(packages_for "$@" | tr '\n' ' ')"
    local missing=() package
    while read -r package; do
        [[ "$(dpkg-query -W -f '${db:Status-Status}' "$package" 2>/dev/null)" == installed ]] || missing+=("$package")
    done < <(packages_for "$@")
    ((${#missing[@]} == 0)) && return

    local as_root=()
    if ((EUID != 0)); then
        command -v sudo >/dev/null || fail "installing ${missing[*]} needs root, and sudo is not here; run this script as root once"
        as_root=(sudo)
    fi
    say "installing Debian packages: ${missing[*]}"
    local log
    log=$(mktemp)
    if ! { "${as_root[@]}" apt-get update -q \
        && "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get install -y -q --no-install-recommends "${missing[@]}"; } \
        >"$log" 2>&1 </dev/null; then
        tail -n 20 "$log" >&2
        rm -f "$log"
        fail "the packages could not be installed; apt-get's last words are above"
    fi
    rm -f "$log"
}

# run_quietly WHAT COMMAND...: shows the command's output only where it fails.
run_quietly() {
    local what=$1 log
    shift
    say "$what"
    log=$(mktemp)
    if ! "$@" >"$log" 2>&1; then
        tail -n 60 "$log" >&2
        rm -f "$log"
        fail "$what failed; the last lines of its output are above"
    fi
    rm -f "$log"
}

# Stricter where nobody watches.
warnings_as_errors() {
    [[ -n "${CI:-}" ]] && printf 'ON' || printf 'OFF'
}
