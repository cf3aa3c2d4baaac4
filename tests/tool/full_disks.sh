#!/usr/bin/env bash
# Full temporary folders and output disks end in exit 4 and a sentence; a killed run leaves no bytes, and the next
# one removes its names. On tmpfs and on ext4 over a loop device. Usage: full_disks.sh IMGBAND; exits 77 to skip.
set -euo pipefail
imgband=$1
[ "$(id -u)" -eq 0 ] || { echo "Needs root to mount"; exit 77; }
folder=$(mktemp -d)
disk=$folder/disk
trap 'cd /; umount "$disk" 2>/dev/null || true; rm -rf "$folder"' EXIT
mkdir "$disk"
cd "$folder"

fail() { echo "FAILED on $kind: $*"; exit 1; }

refused() { # arguments of imgband: no room, no signal, nothing left
    local status=0
    "$imgband" "$@" 2>message || status=$?
    [ "$status" -eq 4 ] || fail "imgband $* exits with $status"
    grep -Eq 'wanted [0-9]+ bytes, available [0-9]+ bytes|disk full' message || fail "$(cat message)"
    [ -z "$(find "$disk" -type f)" ] || fail "imgband $* leaves $(find "$disk" -type f)"
}

"$imgband" make in.bmp --size 3000x3000 --quiet
for kind in tmpfs ext4; do
    if [ "$kind" = tmpfs ]; then
        mount -t tmpfs -o size=16M none "$disk" || { echo "Cannot mount"; exit 77; }
    else
        truncate -s 20M image
        mkfs.ext4 -q image
        mount -o loop image "$disk" || { echo "No loop device: ext4 not tested"; exit 77; }
        rmdir "$disk/lost+found"
    fi
    refused make "$disk/out.bmp" --size 3000x3000
    refused convert in.bmp "$disk/out.bmp" --to bgra32
    refused convert in.bmp out.bmp --to bgra32 --scheme whole --temp-dir "$disk" --budget 12M
    [ ! -e out.bmp ] || fail "a refused job left its output"

    # Killed while its image lies in a temporary file: the data has no name, an empty name may stay.
    "$imgband" make small.bmp --size 2000x1500 --quiet
    for delay in 0.01 0.02 0.03 0.04 0.05 0.06; do
        "$imgband" convert small.bmp out.bmp --to bgra32 --scheme whole --budget 12M --temp-dir "$disk" --quiet &
        sleep "$delay"
        kill -KILL $! 2>/dev/null || true
        wait $! 2>/dev/null || true # its room and locks are free only then
    done
    [ "$(find "$disk" -type f -size +0 | wc -l)" -eq 0 ] || fail "a killed run leaves bytes: $(ls -l "$disk")"
    : >"$disk/LRGFFFF.tmp"
    find "$disk" -name 'LRG*' -exec touch -d '2 hours ago' {} +
    "$imgband" convert small.bmp out.bmp --to bgra32 --scheme whole --budget 12M --temp-dir "$disk" --quiet
    [ -z "$(find "$disk" -name 'LRG*')" ] || fail "the next run leaves $(ls "$disk")"
    rm -f out.bmp

    # Filled up while bands go straight to the output.
    rm -f message
    used=$(df --output=used "$disk" | tail -1)
    "$imgband" filter small.bmp "$disk/out.bmp" --op gauss --radius 16 --threads 1 --budget 12M 2>message &
    until [ "$(df --output=used "$disk" | tail -1)" -gt $((used + 1000)) ] || ! kill -0 $! 2>/dev/null; do
        sleep 0.001
    done
    head -c 40M /dev/zero >"$disk/fill" 2>/dev/null || true
    status=0
    wait $! || status=$?
    [ "$status" -eq 4 ] || fail "a disk that fills up ends in $status: $(cat message)"
    grep -q 'disk full' message || fail "$(cat message)"
    rm "$disk/fill"
    [ -z "$(find "$disk" -type f)" ] || fail "a disk that filled up keeps $(find "$disk" -type f)"
    umount "$disk"
done
echo "Full disks are refused in words on tmpfs and ext4"
