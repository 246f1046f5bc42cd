# Runs Windows programs. 32-bit ones run in a private root of Debian's i386
# packages: beside amd64 packages they install only while the versions of both
# agree to the letter, and adding an architecture changes a person's machine.

wine32_root() { printf '%s/wine32-root\n' "$(cache_dir)"; }

# Without a window manager Wine waits two seconds for each window to go, unless
# it is told that there is none. with_display is in common.sh.
wine_unmanaged() { # RUNNER FILE, which says that it was done
    [ -f "$2" ] && return 0
    with_display "$1" reg add 'HKCU\Software\Wine\X11 Driver' /v Managed /d N /f >/dev/null 2>&1 || return 1
    as_root touch "$2"
}

# Makes the root once: about 70 seconds and 1.4 GB.
wine32_prepare() {
    local root
    root=$(wine32_root)
    [ -f "$root/.complete" ] || wine32_make_root "$root" || return 1
    wine_unmanaged wine32 "$root/.unmanaged"
}

wine32_make_root() { # ROOT
    local root=$1 mirror
    install debootstrap
    mirror=$(apt-get indextargets --format '$(SITE)' 'Created-By: Packages' 2>/dev/null | grep -m1 '/debian/\?$')
    if [ -z "$mirror" ]; then
        say "apt names no mirror of Debian's packages, so no 32-bit root can be made"
        return 1
    fi
    say "making a 32-bit root for Wine in $root"
    mkdir -p "$(dirname "$root")"
    as_root rm -rf "$root"
    as_root debootstrap --arch=i386 --variant=minbase bookworm "$root" "$mirror" \
        >/dev/null || return 1
    as_root chroot "$root" sh -c 'apt-get update -q && DEBIAN_FRONTEND=noninteractive \
        apt-get install -y -q --no-install-recommends wine32 wine' >/dev/null || return 1
    as_root touch "$root/.complete"
}

# wine32 PROGRAM [ARGUMENT...]: from the present folder, on the present display.
wine32() {
    local root
    root=$(wine32_root)
    as_root unshare -m bash -c '
        root=$1 top=$2 here=$3
        shift 3
        mkdir -p "$root$top"
        mount --bind "$top" "$root$top" && mount --bind /tmp "$root/tmp" &&
            mount --bind /dev "$root/dev" && mount -t proc proc "$root/proc" || exit 125
        exec env -u SESSION_MANAGER DISPLAY="${DISPLAY:-}" XAUTHORITY= HOME=/root WINEDEBUG=-all \
            WINEDLLOVERRIDES=mscoree,mshtml= WINEPREFIX=/root/.wine-tarvix LC_ALL=C.UTF-8 \
            chroot "$root" sh -c "cd \"\$1\" && shift && exec timeout -k 5 1200 wine \"\$@\"" sh "$here" "$@"
    ' bash "$root" "$(git rev-parse --show-toplevel)" "$PWD" "$@"
}

wine64_prepare() {
    install wine64
    wine_unmanaged wine64_run "$(cache_dir)/wine64-unmanaged"
}

wine64_run() {
    WINEDEBUG=-all WINEDLLOVERRIDES=mscoree,mshtml= WINEPREFIX="$(cache_dir)/wine64-prefix" \
        /usr/lib/wine/wine64 "$@"
}
