#!/usr/bin/env bash
# Makes build/wine, with which scripts/wine.sh runs Windows programs. Usage: scripts/install-wine.sh 32|64
# A 64-bit Wine is a Debian package. The 32-bit one is a package of another architecture, which not every mirror
# can install beside this one's: it gets a small system of its own. Needs root; takes a minute and 1.1 GB.
# Leaves Wine's server running, which scripts/wine.sh 32|64 wineserver -k ends.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
. scripts/packages.sh
bits=$1
mkdir -p build/wine/locale
need_packages locales
localedef -i ja_JP -f UTF-8 build/wine/locale/ja_JP.UTF-8

if [ "$bits" = 64 ]; then
    need_packages wine64
elif [ ! -d build/wine/root ]; then
    retry make_root build/wine/root i386 wine32
    rm -rf build/wine/root/usr/share/{doc,locale}
fi
scripts/wine.sh "$bits" cmd /c ver
# The log of a full disk tells of the drives c:, d: and e:.
for drive in d e; do
    ln -sfn ../drive_c "build/wine/prefix$bits/dosdevices/$drive:"
done
# A server that stays: one that ends with its last program makes every start take seconds, and may end while the next
# program calls it.
scripts/wine.sh "$bits" wineserver -k || true
scripts/wine.sh "$bits" wineserver -w
# So do the system's own processes, which keep what they were given for output: not that of a test.
scripts/wine.sh "$bits" wineserver -p </dev/null >/dev/null 2>&1
scripts/wine.sh "$bits" cmd /c exit </dev/null >/dev/null 2>&1
