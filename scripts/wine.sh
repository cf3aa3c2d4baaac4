#!/usr/bin/env bash
# Runs a Windows program under Wine in the current folder. Usage: scripts/wine.sh 32|64 PROGRAM [ARGUMENT...]
# scripts/install-wine.sh made build/wine, where everything of Wine's is. Paths that begin with / lie on drive Z:,
# which is the current one.
set -euo pipefail
bits=$1
shift
repository=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
export WINEPREFIX=$repository/build/wine/prefix$bits WINEDEBUG=${WINEDEBUG--all} LC_ALL=C.UTF-8

if [ "$bits" = 64 ]; then
    exec /usr/lib/wine/wine64 "$@"
fi
# The 32-bit Wine has a root of its own, which sees the machine's temporary folder and this repository. Its
# mounts vanish with the process.
root=$repository/build/wine/root
enter='root=$1 repository=$2 folder=$3
    shift 3
    mount --bind /proc "$root/proc" && mount --rbind /dev "$root/dev" && mount --bind /tmp "$root/tmp" &&
        mkdir -p "$root$repository" && mount --bind "$repository" "$root$repository" &&
        exec chroot "$root" env -C "$folder" /usr/lib/wine/wine "$@"'
exec unshare -m sh -c "$enter" sh "$root" "$repository" "$PWD" "$@"
