#!/usr/bin/env bash
# Runs a Windows program under Wine in the current folder. Usage: scripts/wine.sh 32|64 PROGRAM [ARGUMENT...]
# PROGRAM wineserver is Wine's own server.
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

if [ "$1" = wineserver ]; then
    command=("/usr/lib/wine/wineserver$bits" "${@:2}")
elif [ "$bits" = 64 ]; then
    command=(/usr/lib/wine/wine64 "$@")
else
    command=(/usr/lib/wine/wine "$@")
fi

if [ "$bits" = 64 ]; then
    exec env "${settings[@]}" "${command[@]}"
fi
# The 32-bit Wine has a root of its own, which sees the machine's temporary folder and this repository. Its
# mounts vanish with the process.
enter='root=$1 repository=$2
    shift 2
    see() { mkdir -p "$root$1" && mount --rbind "$1" "$root$1"; }
    see /proc && see /dev && see /tmp && see "${TMPDIR:-/tmp}" && see "$repository" && exec chroot "$root" env "$@"'
exec unshare -m sh -c "$enter" sh "$wine/root" "$repository" -C "$PWD" "${settings[@]}" "${command[@]}"
