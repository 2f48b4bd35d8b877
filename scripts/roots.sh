# Root file systems with nothing but Debian 12's smallest set, for scripts that need a machine nobody has set up.
# Sourced after common.sh.
# shellcheck shell=bash

roots=$PWD/build/roots

need_root() {
    ((EUID == 0)) || fail "$0 makes a root file system and changes into it, which only root can; run it with sudo"
}

# The machine's own addresses for Debian 12, as lines of sources.list.
debian_sources() {
    # apt-get fills the names in, and not the shell
    # shellcheck disable=SC2016
    apt-get indextargets --format '$(ORIGIN) deb $(REPO_URI) $(CODENAME) $(COMPONENT)' 'Created-By: Packages' \
        | sed -n 's/^Debian \(deb .* bookworm\(-updates\|-security\)\{0,1\} .*\)/\1/p' | sort -u
}

# new_root NAME: makes build/roots/NAME anew, and says where it is. What debootstrap fetches is kept for the next time.
new_root() {
    local root=$roots/$1 base=$roots/bookworm.tar mirror
    mirror=$(debian_sources | sed -n 's/^deb \([^ ]*\) bookworm main$/\1/p' | head -n 1)
    [[ -n "$mirror" ]] || fail "apt knows no address for Debian 12 (bookworm) here"
    mkdir -p "$roots"
    if [[ ! -e "$base" ]]; then
        rm -rf "$roots/bookworm"
        run_quietly "making a root file system of Debian 12 (kept in $base)" \
            debootstrap --variant=minbase bookworm "$roots/bookworm" "$mirror"
        debian_sources >"$roots/bookworm/etc/apt/sources.list"
        apt-config dump | { grep -i '^Acquire::[a-z]*::Proxy' || true; } >"$roots/bookworm/etc/apt/apt.conf.d/90proxy"
        # Nothing is started by being installed.
        printf '#!/bin/sh\nexit 101\n' >"$roots/bookworm/usr/sbin/policy-rc.d"
        chmod +x "$roots/bookworm/usr/sbin/policy-rc.d"
        tar -C "$roots/bookworm" --numeric-owner --xattrs -cf "$base.new" .
        mv "$base.new" "$base"
        rm -rf "$roots/bookworm"
    fi
    rm -rf "$root"
    mkdir "$root"
    tar -C "$root" --numeric-owner --xattrs -xpf "$base"
    cp -L /etc/resolv.conf "$root/etc/resolv.conf"
    printf '%s\n' "$root"
}

# in_root ROOT COMMAND...: runs it there. What it starts and mounts ends with it. A folder named by LENT_CCACHE lies
# there at /var/cache/ccache. With OFFLINE=yes it has no network, and no X server of this machine in reach either.
in_root() {
    local root=$1
    shift
    local apart=(--mount --pid --fork --kill-child)
    [[ "${OFFLINE:-}" != yes ]] || apart+=(--net)
    # $1 is the inner shell's
    # shellcheck disable=SC2016
    unshare "${apart[@]}" bash -ec '
        mount --make-rprivate /
        mount --bind "$1" "$1"
        mount -t proc proc "$1/proc"
        mount -t sysfs -o ro sysfs "$1/sys"
        mount -t tmpfs -o mode=1777 tmpfs "$1/dev/shm"
        mount -t devpts -o gid=5,mode=620,ptmxmode=666 devpts "$1/dev/pts"
        if [[ -n "${LENT_CCACHE:-}" ]]; then
            mkdir -p "$1/var/cache/ccache"
            mount --bind "$LENT_CCACHE" "$1/var/cache/ccache"
        fi
        # Not chroot, behind which nobody may make name spaces of their own.
        cd "$1"
        pivot_root . .
        umount -l .
        shift
        exec env -i HOME=/root PATH=/usr/sbin:/usr/bin:/sbin:/bin LANG=C.UTF-8 TERM=dumb \
            DEBIAN_FRONTEND=noninteractive "$@"' -- "$root" "$@"
}
