#!/usr/bin/env bash
# Makes build/wine, with which scripts/wine.sh runs Windows programs. Usage: scripts/install-wine.sh 32|64
# A 64-bit Wine is a Debian package. The 32-bit one is a package of another architecture, which not every mirror
# can install beside this one's: it gets a small system of its own. Needs root; takes a minute and 1.1 GB.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
. scripts/packages.sh
bits=$1
mkdir -p build/wine

make_root() { # in build/wine/root, complete or not at all
    local mirror
    mirror=$(apt-get indextargets --format '$(REPO_URI)' 'Created-By: Packages' "Codename: $(. /etc/os-release && echo "$VERSION_CODENAME")" | head -1)
    rm -rf build/wine/unfinished
    debootstrap --arch=i386 --variant=minbase --include=wine32 bookworm build/wine/unfinished "$mirror" >build/wine/root.log 2>&1 || return
    rm -rf build/wine/unfinished/var/cache/apt build/wine/unfinished/usr/share/{doc,locale}
    mv build/wine/unfinished build/wine/root
}

if [ "$bits" = 64 ]; then
    need_packages wine64
elif [ ! -d build/wine/root ]; then
    need_packages debootstrap
    retry make_root || { tail -5 build/wine/root.log >&2; exit 1; }
fi
scripts/wine.sh "$bits" cmd /c ver
