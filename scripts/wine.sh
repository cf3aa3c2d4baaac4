#!/usr/bin/env bash
# Runs a Windows program under Wine in the current folder. Usage: scripts/wine.sh 32|64 PROGRAM [ARGUMENT...]
# PROGRAM wineserver is Wine's own server.
# Everything of Wine's lies in build/wine, which scripts/install-wine.sh makes. Paths that begin with / lie on drive Z:,
# which is the current one. The system speaks Japanese, as the library's first hosts: its code page is 932.
set -euo pipefail
bits=$1
shift
wine=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)/build/wine
# Without a debugger a crash ends the program; nothing asks to be installed.
settings=(WINEPREFIX="$wine/prefix$bits" WINEDEBUG="${WINEDEBUG--all}" WINEDLLOVERRIDES="winedbg.exe,mscoree,mshtml=d"
    LOCPATH="$wine/locale" LC_ALL=ja_JP.UTF-8)

if [ "$bits" = 64 ]; then
    programs=/usr/lib/wine loader=wine64
else
    programs=$wine/i386/usr/lib/wine loader=wine
    settings+=(LD_LIBRARY_PATH="$wine/i386/lib/i386-linux-gnu:$wine/i386/usr/lib/i386-linux-gnu")
fi
if [ "$1" = wineserver ]; then
    loader=wineserver$bits
    shift
fi
exec env "${settings[@]}" "$programs/$loader" "$@"
