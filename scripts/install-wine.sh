#!/usr/bin/env bash
# Makes build/wine, with which scripts/wine.sh runs Windows programs. Usage: scripts/install-wine.sh 32|64
# Wine for 64 bits is a Debian package. Wine for 32 bits belongs to another architecture, which not every machine can
# install beside its own. Its packages are unpacked into build/wine/i386 and run there with this machine's 32-bit C
# library: that takes no second architecture, no chroot and no mount, only 1 GB of room and a minute.
# Leaves Wine's server running, which scripts/wine.sh 32|64 wineserver -k ends.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
. scripts/packages.sh
bits=$1

# From the machine's own mirrors, with a state of apt's own: for a machine on which nothing is installed.
fetch_for_i386() { # package, folder: archives/ below it receives the package and all that it depends on
    local options=(-o APT::Architecture=i386 -o APT::Architectures=i386 -o APT::Sandbox::User=
        -o Dir::State="$2" -o Dir::State::status="$2/status" -o Dir::Cache="$2")
    mkdir -p "$2/lists/partial" "$2/archives/partial"
    : >"$2/status"
    apt-get "${options[@]}" update -qq || true # a third party's list may be for other architectures only
    apt-get "${options[@]}" install -qq -y --no-install-recommends --download-only "$1"
}

# The C library is left out: it must be that of the machine's loader.
unpack() { # folder of packages, folder
    local package
    mkdir -p "$2"
    for package in "$1"/*.deb; do
        [[ $package != */libc6_* ]] || continue
        dpkg-deb --fsys-tarfile "$package" |
            tar -x -C "$2" --exclude=./usr/share/{doc,locale,man} || return
    done
}

# Complete or not at all.
make_wine32() { # folder
    local unfinished=$1.unfinished wine=usr/lib/i386-linux-gnu/wine/i386-windows
    rm -rf "$unfinished"
    retry fetch_for_i386 wine32 "$unfinished/apt"
    unpack "$unfinished/apt/archives" "$unfinished"
    # What the packages' own scripts would do where they are installed.
    ln -sf wineserver32 "$unfinished/usr/lib/wine/wineserver"
    cp "$unfinished"/usr/i686-w64-mingw32/lib/*.dll "$unfinished/$wine"
    rm -rf "$unfinished/apt"
    mv "$unfinished" "$1"
}

# Wine's libraries load some of another package, which make_wine32 puts beside them. A Windows program looks for those
# in its own folder and in the system's folder only, so they are copied into the system's folder too.
copy_libraries() {
    mkdir -p build/wine/prefix32/drive_c/windows/system32
    cp build/wine/i386/usr/i686-w64-mingw32/lib/*.dll build/wine/prefix32/drive_c/windows/system32
}

# As the tests need it: the log of a full disk tells of the drives c:, d: and e:.
make_drives() {
    local drive
    for drive in d e; do
        ln -sfn ../drive_c "build/wine/prefix$bits/dosdevices/$drive:"
    done
}

# Starts a server that stays. One that ends with its last program makes every start take seconds, and may end while the
# next program calls it. Wine's own processes are started with it, because they stay too and keep the output that they
# were given: it must not be that of a test.
start_server() {
    scripts/wine.sh "$bits" wineserver -k || true
    scripts/wine.sh "$bits" wineserver -w
    scripts/wine.sh "$bits" wineserver -p </dev/null >/dev/null 2>&1
    scripts/wine.sh "$bits" cmd /c exit </dev/null >/dev/null 2>&1
}

mkdir -p build/wine/locale
need_packages locales
localedef -i ja_JP -f UTF-8 build/wine/locale/ja_JP.UTF-8
if [ "$bits" = 64 ]; then
    need_packages wine64
elif [ ! -d build/wine/i386 ]; then
    need_packages libc6-i386
    make_wine32 "$PWD/build/wine/i386"
fi
[ "$bits" = 64 ] || copy_libraries
timeout --foreground 300 scripts/wine.sh "$bits" cmd /c ver
make_drives
start_server
