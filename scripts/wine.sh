#!/usr/bin/env bash
# Runs a Windows program under Wine in the current folder. Usage: scripts/wine.sh 32|64 PROGRAM [ARGUMENT...]
# scripts/install-wine.sh made build/wine, where everything of Wine's is. Paths that begin with / lie on drive Z:,
# which is the current one. The system speaks Japanese, as the library's first hosts: its code page is 932.
set -euo pipefail
bits=$1
shift
repository=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
wine=$repository/build/wine
# Without a debugger a crash ends the program; nothing asks to be installed.
settings=(WINEPREFIX="$wine/prefix$bits" WINEDEBUG="${WINEDEBUG--all}" WINEDLLOVERRIDES="winedbg.exe,mscoree,mshtml=d"
    LOCPATH="$wine/locale" LC_ALL=ja_JP.UTF-8)

if [ "$bits" = 64 ]; then
    exec env "${settings[@]}" /usr/lib/wine/wine64 "$@"
fi
# The 32-bit Wine has a root of its own, which sees the machine's temporary folder and this repository. Its
# mounts vanish with the process.
enter='root=$1 repository=$2
    shift 2
    mount --bind /proc "$root/proc" && mount --rbind /dev "$root/dev" && mount --bind /tmp "$root/tmp" &&
        mkdir -p "$root$repository" && mount --bind "$repository" "$root$repository" && exec chroot "$root" env "$@"'
exec unshare -m sh -c "$enter" sh "$wine/root" "$repository" -C "$PWD" "${settings[@]}" /usr/lib/wine/wine "$@"
